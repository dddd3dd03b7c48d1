// Flattens a document's tree into its composite: decides what goes into which target and leaves the pixels
// to a `CompositePlan`. Owned by a renderer, or by a headless command; main thread only.
#pragma once

#include <cstdint>
#include <vector>

#include "model/Document.h"
#include "raster/CompositePlan.h"

namespace orvanel {

class DocumentCompositor {
 public:
  explicit DocumentCompositor(MetalContext& context) : context_(context) {}

  /// A hash over the properties that change the flattened image without touching pixels: opacity, blend
  /// mode, visibility, masks and shape of the whole tree, invisible nodes included.
  [[nodiscard]] static std::int64_t compositingHash(const Document& document);

  /// Flattens the visible nodes into `compositedTexture`; without one, nothing.
  CompositeReport compositeDocument(const Document& document,
                                    CompositeScope scope = CompositeScope::changedTiles);

  /// Temporaries of isolating folders, kept from run to run.
  [[nodiscard]] const std::vector<Texture>& texturePool() const { return texturePool_; }
  /// The next slot to hand out; after a run, the number of slots it went through.
  [[nodiscard]] int texturePoolIndex() const { return texturePoolIndex_; }

 private:
  void compositeNodes(const LayerNodeList& nodes, CompositePlan& plan, CompositePlan::Target target,
                      const Document& document);
  void compositeLayerNode(const Layer& layer, CompositePlan& plan, CompositePlan::Target target,
                          const Document& document);
  void compositeFolderNode(const LayerFolder& folder, CompositePlan& plan, CompositePlan::Target target,
                           const Document& document);
  Texture acquireTemporaryTexture(int width, int height, ColorMode colorMode);

  MetalContext& context_;
  std::vector<Texture> texturePool_;
  int texturePoolIndex_ = 0;
};

}  // namespace orvanel
