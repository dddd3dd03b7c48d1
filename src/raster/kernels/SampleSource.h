// One source of a composite, asked for its pixels at samples: a surface as it is, or seen through a change,
// whose result there is bit for bit that of the change's kernel over the whole surface.
// Made on the main thread for one evaluation; then read by tasks, each with scratch memory of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "raster/CompositePlan.h"
#include "raster/kernels/LevelsTable.h"
#include "raster/kernels/PixelTransform.h"
#include "raster/kernels/SampleRows.h"
#include "raster/kernels/TileTransform.h"

namespace orvanel::kernels {

/// What is known of the source's pixels under one tile of the canvas without reading any.
struct TileFacts {
  bool isUniform = false;
  std::uint64_t pixel = 0;     ///< of a uniform one, regular
  std::uint64_t identity = 0;  ///< pixels with equal facts are equal
};

/// Gives the unchanged pixels of `surface` at the samples of a strip: gathered, or kept from before.
class StripReader {
 public:
  virtual ~StripReader() = default;
  /// Aligned to 64 bytes, with room for a multiple of 32 pixels; good until the next call for that surface.
  [[nodiscard]] virtual const std::byte* standing(const Surface& surface) = 0;
};

class SampleSource {
 public:
  explicit SampleSource(const CompositePlan::Source& source);

  [[nodiscard]] const Surface& surface() const { return *surface_; }
  /// The surfaces that `read` asks for at the samples themselves.
  [[nodiscard]] std::vector<const Surface*> standingSurfaces() const;
  /// The transform of a source that is resampled, for `TileTransform`.
  [[nodiscard]] const PixelTransform* resampling() const {
    return isMoved_ && transform_.kind == PixelTransform::Kind::resample ? &transform_ : nullptr;
  }
  /// `transform` is the thread's object where the source is resampled.
  [[nodiscard]] TileFacts factsOf(int tileIndex, const TileTransform* transform) const;
  /// Whether the tile's pixels are known to be opaque; others may be.
  [[nodiscard]] bool isKnownOpaque(int tileIndex, const TileFacts& facts) const;
  /// The pixels at the strip's samples, which aren't uniform: those of `reader`, or made in `scratch`. Not
  /// for a source that is resampled.
  [[nodiscard]] const std::byte* read(int tileIndex, const SampleBlock& strip, StripReader& reader,
                                      std::byte* scratch) const;

 private:
  [[nodiscard]] TileFacts standingFacts(int tileIndex) const;
  [[nodiscard]] TileFacts shiftedFacts(int tileIndex) const;
  [[nodiscard]] TileFacts adjustedFacts(int tileIndex) const;
  void adjustRow(const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) const;

  const Surface* surface_;
  std::uint64_t version_ = 0;
  bool isMoved_ = false;
  PixelTransform transform_;
  const LevelsChange* levels_ = nullptr;
  std::optional<LevelsTable> table_;
};

}  // namespace orvanel::kernels
