#include "cli/ScriptCommands.h"

#include <algorithm>
#include <string>

namespace orvanel {
namespace {

ScriptCommand commandNamed(const std::string& name) {
  for (const auto commands : {treeCommands(), selectionCommands(), pixelCommands(), documentCommands()}) {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const NamedCommand& command) { return command.name == name; });
    if (found != commands.end()) return found->prepare;
  }
  return nullptr;
}

}  // namespace

ScriptRun::ScriptRun(DocumentPtr edited)
    : document(std::move(edited)),
      changes_(document->changes().observe(
          [this](const DocumentChanges& changes) { isRefused |= contains<change::EditRefused>(changes); })) {}

StepResult performStep(ScriptRun& run, const ScriptStep& step) {
  const ScriptCommand prepare = commandNamed(step.command.toStdString());
  if (prepare == nullptr) {
    return tl::make_unexpected(QStringLiteral("unknown command \"%1\"").arg(step.command));
  }
  StepArguments arguments(step.arguments);
  const ScriptAction perform = prepare(run, arguments);
  if (StepResult checked = arguments.finish(); !checked) return checked;
  run.isRefused = false;
  const StepResult performed = perform();
  if (run.isRefused) return tl::make_unexpected(QStringLiteral("not enough memory for this edit"));
  return performed;
}

}  // namespace orvanel
