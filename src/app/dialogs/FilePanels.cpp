#include "app/dialogs/FilePanels.h"

#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
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

}  // namespace

FilePanel::FilePanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent)
    : QFileDialog(parent, title, folder), sizeKey_(sizeKey) {
  const QSize remembered = UserDefaults().value(sizeKey_).toSize();
  resize(remembered.isValid() ? remembered : firstSize);
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

void SavePanel::accept() {
  QLineEdit* field = nameField();
  if (field != nullptr && completedName) {
    const QString typed = field->text();
    // The name of a folder leads into it.
    const bool isFolder = typed.isEmpty() || QFileInfo(directory().filePath(typed)).isDir();
    if (!isFolder) field->setText(completedName(typed));
  }
  QFileDialog::accept();
}

OpenPanel::OpenPanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent)
    : FilePanel(title, folder, sizeKey, parent) {
  setOption(DontUseNativeDialog, !isSandboxed());
  auto* grid = qobject_cast<QGridLayout*>(layout());
  if (nameField() == nullptr || grid == nullptr) return;
  previewPane_ = new PreviewPane(this);
  grid->addWidget(previewPane_, 0, grid->columnCount(), grid->rowCount(), 1);
  connect(this, &QFileDialog::currentChanged, previewPane_, &PreviewPane::showFile);
  connect(nameField(), &QLineEdit::textChanged, previewPane_,
          [this](const QString& typed) { previewPane_->showFile(directory().filePath(typed)); });
}

}  // namespace orvanel
