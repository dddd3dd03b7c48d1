// Everything the editor asks and tells the user, as an interface: the window shows alerts and panels, a test
// answers by itself. Main thread only; each call returns when the user has answered.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace orvanel {

enum class SaveAnswer { save, dontSave, cancel };

/// What was typed and chosen, unchecked.
struct NewDocumentEntry {
  QString width;
  QString height;
  /// Index in the order of the colour modes.
  int colorModeIndex = 0;
};

struct ExportTarget {
  QString path;
  /// Row of the export table.
  int formatRow = 0;
};

class Dialogs {
 public:
  Dialogs() = default;
  Dialogs(const Dialogs&) = delete;
  Dialogs& operator=(const Dialogs&) = delete;
  virtual ~Dialogs() = default;

  /// A warning with one button to put it away.
  virtual void showWarning(const QString& message, const QString& informativeText) = 0;
  /// An edit was refused. Call it from the event loop rather than from within the edit.
  void showNotEnoughMemory(const QString& informativeText) {
    showWarning(QStringLiteral("Not Enough Memory"), informativeText);
  }
  virtual SaveAnswer askToSave(const QString& message, const QString& informativeText) = 0;
  virtual std::optional<NewDocumentEntry> askForNewDocument() = 0;
  virtual QStringList askForFilesToOpen() = 0;
  /// `proposedPath` holds the folder to begin in and the proposed name. The answer ends in ".tessel".
  virtual std::optional<QString> askWhereToSave(const QString& proposedPath) = 0;
  /// `proposedBase` holds the folder to begin in and the proposed name, without an extension.
  virtual std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) = 0;
  virtual void showAbout() = 0;
};

}  // namespace orvanel
