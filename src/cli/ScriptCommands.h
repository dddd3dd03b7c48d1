// The commands of scripts. Each reads its arguments and returns an action, which calls what the editor's
// menus, panels and tools call and so leaves the same records. Main thread only.
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

/// The state of a running script.
struct ScriptRun {
  explicit ScriptRun(DocumentPtr edited);

  DocumentPtr document;
  std::optional<PixelClipboard> pixelClipboard;
  /// Whether the document has refused an edit since the step began.
  bool isRefused = false;

 private:
  ChangeStream::Subscription changes_;
};

/// Runs one step. Fails for an unknown command, invalid arguments or a file that can't be written. A command
/// that has no effect in the editor doesn't fail.
[[nodiscard]] StepResult performStep(ScriptRun& run, const ScriptStep& step);

/// Called only if all arguments are valid.
using ScriptAction = std::function<StepResult()>;
using ScriptCommand = ScriptAction (*)(ScriptRun& run, StepArguments& arguments);

struct NamedCommand {
  std::string_view name;
  ScriptCommand prepare;
};

// All commands, grouped by what they work on.
[[nodiscard]] std::span<const NamedCommand> treeCommands();
[[nodiscard]] std::span<const NamedCommand> selectionCommands();
[[nodiscard]] std::span<const NamedCommand> pixelCommands();
[[nodiscard]] std::span<const NamedCommand> documentCommands();

/// Wraps a call that can't fail as an action.
template <typename Call>
ScriptAction action(Call call) {
  return [call = std::move(call)]() -> StepResult {
    call();
    return {};
  };
}

/// A document command without arguments.
template <auto method>
ScriptAction onDocument(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] { ((*run.document).*method)(); });
}

}  // namespace orvanel
