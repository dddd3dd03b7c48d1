#include "PhotoDocument.h"

#include <QFile>
#include <memory>

#include "io/document/DocumentIO.h"

namespace orvanel::bench {

Depth depthOf(const benchmark::State& state) {
  return state.range(0) == 0 ? Depth::fromEightBits : Depth::full;
}

PhotoDocument::PhotoDocument(Depth depth) {
  DocumentContents contents{
      .name = QStringLiteral("Photos"), .width = side, .height = side, .colorMode = ColorMode::rgb16};
  for (int i = 0; i < layerCount; ++i) {
    contents.rootNodes.emplace_back(
        std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo %1").arg(i)},
                                photoLayer(side, side, depth, static_cast<std::uint32_t>(i))));
  }
  document_ = Document::create(std::move(contents), MetalContext::shared());
  // Flattened in advance, as a visible document is.
  static_cast<void>(document_->composite());
}

PhotoDocument& PhotoDocument::of(Depth depth) {
  static std::unique_ptr<PhotoDocument> current;
  static Depth currentDepth = depth;
  if (current == nullptr || currentDepth != depth) {
    current.reset();
    current = std::make_unique<PhotoDocument>(depth);
    currentDepth = depth;
  }
  return *current;
}

void PhotoDocument::saveOnce() const {
  if (!QFile::exists(path())) {
    static_cast<void>(DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()));
  }
}

void reportRaw(benchmark::State& state) {
  state.counters["raw_MB/s"] = benchmark::Counter(static_cast<double>(PhotoDocument::rawBytes()) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace orvanel::bench
