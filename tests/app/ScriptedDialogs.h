// Answers dialogs from queues prepared by the test, and records what was shown.
#pragma once

#include <functional>
#include <queue>
#include <string>
#include <utility>
#include <vector>

#include "app/dialogs/Dialogs.h"
#include "app/dialogs/ShortcutsWindow.h"

namespace orvanel {

class ScriptedDialogs : public Dialogs {
 public:
  /// Message and informative text of each warning.
  std::vector<std::pair<std::string, std::string>> warnings;
  /// Message of each question about unsaved changes.
  std::vector<std::string> questions;
  /// Message and informative text of each question about a changed file.
  std::vector<std::pair<std::string, std::string>> overwriteQuestions;
  OrphanList askedOrphans;
  std::vector<std::string> proposals;
  int aboutShown = 0;
  std::vector<ShortcutGroup> shortcuts;
  int beeps = 0;

  // Answers, used in order. When a queue is empty, the dialog is cancelled.
  std::queue<SaveAnswer> saveAnswers;
  std::queue<OverwriteAnswer> overwriteAnswers;
  std::queue<RecoveryAnswer> recoveryAnswers;
  std::queue<QString> savePaths;
  std::queue<ExportTarget> exportTargets;
  std::optional<NewDocumentEntry> newDocument;
  std::optional<CanvasSizeEntry> canvasSize;
  std::optional<ImageSizeEntry> imageSize;
  QStringList filesToOpen;
  /// Called while a warning is open.
  std::function<void()> duringWarning;
  /// Called while a question is open.
  std::function<void()> duringQuestion;

  void showWarning(const QString& message, const QString& informativeText) override {
    warnings.emplace_back(message.toStdString(), informativeText.toStdString());
    if (duringWarning) duringWarning();
  }
  SaveAnswer askToSave(const QString& message, const QString& informativeText) override {
    questions.push_back(message.toStdString());
    lastInformativeText = informativeText.toStdString();
    if (duringQuestion) duringQuestion();
    return next(saveAnswers).value_or(SaveAnswer::cancel);
  }
  OverwriteAnswer askToOverwrite(const QString& message, const QString& informativeText) override {
    overwriteQuestions.emplace_back(message.toStdString(), informativeText.toStdString());
    if (duringQuestion) duringQuestion();
    return next(overwriteAnswers).value_or(OverwriteAnswer::cancel);
  }
  std::vector<RecoveryAnswer> askAboutOrphans(const OrphanList& orphans) override {
    askedOrphans = orphans;
    std::vector<RecoveryAnswer> answers;
    for (std::size_t i = 0; i < orphans.size(); ++i)
      answers.push_back(next(recoveryAnswers).value_or(RecoveryAnswer::later));
    return answers;
  }
  std::optional<NewDocumentEntry> askForNewDocument() override { return newDocument; }
  std::optional<CanvasSizeEntry> askForCanvasSize(const DocumentPtr& /*document*/) override {
    return canvasSize;
  }
  std::optional<ImageSizeEntry> askForImageSize(const DocumentPtr& /*document*/) override {
    return imageSize;
  }
  QStringList askForFilesToOpen(const QString& folder) override {
    proposals.push_back(folder.toStdString());
    return filesToOpen;
  }
  std::optional<QString> askWhereToSave(const QString& proposedPath) override {
    proposals.push_back(proposedPath.toStdString());
    return next(savePaths);
  }
  std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) override {
    proposals.push_back(proposedBase.toStdString());
    return next(exportTargets);
  }
  void showAbout() override { ++aboutShown; }
  void showShortcuts(const std::vector<ShortcutGroup>& groups) override { shortcuts = groups; }
  void beep() override { ++beeps; }

  std::string lastInformativeText;

 private:
  template <typename Answer>
  static std::optional<Answer> next(std::queue<Answer>& answers) {
    if (answers.empty()) return std::nullopt;
    Answer answer = answers.front();
    answers.pop();
    return answer;
  }
};

}  // namespace orvanel
