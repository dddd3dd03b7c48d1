// The dialogs as real alerts and file panels, modal to the main window. Main thread only.
#pragma once

#include <QPointer>
#include <QWidget>

#include "app/Dialogs.h"

namespace orvanel {

class WindowDialogs : public Dialogs {
 public:
  /// The parent of all dialogs; may be null.
  void setWindow(QWidget* window) { window_ = window; }

  void showWarning(const QString& message, const QString& informativeText) override;
  SaveAnswer askToSave(const QString& message, const QString& informativeText) override;
  std::optional<NewDocumentEntry> askForNewDocument() override;
  QStringList askForFilesToOpen() override;
  std::optional<QString> askWhereToSave(const QString& proposedPath) override;
  std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) override;
  void showAbout() override;

 private:
  QPointer<QWidget> window_;
};

}  // namespace orvanel
