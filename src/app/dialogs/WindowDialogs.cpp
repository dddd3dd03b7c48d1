#include "app/dialogs/WindowDialogs.h"

#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "app/dialogs/AboutView.h"
#include "app/dialogs/CanvasSizeDialog.h"
#include "app/dialogs/ExportFormatHelper.h"
#include "app/dialogs/ExportFormats.h"
#include "app/dialogs/FilePanels.h"
#include "app/dialogs/ImageSizeDialog.h"
#include "app/dialogs/NewDocumentDialog.h"
#include "app/dialogs/RecoveryDialog.h"
#include "app/dialogs/ShortcutsWindow.h"
#include "io/files/FileName.h"
#include "look/Look.h"

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
    box.setInformativeText(lines.mid(0, mostLinesShown).join(u'\n') + u'\n' +
                           WindowDialogs::tr("… and %n more", nullptr, static_cast<int>(hidden)));
    box.setDetailedText(informativeText);
  }
  if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(narrowestAlertText);
  }
  if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
    label->setFont(look::font(look::type::heading, QFont::DemiBold));
  }
}

/// What the user has entered; nothing if the dialog was cancelled.
template <typename SizeDialogType>
auto enteredIn(SizeDialogType& dialog) {
  return dialog.exec() == QDialog::Accepted ? std::optional(dialog.entry()) : std::nullopt;
}

/// Shows a window that doesn't block the others, and deletes itself when it is closed.
void bringForward(QWidget& view) {
  view.setAttribute(Qt::WA_DeleteOnClose);
  view.show();
  view.raise();
  view.activateWindow();
}

QString withExtension(const QString& name, const char* extension) {
  return hasExtension(name, QString::fromLatin1(extension)) ? name : name + u'.' + QLatin1String(extension);
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
  QPushButton* save = box.addButton(tr("Save"), QMessageBox::AcceptRole);
  QPushButton* dontSave = box.addButton(tr("Don't Save"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
  box.setDefaultButton(save);
  box.setEscapeButton(cancel);
  box.exec();
  if (box.clickedButton() == save) return SaveAnswer::save;
  return box.clickedButton() == dontSave ? SaveAnswer::dontSave : SaveAnswer::cancel;
}

OverwriteAnswer WindowDialogs::askToOverwrite(const QString& message, const QString& informativeText) {
  if (isHoldingWarnings_) return OverwriteAnswer::cancel;
  QMessageBox box(window_);
  fillAlert(box, message, informativeText);
  QPushButton* saveAs = box.addButton(tr("Save As..."), QMessageBox::AcceptRole);
  QPushButton* anyway = box.addButton(tr("Save Anyway"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
  box.setDefaultButton(saveAs);
  box.setEscapeButton(cancel);
  box.exec();
  if (box.clickedButton() == saveAs) return OverwriteAnswer::saveAs;
  return box.clickedButton() == anyway ? OverwriteAnswer::saveAnyway : OverwriteAnswer::cancel;
}

std::vector<RecoveryAnswer> WindowDialogs::askAboutOrphans(const OrphanList& orphans) {
  RecoveryDialog dialog(orphans, window_);
  const bool isAccepted = dialog.exec() == QDialog::Accepted;
  return isAccepted ? dialog.answers() : std::vector(orphans.size(), RecoveryAnswer::later);
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

QStringList WindowDialogs::askForFilesToOpen(const QString& folder) {
  OpenPanel panel(tr("Select documents or image files to open"), folder, "openPanelSize", window_);
  panel.setAcceptMode(QFileDialog::AcceptOpen);
  panel.setFileMode(QFileDialog::ExistingFiles);
  panel.setOption(QFileDialog::HideNameFilterDetails);
  const QString known = QStringLiteral("*.tessel *.jpg *.jpeg *.png *.tif *.tiff *.gif *.heic *.heif");
  panel.setNameFilters(
      {tr("Documents and Images") + QStringLiteral(" (%1)").arg(inBothCases(known)), tr("All Files (*)")});
  return panel.exec() == QDialog::Accepted ? panel.selectedFiles() : QStringList();
}

// A desktop's own panel doesn't complete names, and the name must not be changed after it: a sandboxed
// program may write only the file that was chosen. So such a panel is shown again with the name completed.

std::optional<QString> WindowDialogs::askWhereToSave(const QString& proposedPath) {
  const auto completed = [](const QString& name) { return withExtension(name, documentExtension); };
  QString proposal = proposedPath;
  while (true) {
    SavePanel panel(tr("Save As"), QFileInfo(proposal).path(), "savePanelSize", window_);
    panel.completedName = completed;
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setNameFilter(tr("Orvanel Document") + QStringLiteral(" (*.tessel)"));
    panel.selectFile(QFileInfo(proposal).fileName());
    std::optional<QString> path = panel.run();
    if (!path || completed(*path) == *path) return path;
    proposal = completed(*path);
  }
}

std::optional<ExportTarget> WindowDialogs::askWhereToExport(const QString& proposedBase) {
  QFileInfo proposal(proposedBase);
  int row = 0;
  while (true) {
    SavePanel panel(tr("Export Image"), proposal.path(), "exportPanelSize", window_);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::FileType, tr("Format:"));
    panel.setOption(QFileDialog::HideNameFilterDetails);
    ExportFormatHelper helper(panel, proposal.fileName());
    panel.completedName = [&helper](const QString& typed) { return helper.completedName(typed); };
    helper.selectRow(row);
    const std::optional<QString> path = panel.run();
    if (!path) return std::nullopt;
    if (const std::optional<int> named = exportRowForName(*path)) return ExportTarget{*path, *named};
    row = helper.selectedRow();
    proposal = QFileInfo(*path);
  }
}

void WindowDialogs::beep() {
  QApplication::beep();
}

void WindowDialogs::showAbout() {
  if (about_.isNull()) about_ = new AboutView(window_);
  bringForward(*about_);
}

void WindowDialogs::showShortcuts(const std::vector<ShortcutGroup>& groups) {
  if (shortcuts_.isNull()) shortcuts_ = new ShortcutsWindow(groups, window_);
  bringForward(*shortcuts_);
}

}  // namespace orvanel
