#include "app/dialogs/FilePanels.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QScreen>
#include <QSplitter>
#include <QTreeView>

#include "app/UserDefaults.h"
#include "app/dialogs/PreviewPane.h"

namespace orvanel {

namespace {

constexpr QSize firstSize{840, 520};
/// Room for the names of places.
constexpr int placesWidth = 160;

/// In a sandbox only the desktop's own panel reaches the user's files.
bool isSandboxed() {
  return QFile::exists(QStringLiteral("/.flatpak-info")) || qEnvironmentVariableIsSet("SNAP");
}

/// With the home folder in the place of "~". A name that only begins with that character is left alone.
QString withHome(const QString& typed) {
  const bool isInHome = typed == u'~' || typed.startsWith(QStringLiteral("~/"));
  return isInHome ? QDir::homePath() + typed.mid(1) : typed;
}

}  // namespace

FilePanel::FilePanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent)
    : QFileDialog(parent, title, folder), sizeKey_(sizeKey) {}

void FilePanel::arrange() {
  const QSize remembered = UserDefaults().value(sizeKey_).toSize();
  resize((remembered.isValid() ? remembered : firstSize).boundedTo(screen()->availableSize()));
  // Names need the width more than what the extension already says.
  if (auto* list = findChild<QTreeView*>(QStringLiteral("treeView"))) {
    constexpr int name = 0;
    constexpr int type = 2;
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(name, QHeaderView::Stretch);
    list->header()->hideSection(type);
  }
  if (auto* splitter = findChild<QSplitter*>(QStringLiteral("splitter"))) {
    splitter->setSizes({placesWidth, width() - placesWidth});
  }
}

FilePanel::~FilePanel() {
  if (nameField() != nullptr) UserDefaults().setValue(sizeKey_, size());
}

QLineEdit* FilePanel::nameField() const {
  return findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
}

std::optional<QString> FilePanel::run() {
  if (exec() != QDialog::Accepted || selectedFiles().isEmpty()) return std::nullopt;
  return selectedFiles().constFirst();
}

SavePanel::SavePanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent)
    : FilePanel(title, folder, sizeKey, parent) {
  arrange();
}

void SavePanel::accept() {
  QLineEdit* field = nameField();
  if (field == nullptr || !completedName) return QFileDialog::accept();
  const QString typed = withHome(field->text());
  // The name of a folder leads into it.
  const bool isFolder = typed.isEmpty() || QFileInfo(directory().filePath(typed)).isDir();
  if (!isFolder && typed.endsWith(u'/')) {
    // A folder that isn't there; no file can have this name.
    QApplication::beep();
    return field->selectAll();
  }
  field->setText(isFolder ? typed : completedName(typed));
  QFileDialog::accept();
}

OpenPanel::OpenPanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent)
    : FilePanel(title, folder, sizeKey, parent) {
  // Before anything is arranged, because it decides whether there are widgets.
  setOption(DontUseNativeDialog, !isSandboxed());
  arrange();
  auto* grid = qobject_cast<QGridLayout*>(layout());
  if (nameField() == nullptr || grid == nullptr) return;
  previewPane_ = new PreviewPane(this);
  grid->addWidget(previewPane_, 0, grid->columnCount(), grid->rowCount(), 1);
  connect(this, &QFileDialog::currentChanged, previewPane_, &PreviewPane::showFile);
  connect(nameField(), &QLineEdit::textChanged, previewPane_,
          [this](const QString& typed) { previewPane_->showFile(directory().filePath(typed)); });
}

}  // namespace orvanel
