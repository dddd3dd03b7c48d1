// Flattens a document's tree: plans which surface goes into which target, and leaves the pixels to a
// `CompositePlan`. Owned by its document; main thread only. `FrozenComposite` does the same on another
// thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "model/Document.h"
#include "raster/CompositePlan.h"
#include "raster/SampledComposite.h"

namespace orvanel {

class DocumentCompositor {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  /// Whether the document has marked its flattened image as out of date.
  enum class Freshness { stale, unknown };

  explicit DocumentCompositor(MetalContext& context);
  ~DocumentCompositor();
  DocumentCompositor(DocumentCompositor&&) = delete;
  DocumentCompositor& operator=(DocumentCompositor&&) = delete;

  /// Hashes the properties that change the flattened image without touching pixels: opacity, blend mode,
  /// visibility, masks and shape of the whole tree, invisible nodes included.
  [[nodiscard]] static std::int64_t compositingHash(const Document& document);
  /// The hash of the tree last flattened, or being flattened; initially 0.
  [[nodiscard]] std::int64_t lastCompositingHash() const { return lastCompositingHash_; }

  /// Whether the tree has been flattened completely, judging by its current properties.
  [[nodiscard]] bool isCurrent(const Document& document) const;
  /// Flattens the visible nodes into `composite` until the deadline; the next call continues if nothing has
  /// changed. True once complete.
  bool flatten(const Document& document, Surface& composite, Freshness freshness, Deadline deadline);
  /// The tiles, in ascending order, at which flattening would change the document's image as it stands.
  [[nodiscard]] static std::vector<int> staleTiles(const Document& document);
  /// Forgets what was flattened, because the composite is a new surface.
  void forget();
  /// Flattens everything at once, regardless of earlier work.
  CompositeReport compositeDocument(const Document& document, Surface& composite,
                                    CompositeScope scope = CompositeScope::changedTiles);

  /// The flattened image at a view's samples, with what open edits show.
  const Surface& sample(const Document& document, SampledComposite& samples, const SampleGrid& grid);
  /// Gathers ahead for `sample`, for about this long. True once nothing is missing.
  bool prepareSample(const Document& document, SampledComposite& samples, const SampleGrid& grid,
                     std::chrono::milliseconds budget);

  /// Temporaries of isolating folders, kept between runs.
  [[nodiscard]] std::vector<ConstTexture> texturePool() const {
    return {texturePool_.begin(), texturePool_.end()};
  }
  /// The next slot to hand out; after a run, the number of slots it used.
  [[nodiscard]] int texturePoolIndex() const { return texturePoolIndex_; }

 private:
  friend class FrozenComposite;

  /// Whether a run reads the document's own surfaces, the same as open edits show them, or copies that
  /// another thread may read.
  enum class Sources { live, shown, copied };
  struct Run {
    Run(Surface& target, Sources kept) : composite(target), plan(target), sources(kept) {}
    /// The layer's surface, kept alive for the duration of the run, or its copy.
    CompositePlan::Source source(const Document& document, const Layer& layer, SurfaceKind kind);

    Surface& composite;
    CompositePlan plan;
    Sources sources;
    std::vector<ConstTexture> held;
    int nextTile = 0;
  };

  [[nodiscard]] std::unique_ptr<Run> beginRun(const Document& document, Surface& composite, Sources sources);
  /// Makes some more tiles; true once all are made.
  static bool advance(Run& run, int tiles);
  static void compositeLayerNode(const Document& document, const Layer& layer, Run& run,
                                 CompositePlan::Target target);
  static void compositeFolderNode(const LayerFolder& folder, CompositePlan& plan,
                                  CompositePlan::Target target, CompositePlan::Target isolated,
                                  ColorMode colorMode);
  [[nodiscard]] CompositePlan::Target addTemporary(Run& run, ColorMode colorMode);
  Texture acquireTemporaryTexture(int width, int height, ColorMode colorMode);

  MetalContext& context_;
  std::vector<Texture> texturePool_;
  int texturePoolIndex_ = 0;
  std::int64_t lastCompositingHash_ = 0;
  bool hasFlattened_ = false;
  /// The run interrupted by a deadline.
  std::unique_ptr<Run> run_;
};

/// The flattened image of one moment. Creation, on the main thread, takes time proportional to nodes and
/// tiles. Whatever wasn't flattened then is flattened by the first thread that asks for it.
class FrozenComposite {
 public:
  /// The document must have a composite.
  explicit FrozenComposite(const Document& document);
  FrozenComposite(const FrozenComposite&) = delete;
  FrozenComposite& operator=(const FrozenComposite&) = delete;

  /// The finished image; null once `isCancelled`, polled every few milliseconds, returns true. Any thread.
  [[nodiscard]] const Surface* surface(const std::function<bool()>& isCancelled = {});
  /// The most pixel memory that `surface` may still take, for the image and for those of isolating folders.
  /// Any thread.
  [[nodiscard]] std::uint64_t bytesToFinish();

 private:
  std::mutex mutex_;
  Surface composite_;
  DocumentCompositor compositor_;
  std::unique_ptr<DocumentCompositor::Run> run_;
};

}  // namespace orvanel
