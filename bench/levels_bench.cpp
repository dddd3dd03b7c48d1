// The levels panel's histogram on large canvases: from the command to the bars, and for how long the main
// thread is held at a time meanwhile.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <chrono>

#include "FeelDocuments.h"
#include "panels/levels/LevelsWindow.h"

namespace orvanel {
namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

bool isCounted(const LevelsHistogram& histogram) {
  return std::ranges::any_of(histogram, [](std::int64_t count) { return count > 0; });
}

void histogram(benchmark::State& state) {
  const DocumentPtr document = bench::photoDocument(static_cast<int>(state.range(0)), ColorMode::rgb8);
  LevelsWindow panel(nullptr);
  double longestHold = 0.0;
  for (auto _ : state) {
    auto held = Clock::now();
    panel.openFor(document);
    longestHold = std::max(longestHold, millisecondsSince(held));
    while (!isCounted(panel.model().histogram.value())) {
      held = Clock::now();
      QApplication::processEvents();
      longestHold = std::max(longestHold, millisecondsSince(held));
    }
    state.PauseTiming();
    panel.reject();
    QApplication::processEvents();
    state.ResumeTiming();
  }
  state.counters["longestHold_ms"] = longestHold;
}

[[maybe_unused]] const auto* const registered = benchmark::RegisterBenchmark("Levels/histogram", histogram)
                                                    -> Arg(8192) -> Arg(16384)
                                                        -> Unit(benchmark::kMillisecond) -> UseRealTime();

}  // namespace
}  // namespace orvanel
