// The dialogs as real alerts and file panels, modal to the main window. Main thread only.
#pragma once

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>
#include <utility>
#include <vector>

#include "app/dialogs/Dialogs.h"

namespace orvanel {

class WindowDialogs : public Dialogs {
  Q_DECLARE_TR_FUNCTIONS(orvanel::WindowDialogs)

 public:
  /// The parent of all dialogs; may be null.
  void setWindow(QWidget* window) { window_ = window; }

  // While no alert may be shown, warnings are held back; they appear soon after the release.
  void holdWarnings() { isHoldingWarnings_ = true; }
  void releaseWarnings();

  void showWarning(const QString& message, const QString& informativeText) override;
  SaveAnswer askToSave(const QString& message, const QString& informativeText) override;
  OverwriteAnswer askToOverwrite(const QString& message, const QString& informativeText) override;
  std::vector<RecoveryAnswer> askAboutOrphans(const OrphanList& orphans) override;
  std::optional<NewDocumentEntry> askForNewDocument() override;
  std::optional<CanvasSizeEntry> askForCanvasSize(const DocumentPtr& document) override;
  std::optional<ImageSizeEntry> askForImageSize(const DocumentPtr& document) override;
  QStringList askForFilesToOpen(const QString& folder) override;
  std::optional<QString> askWhereToSave(const QString& proposedPath) override;
  std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) override;
  void showAbout() override;
  void showShortcuts(const std::vector<ShortcutGroup>& groups) override;
  void beep() override;

 private:
  QPointer<QWidget> window_;
  // Null while they are closed.
  QPointer<QWidget> about_;
  QPointer<QWidget> shortcuts_;
  bool isHoldingWarnings_ = false;
  /// Message and informative text of each warning held back.
  std::vector<std::pair<QString, QString>> heldWarnings_;
};

}  // namespace orvanel
