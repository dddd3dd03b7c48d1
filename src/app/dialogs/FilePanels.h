// The file panels: they remember their size, complete typed names, and show what a chosen file looks like.
// Live while they are shown; main thread only.
#pragma once

#include <QFileDialog>
#include <functional>
#include <optional>

class QLineEdit;

namespace orvanel {

class PreviewPane;

class FilePanel : public QFileDialog {
  Q_OBJECT

 public:
  /// `sizeKey` names the kind of panel.
  FilePanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent);
  ~FilePanel() override;

  /// The field for the name; null in a panel of the desktop's own.
  [[nodiscard]] QLineEdit* nameField() const;
  /// The path that was chosen; nothing if the panel was cancelled.
  [[nodiscard]] std::optional<QString> run();

 protected:
  /// Opens with the size that the last panel of this kind was left with, and gives names their room. To be
  /// called once the panel knows whether it is the desktop's own.
  void arrange();

 private:
  const char* sizeKey_;
};

class SavePanel : public FilePanel {
  Q_OBJECT

 public:
  SavePanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent);

  /// Turns a name as typed into the one to write, before the panel asks whether to overwrite it. A desktop's
  /// own panel can't ask this: there the result needs a look afterwards.
  std::function<QString(const QString&)> completedName;

 protected:
  void accept() override;
};

class OpenPanel : public FilePanel {
  Q_OBJECT

 public:
  OpenPanel(const QString& title, const QString& folder, const char* sizeKey, QWidget* parent);

  [[nodiscard]] PreviewPane* previewPane() const { return previewPane_; }

 private:
  /// Null in a panel of the desktop's own.
  PreviewPane* previewPane_ = nullptr;
};

}  // namespace orvanel
