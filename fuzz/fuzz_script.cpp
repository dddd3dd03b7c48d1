// Scripts of the headless program, run on a small document: steps are refused with a reason or performed, and
// whatever they did can be undone and redone. Mutations keep a script JSON, so that most of it is performed.
#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "Mutations.h"
#include "cli/Script.h"
#include "cli/ScriptCommands.h"
#include "raster/MemoryBudget.h"
#include "undo/TextureSnapshot.h"

namespace {

/// "save" and "state" write outside the document, and some steps take as long as they are told to.
bool isHarmless(const orvanel::ScriptStep& step) {
  constexpr int mostSide = 300;
  constexpr int mostCount = 20;
  if (step.command == QStringLiteral("save") || step.command == QStringLiteral("state")) return false;
  return step.arguments[u"width"].toDouble() <= mostSide &&
         step.arguments[u"height"].toDouble() <= mostSide && step.arguments[u"count"].toDouble() <= mostCount;
}

void perform(const std::vector<orvanel::ScriptStep>& steps, orvanel::ColorMode mode) {
  const orvanel::ScopedMemoryLimit limit(std::uint64_t{64} << 20U);
  orvanel::ScriptRun run(
      orvanel::Document::create(QStringLiteral("Fuzzed"), 140, 30, mode, orvanel::MetalContext::shared()));
  for (const orvanel::ScriptStep& step : steps) {
    if (!isHarmless(step)) continue;
    const orvanel::StepResult result = orvanel::performStep(run, step);
    if (!result && result.error().isEmpty()) std::abort();
  }
  orvanel::Document& document = *run.document;
  const auto before = document.composite();
  if (before == nullptr) return;
  const auto shown = std::make_unique<const orvanel::Surface>(*before);
  const std::int64_t position = document.undoStack.currentIndex.value() + 1;
  run.isRefused = false;
  for (std::int64_t i = 0; i < position; ++i) document.undo();
  for (std::int64_t i = 0; i < position; ++i) document.redo();
  const auto after = document.composite();
  if (after != nullptr && !run.isRefused && !after->equals(*shown)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t mostSteps = 24;
  const auto steps =
      orvanel::parseScript(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  if (!steps) {
    if (steps.error().isEmpty()) std::abort();
    return 0;
  }
  if (steps->size() > mostSteps) return 0;
  perform(*steps, orvanel::allColorModes[size % orvanel::allColorModes.size()]);
  // What is still at work in the background would look lost.
  orvanel::TextureSnapshot::waitForCompression();
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int seed) {
  orvanel::fuzz::Random random(seed);
  if (orvanel::fuzz::choose(random, 16) == 0) return orvanel::fuzz::handedOver({}, data, size, most);
  orvanel::fuzz::Bytes text(data, data + size);
  orvanel::fuzz::mutateJson(text, random);
  return orvanel::fuzz::handedOver(text, data, size, most);
}
