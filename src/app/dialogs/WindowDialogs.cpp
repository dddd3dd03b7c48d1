#include "app/dialogs/WindowDialogs.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "app/dialogs/AboutView.h"
#include "app/dialogs/CanvasSizeDialog.h"
#include "app/dialogs/ExportFormatHelper.h"
#include "app/dialogs/ExportFormats.h"
#include "app/dialogs/ImageSizeDialog.h"
#include "app/dialogs/NewDocumentDialog.h"
#include "io/files/FileName.h"

namespace orvanel {

namespace {

constexpr int mostLinesShown = 16;
constexpr int alertIconEdge = 48;
/// In view points; narrower text wraps too often.
constexpr int narrowestAlertText = 320;

/// Turns "*.png" into "*.png *.PNG", because some desktops' panels match case-sensitively.
QString inBothCases(const QString& patterns) {
  return patterns + u' ' + patterns.toUpper();
}

void fillAlert(QMessageBox& box, const QString& message, const QString& informativeText) {
  box.setIcon(QMessageBox::Warning);
  box.setIconPixmap(
      QApplication::windowIcon().pixmap(QSize(alertIconEdge, alertIconEdge), box.devicePixelRatioF()));
  box.setWindowTitle(QStringLiteral("Orvanel"));
  // Texts contain file names, which may look like markup.
  box.setTextFormat(Qt::PlainText);
  box.setText(message);
  const QStringList lines = informativeText.split(u'\n');
  if (lines.size() <= mostLinesShown) {
    box.setInformativeText(informativeText);
  } else {
    const qsizetype hidden = lines.size() - mostLinesShown;
    box.setInformativeText(lines.mid(0, mostLinesShown).join(u'\n') +
                           QStringLiteral("\n… and %1 more").arg(hidden));
    box.setDetailedText(informativeText);
  }
  if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(narrowestAlertText);
  }
  if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
    QFont font = label->font();
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
  }
}

/// What the user has entered; nothing if the dialog was cancelled.
template <typename SizeDialogType>
auto enteredIn(SizeDialogType& dialog) {
  return dialog.exec() == QDialog::Accepted ? std::optional(dialog.entry()) : std::nullopt;
}

/// Whether the panel is drawn by Qt rather than by the desktop. With a desktop's own panel the name must not
/// be changed afterwards: a sandboxed program may write only the file that the user has chosen.
bool isDrawnByToolkit(const QFileDialog& panel) {
  return panel.findChild<QLineEdit*>() != nullptr;
}

std::optional<QString> runPanel(QFileDialog& panel) {
  if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty()) return std::nullopt;
  return panel.selectedFiles().constFirst();
}

/// The name to propose in place of one without the document extension.
QString withDocumentExtension(const QString& path) {
  const QFileInfo file(path);
  const QString base = exportRowForName(path) ? file.completeBaseName() : file.fileName();
  return file.dir().filePath(base + u'.' + QLatin1String(documentExtension));
}

}  // namespace

void WindowDialogs::releaseWarnings() {
  isHoldingWarnings_ = false;
  for (const auto& [message, informativeText] : std::exchange(heldWarnings_, {})) {
    QMetaObject::invokeMethod(
        qApp,
        [this, message = message, informativeText = informativeText] {
          showWarning(message, informativeText);
        },
        Qt::QueuedConnection);
  }
}

void WindowDialogs::showWarning(const QString& message, const QString& informativeText) {
  if (isHoldingWarnings_) {
    heldWarnings_.emplace_back(message, informativeText);
    return;
  }
  QMessageBox box(window_);
  fillAlert(box, message, informativeText);
  box.addButton(QMessageBox::Ok);
  box.exec();
}

SaveAnswer WindowDialogs::askToSave(const QString& message, const QString& informativeText) {
  QMessageBox box(window_);
  fillAlert(box, message, informativeText);
  QPushButton* save = box.addButton(QStringLiteral("Save"), QMessageBox::AcceptRole);
  QPushButton* dontSave = box.addButton(QStringLiteral("Don't Save"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
  box.setDefaultButton(save);
  box.setEscapeButton(cancel);
  box.exec();
  if (box.clickedButton() == save) return SaveAnswer::save;
  return box.clickedButton() == dontSave ? SaveAnswer::dontSave : SaveAnswer::cancel;
}

std::optional<NewDocumentEntry> WindowDialogs::askForNewDocument() {
  NewDocumentDialog dialog(window_);
  return enteredIn(dialog);
}

std::optional<CanvasSizeEntry> WindowDialogs::askForCanvasSize(const DocumentPtr& document) {
  CanvasSizeDialog dialog(document, window_);
  return enteredIn(dialog);
}

std::optional<ImageSizeEntry> WindowDialogs::askForImageSize(const DocumentPtr& document) {
  ImageSizeDialog dialog(document, window_);
  return enteredIn(dialog);
}

QStringList WindowDialogs::askForFilesToOpen() {
  QFileDialog panel(window_, QStringLiteral("Select documents or image files to open"));
  panel.setAcceptMode(QFileDialog::AcceptOpen);
  panel.setFileMode(QFileDialog::ExistingFiles);
  panel.setOption(QFileDialog::HideNameFilterDetails);
  const QString known = QStringLiteral("*.tessel *.jpg *.jpeg *.png *.tif *.tiff *.gif *.heic *.heif");
  panel.setNameFilters(
      {QStringLiteral("Documents and Images (%1)").arg(inBothCases(known)), QStringLiteral("All Files (*)")});
  return panel.exec() == QDialog::Accepted ? panel.selectedFiles() : QStringList();
}

std::optional<QString> WindowDialogs::askWhereToSave(const QString& proposedPath) {
  QString proposal = proposedPath;
  while (true) {
    QFileDialog panel(window_, QStringLiteral("Save As"), QFileInfo(proposal).path());
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setNameFilter(QStringLiteral("Orvanel Document (*.tessel)"));
    if (isDrawnByToolkit(panel)) panel.setDefaultSuffix(QLatin1String(documentExtension));
    panel.selectFile(QFileInfo(proposal).fileName());
    std::optional<QString> path = runPanel(panel);
    if (!path || QFileInfo(*path).suffix().toLower() == QLatin1String(documentExtension)) return path;
    // Never change the name silently: show the panel again with the corrected name.
    proposal = withDocumentExtension(*path);
  }
}

std::optional<ExportTarget> WindowDialogs::askWhereToExport(const QString& proposedBase) {
  const QFileInfo proposal(proposedBase);
  QString folder = proposal.path();
  QString baseName = proposal.fileName();
  int row = 0;
  while (true) {
    QFileDialog panel(window_, QStringLiteral("Export Image"), folder);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::FileType, QStringLiteral("Format:"));
    panel.setOption(QFileDialog::HideNameFilterDetails);
    ExportFormatHelper helper(panel, baseName, isDrawnByToolkit(panel));
    helper.selectRow(row);
    const std::optional<QString> path = runPanel(panel);
    if (!path) return std::nullopt;
    row = helper.selectedRow();
    const std::optional<int> named = exportRowForName(*path);
    if (named == row) return ExportTarget{*path, row};
    // The chosen format takes precedence. If the extension doesn't match it, show the panel again with the
    // corrected name.
    folder = QFileInfo(*path).path();
    baseName = named ? QFileInfo(*path).completeBaseName() : QFileInfo(*path).fileName();
  }
}

void WindowDialogs::beep() {
  QApplication::beep();
}

void WindowDialogs::showAbout() {
  AboutView(window_).exec();
}

}  // namespace orvanel
