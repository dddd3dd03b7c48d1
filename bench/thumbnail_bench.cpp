// What thumbnails cost the main thread: those of 50 layers, all stale after one edit, and those of one layer.
// The waiting for the debounce and for the background isn't counted.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

#include "FeelDocuments.h"
#include "model/Document.h"
#include "model/ThumbnailManager.h"

namespace orvanel {
namespace {

double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Layers of a few photos in turn, so that tiles lie in memory as in a document of many layers.
DocumentPtr documentOfPhotos(int side, ColorMode mode, int layers) {
  constexpr int photos = 2;
  std::vector<ConstTexture> surfaces;
  for (int i = 0; i < std::min(photos, layers); ++i) {
    surfaces.push_back(bench::photoDocument(side, mode)->activeLayer()->texture.value());
  }
  LayerNodeList nodes;
  for (int i = 0; i < layers; ++i) {
    const ConstTexture& photo = surfaces[static_cast<std::size_t>(i) % surfaces.size()];
    nodes.emplace_back(
        std::make_shared<Layer>(NodeValues{.name = QString::number(i)}, std::make_shared<Surface>(*photo)));
  }
  return Document::create({.name = QStringLiteral("Photos"),
                           .width = side,
                           .height = side,
                           .colorMode = mode,
                           .rootNodes = nodes,
                           .selectedNodeID = nodes.front().id()},
                          MetalContext::shared());
}

bool areFresh(const Document& document) {
  return std::ranges::none_of(document.allLayers(),
                              [](const auto& layer) { return layer->thumbnailDirty.value(); });
}

/// Runs the event loop until all thumbnails are made; the longest time that one event held the thread.
double settle(const Document& document) {
  double longest = 0.0;
  while (!areFresh(document)) {
    const double before = threadSeconds();
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    longest = std::max(longest, threadSeconds() - before);
  }
  return longest;
}

void thumbnails(benchmark::State& state, int side, ColorMode mode, int layers) {
  const DocumentPtr document = documentOfPhotos(side, mode, layers);
  const ThumbnailManager::Hold viewer = ThumbnailManager::viewing(document);
  settle(*document);
  double longest = 0.0;
  for (auto _ : state) {
    const double start = threadSeconds();
    for (const auto& layer : document->allLayers()) document->thumbnailManager->markDirty(layer->id);
    longest = std::max(longest, settle(*document));
    state.SetIterationTime(threadSeconds() - start);
  }
  state.counters["longest_hold_ms"] = longest * 1e3;
}

void registerWorkloads() {
  const auto add = [](const char* name, int side, ColorMode mode, int layers) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) { thumbnails(state, side, mode, layers); })
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(5);
  };
  add("thumbnails/1_layer_8192_rgb16", 8192, ColorMode::rgb16, 1);
  add("thumbnails/50_layers_8192_rgb16", 8192, ColorMode::rgb16, 50);
  add("thumbnails/50_layers_16384_rgb8", 16384, ColorMode::rgb8, 50);
}

[[maybe_unused]] const bool areRegistered = (registerWorkloads(), true);

}  // namespace
}  // namespace orvanel
