// Interface to all alerts and file panels, so that tests can answer them. Main thread only; each call returns
// when the user has answered.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace orvanel {

enum class SaveAnswer { save, dontSave, cancel };

/// The user's input, not yet validated.
struct NewDocumentEntry {
  QString width;
  QString height;
  /// Raw value of the colour mode.
  int colorModeIndex = 0;
};

struct ExportTarget {
  QString path;
  /// Index into `exportFormats`.
  int formatRow = 0;
};

class Dialogs {
 public:
  Dialogs() = default;
  Dialogs(const Dialogs&) = delete;
  Dialogs& operator=(const Dialogs&) = delete;
  virtual ~Dialogs() = default;

  /// Shows a warning with an OK button.
  virtual void showWarning(const QString& message, const QString& informativeText) = 0;
  /// Reports a refused edit. Call this from the event loop, not from within the edit.
  void showNotEnoughMemory(const QString& informativeText) {
    showWarning(QStringLiteral("Not Enough Memory"), informativeText);
  }
  virtual SaveAnswer askToSave(const QString& message, const QString& informativeText) = 0;
  virtual std::optional<NewDocumentEntry> askForNewDocument() = 0;
  virtual QStringList askForFilesToOpen() = 0;
  /// Starts with the folder and name of `proposedPath`. The result ends in ".tessel".
  virtual std::optional<QString> askWhereToSave(const QString& proposedPath) = 0;
  /// Starts with the folder and name of `proposedBase`, which has no extension.
  virtual std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) = 0;
  virtual void showAbout() = 0;
  /// Says that a command has nothing to do.
  virtual void beep() = 0;
};

}  // namespace orvanel
