// The layer panel with 500 layers in 20 folders: to open it, to repaint the one row that a change concerns,
// and to scroll by a notch of the wheel. Pictures and pixels are small, because only the panel is measured.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QScrollBar>
#include <algorithm>
#include <memory>

#include "model/Document.h"
#include "panels/layers/LayerNSOutlineView.h"
#include "panels/layers/LayerPanelView.h"

namespace orvanel {
namespace {

constexpr int folders = 20;
constexpr int layersInFolder = 25;
constexpr int canvasSide = 64;

DocumentPtr documentOfManyLayers() {
  LayerNodeList roots;
  const Surface empty(layerPixelFormat(ColorMode::rgb8), canvasSide, canvasSide);
  for (int folder = 0; folder < folders; ++folder) {
    LayerNodeList children;
    for (int i = 0; i < layersInFolder; ++i) {
      children.emplace_back(std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Layer %1").arg(i)},
                                                    std::make_shared<Surface>(empty)));
    }
    roots.emplace_back(std::make_shared<LayerFolder>(
        NodeValues{.name = QStringLiteral("Folder %1").arg(folder)}, std::move(children)));
  }
  return Document::create({.name = QStringLiteral("Many layers"),
                           .width = canvasSide,
                           .height = canvasSide,
                           .colorMode = ColorMode::rgb8,
                           .rootNodes = roots,
                           .selectedNodeID = roots.front().id()},
                          MetalContext::shared());
}

/// A panel on the screen with all its thumbnails made.
struct ShownPanel {
  ShownPanel() {
    panel.resize(280, 900);
    panel.setDocument(document);
    panel.show();
    const auto isStale = [](const auto& layer) { return layer->thumbnailDirty.value(); };
    while (std::ranges::any_of(document->allLayers(), isStale)) {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    QApplication::processEvents();
  }
  DocumentPtr document = documentOfManyLayers();
  LayerPanelView panel;
};

void open500(benchmark::State& state) {
  const DocumentPtr document = documentOfManyLayers();
  LayerPanelView panel;
  panel.resize(280, 900);
  panel.show();
  QApplication::processEvents();
  for (auto _ : state) {
    panel.setDocument(document);
    panel.repaint();
    QApplication::sendPostedEvents();
    state.PauseTiming();
    panel.setDocument(nullptr);
    QApplication::processEvents();
    state.ResumeTiming();
  }
}

void oneRow(benchmark::State& state) {
  ShownPanel shown;
  const LayerTreeModel& model = shown.panel.outline().treeModel();
  const QUuid id = model.idOf(model.index(1, 0, model.index(0, 0)));
  bool isVisible = true;
  for (auto _ : state) {
    shown.document->setVisible(id, isVisible = !isVisible);
    QApplication::processEvents();
  }
}

void scroll(benchmark::State& state) {
  ShownPanel shown;
  QScrollBar& bar = *shown.panel.outline().verticalScrollBar();
  int step = 3 * bar.singleStep();
  for (auto _ : state) {
    if (bar.value() + step > bar.maximum() || bar.value() + step < bar.minimum()) step = -step;
    bar.setValue(bar.value() + step);
    QApplication::processEvents();
  }
}

void registerWorkloads() {
  benchmark::RegisterBenchmark("LayerPanel/open500", open500)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("LayerPanel/oneRow", oneRow)->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("LayerPanel/scroll", scroll)->Unit(benchmark::kMicrosecond);
}

[[maybe_unused]] const bool areRegistered = (registerWorkloads(), true);

}  // namespace
}  // namespace orvanel
