// The commands of scripts. Each takes its arguments and answers with what is then to be done, through what
// the menus, panels and tools of the editor call, so that it leaves the same records. Main thread only.
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "cli/Script.h"
#include "model/Document.h"

namespace orvanel {

/// What a script works on.
struct ScriptRun {
  explicit ScriptRun(DocumentPtr edited);

  DocumentPtr document;
  std::optional<PixelClipboard> pixelClipboard;
  /// The document refused an edit since the step began.
  bool isRefused = false;

 private:
  ChangeStream::Subscription changes_;
};

/// Carries out one step. Fails for an unknown command, wrong arguments or a file that can't be written; what
/// the editor would pass over quietly is no failure.
[[nodiscard]] StepResult performStep(ScriptRun& run, const ScriptStep& step);

/// Called only when the arguments were right.
using ScriptAction = std::function<StepResult()>;
using ScriptCommand = ScriptAction (*)(ScriptRun& run, StepArguments& arguments);

struct NamedCommand {
  std::string_view name;
  ScriptCommand prepare;
};

// All commands, by what they work on.
[[nodiscard]] std::span<const NamedCommand> treeCommands();
[[nodiscard]] std::span<const NamedCommand> selectionCommands();
[[nodiscard]] std::span<const NamedCommand> pixelCommands();
[[nodiscard]] std::span<const NamedCommand> documentCommands();

/// An action that can't fail.
template <typename Call>
ScriptAction action(Call call) {
  return [call = std::move(call)]() -> StepResult {
    call();
    return {};
  };
}

/// A command of the document, without arguments.
template <auto method>
ScriptAction onDocument(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] { ((*run.document).*method)(); });
}

}  // namespace orvanel
