// Flattens a document's tree: decides what goes into which target and leaves the pixels to a `CompositePlan`.
// Owned by its document; main thread only. `FrozenComposite` does the same on another thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "model/Document.h"
#include "raster/CompositePlan.h"

namespace orvanel {

class DocumentCompositor {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  /// Whether the document says that its flattened image is out of date.
  enum class Freshness { stale, unknown };

  explicit DocumentCompositor(MetalContext& context);
  ~DocumentCompositor();
  DocumentCompositor(DocumentCompositor&&) = delete;
  DocumentCompositor& operator=(DocumentCompositor&&) = delete;

  /// A hash over the properties that change the flattened image without touching pixels: opacity, blend
  /// mode, visibility, masks and shape of the whole tree, invisible nodes included.
  [[nodiscard]] static std::int64_t compositingHash(const Document& document);
  /// The hash of the tree that was last flattened, or is being flattened; 0 at first.
  [[nodiscard]] std::int64_t lastCompositingHash() const { return lastCompositingHash_; }

  /// Whether the tree was flattened to its end as it is now, as far as its properties tell.
  [[nodiscard]] bool isCurrent(const Document& document) const;
  /// Flattens the visible nodes into `composite` until the deadline, and goes on from there at the next call
  /// as long as nothing has changed. True once all of it is made.
  bool flatten(const Document& document, Surface& composite, Freshness freshness, Deadline deadline);
  /// The composite is another surface now: what was flattened says nothing of it.
  void forget();
  /// All of it at once, whatever was made before.
  CompositeReport compositeDocument(const Document& document, Surface& composite,
                                    CompositeScope scope = CompositeScope::changedTiles);

  /// Temporaries of isolating folders, kept from run to run.
  [[nodiscard]] const std::vector<Texture>& texturePool() const { return texturePool_; }
  /// The next slot to hand out; after a run, the number of slots it went through.
  [[nodiscard]] int texturePoolIndex() const { return texturePoolIndex_; }

 private:
  friend class FrozenComposite;

  /// Whether a run reads the document's own surfaces, or copies that another thread may read.
  enum class Sources { live, copied };
  struct Run {
    Run(Surface& target, Sources kept) : composite(target), plan(target), sources(kept) {}
    /// The surface, or its copy, kept for as long as the run.
    const Surface& hold(const ConstTexture& surface);

    Surface& composite;
    CompositePlan plan;
    Sources sources;
    std::vector<ConstTexture> held;
    int nextTile = 0;
  };

  [[nodiscard]] std::unique_ptr<Run> beginRun(const Document& document, Surface& composite, Sources sources);
  /// Makes some more tiles; true once all are made.
  static bool advance(Run& run, int tiles);
  static void compositeLayerNode(const Layer& layer, Run& run, CompositePlan::Target target,
                                 ColorMode colorMode);
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
  /// What a deadline has interrupted.
  std::unique_ptr<Run> run_;
};

/// The flattened image of one moment. Made on the main thread in time proportional to nodes and tiles; what
/// wasn't flattened then is flattened by the first thread that asks for it.
class FrozenComposite {
 public:
  /// The document has a composite.
  explicit FrozenComposite(const Document& document);
  FrozenComposite(const FrozenComposite&) = delete;
  FrozenComposite& operator=(const FrozenComposite&) = delete;

  /// The image, finished; null once `isCancelled` says so, which is asked every few milliseconds. Any thread.
  [[nodiscard]] const Surface* surface(const std::function<bool()>& isCancelled = {});
  /// The most pixel memory that `surface` may still take for the image; 0 once it is finished. Any thread.
  [[nodiscard]] std::uint64_t bytesToFinish();

 private:
  std::mutex mutex_;
  Surface composite_;
  DocumentCompositor compositor_;
  std::unique_ptr<DocumentCompositor::Run> run_;
};

}  // namespace orvanel
