#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "raster/Prefetch.h"
#include "raster/SampleGrid.h"
#include "raster/Surface.h"
#include "raster/fragments/DisplayRows.h"
#include "raster/fragments/FragmentUniforms.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel::fragments {
namespace {

/// How many tiles ahead pixels are asked for.
constexpr std::size_t partsAhead = 8;

enum class Blend { nothing, replace, over };

Blend blendOf(const displayRows::Coverage& coverage) {
  if (coverage.isTransparent) return Blend::nothing;
  return coverage.isOpaque ? Blend::replace : Blend::over;
}

/// A run of device columns that is drawn in one way.
struct Segment {
  PixelSpan columns;
  Blend blend;
};

/// The device columns that show one column of tiles.
struct TileColumns {
  int tileX;
  PixelSpan device;
  PixelSpan document;
};

/// Makes rows of the document as the screen shows them, one document row at a time.
class RowBuilder {
 public:
  /// `indices` are the texture's columns under the device's `columns`.
  RowBuilder(const Surface& texture, PixelSpan columns, std::vector<std::int32_t> indices,
             std::uint32_t channelMask)
      : texture_(texture),
        channelMask_(channelMask),
        pixelBytes_(static_cast<std::size_t>(texture.pixelBytes())),
        columns_(columns),
        indices_(std::move(indices)),
        display_(indices_.size()) {
    isOneToOne_ = isContiguous();
    isMagnified_ = !isOneToOne_ && indices_.back() - indices_.front() < columns.length();
    isReduced_ = !isOneToOne_ && !isMagnified_;
    gathered_.resize(isReduced_ ? display_.size() * pixelBytes_ : 0);
    converted_.resize(isMagnified_ ? tileSide : 0);
    splitByTiles();
  }

  void build(int textureY) {
    segments_.clear();
    textureY_ = textureY;
    if (isReduced_) gatherRow();
    for (std::size_t i = 0; i < parts_.size();) {
      const TileColumns& part = parts_[i++];
      const Tile& tile = tileOf(part);
      if (tile.isUniform()) {
        append(part.device, fillUniform(part, tile));
      } else if (!isReduced_) {
        append(part.device, convertRow(part, rowOf(tile)));
      } else {
        PixelSpan run = part.device;
        for (; i < parts_.size() && !tileOf(parts_[i]).isUniform(); ++i) run.end = parts_[i].device.end;
        append(run, convert(gathered_.data() + placeOf(run.begin) * pixelBytes_, displayAt(run.begin),
                            run.length()));
      }
    }
  }

  void draw(std::uint32_t* bandRow) const {
    for (const Segment& segment : segments_) {
      const auto count = static_cast<std::size_t>(segment.columns.length());
      const std::uint32_t* source = display_.data() + (segment.columns.begin - columns_.begin);
      std::uint32_t* destination = bandRow + segment.columns.begin;
      if (segment.blend == Blend::replace) {
        std::memcpy(destination, source, count * sizeof(std::uint32_t));
      } else if (segment.blend == Blend::over) {
        displayRows::blendOver(destination, source, count);
      }
    }
  }

 private:
  [[nodiscard]] bool isContiguous() const {
    for (std::size_t i = 1; i < indices_.size(); ++i) {
      if (indices_[i] != indices_[i - 1] + 1) return false;
    }
    return true;
  }

  [[nodiscard]] std::size_t placeOf(int device) const {
    return static_cast<std::size_t>(device - columns_.begin);
  }
  [[nodiscard]] std::int32_t indexAt(int device) const { return indices_[placeOf(device)]; }
  std::uint32_t* displayAt(int device) { return display_.data() + placeOf(device); }

  [[nodiscard]] const Tile& tileOf(const TileColumns& part) const {
    return texture_.tile(texture_.tileIndex(part.tileX, textureY_ / tileSide));
  }
  [[nodiscard]] const std::byte* rowOf(const Tile& tile) const {
    return tile.data() + static_cast<std::size_t>(textureY_ % tileSide) * tileSide * pixelBytes_;
  }

  void splitByTiles() {
    auto from = indices_.begin();
    while (from != indices_.end()) {
      const int tileX = *from / tileSide;
      const auto to = std::lower_bound(from, indices_.end(), (tileX + 1) * tileSide);
      const auto deviceAt = [&](auto position) {
        return columns_.begin + static_cast<int>(position - indices_.begin());
      };
      parts_.push_back({tileX, {deviceAt(from), deviceAt(to)}, {*from, *(to - 1) + 1}});
      from = to;
    }
  }

  /// Gathers the whole row before any of it is converted: distant pixels arrive slowly, and what reads them
  /// together would wait for each.
  void gatherRow() {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      if (i + partsAhead < parts_.size()) askFor(parts_[i + partsAhead]);
      if (tileOf(parts_[i]).isUniform()) continue;
      if (pixelBytes_ == 8) {
        gather<std::uint64_t>(parts_[i]);
      } else {
        gather<std::uint32_t>(parts_[i]);
      }
    }
  }

  /// Asks for the pixels of a part ahead of time; the processor doesn't foresee them across tiles.
  void askFor(const TileColumns& part) const {
    const Tile& tile = tileOf(part);
    if (tile.isUniform()) return;
    const std::byte* row = rowOf(tile);
    for (int x = part.device.begin; x < part.device.end; ++x) {
      prefetch(row + static_cast<std::size_t>(indexAt(x) % tileSide) * pixelBytes_);
    }
  }

  template <typename Pixel>
  void gather(const TileColumns& part) {
    const auto* source = reinterpret_cast<const Pixel*>(rowOf(tileOf(part)));
    auto* destination = reinterpret_cast<Pixel*>(gathered_.data()) + placeOf(part.device.begin);
    for (int x = part.device.begin; x < part.device.end; ++x) {
      *destination++ = source[static_cast<std::size_t>(indexAt(x)) % tileSide];
    }
  }

  Blend convert(const std::byte* source, std::uint32_t* destination, int count) {
    return blendOf(displayRows::convert(texture_.format(), source, destination,
                                        static_cast<std::size_t>(count), channelMask_));
  }

  Blend fillUniform(const TileColumns& part, const Tile& tile) {
    const std::uint64_t pixel = tile.pixel();
    std::uint32_t color = 0;
    const Blend blend = blendOf(displayRows::convert(
        texture_.format(), reinterpret_cast<const std::byte*>(&pixel), &color, 1, channelMask_));
    if (blend != Blend::nothing) std::fill_n(displayAt(part.device.begin), part.device.length(), color);
    return blend;
  }

  /// Converts the part of a row whose pixels stand side by side or are shown several times.
  Blend convertRow(const TileColumns& part, const std::byte* tileRow) {
    const std::byte* first = tileRow + static_cast<std::size_t>(part.document.begin % tileSide) * pixelBytes_;
    std::uint32_t* destination = displayAt(part.device.begin);
    if (isOneToOne_) return convert(first, destination, part.device.length());
    const Blend blend = convert(first, converted_.data(), part.document.length());
    for (int x = part.device.begin; x < part.device.end; ++x) {
      *destination++ = converted_[static_cast<std::size_t>(indexAt(x) - part.document.begin)];
    }
    return blend;
  }

  void append(PixelSpan device, Blend blend) {
    if (blend == Blend::nothing) return;
    if (!segments_.empty() && segments_.back().blend == blend &&
        segments_.back().columns.end == device.begin) {
      segments_.back().columns.end = device.end;
    } else {
      segments_.push_back({device, blend});
    }
  }

  const Surface& texture_;
  std::uint32_t channelMask_;
  std::size_t pixelBytes_;
  PixelSpan columns_;
  std::vector<std::int32_t> indices_;
  std::vector<std::uint32_t> display_;
  std::vector<std::byte> gathered_;
  std::vector<std::uint32_t> converted_;
  std::vector<TileColumns> parts_;
  std::vector<Segment> segments_;
  int textureY_ = 0;
  bool isOneToOne_ = false;
  bool isMagnified_ = false;
  bool isReduced_ = false;
};

/// Replaces the indices of document pixels by their places among the samples of the view.
void countSamples(std::vector<std::int32_t>& indices, const std::vector<std::int32_t>& samples) {
  auto sample = samples.begin();
  for (std::int32_t& index : indices) {
    sample = std::find(sample, samples.end(), index);
    index = static_cast<std::int32_t>(sample - samples.begin());
  }
}

}  // namespace

void document(const FragmentInvocation& invocation, const FragmentBand& band) {
  const Surface* texture = invocation.textures[0];
  if (texture == nullptr) return;
  if (texture->format() != PixelFormat::rgba8Unorm && texture->format() != PixelFormat::rgba16Float) return;

  const auto uniforms = fragmentUniforms<DocumentUniforms>(invocation);
  const AxisMapping horizontal = AxisMapping::horizontal(uniforms.view);
  const AxisMapping vertical = AxisMapping::vertical(uniforms.view);
  const PixelSpan columns = horizontal.inside(0, band.width);
  const PixelSpan rows = vertical.inside(band.y, band.y + band.rows);
  if (columns.isEmpty() || rows.isEmpty()) return;

  std::vector<std::int32_t> textureColumns = horizontal.indices(columns);
  std::vector<std::int32_t> textureRows = vertical.indices(rows);
  int width = static_cast<int>(uniforms.view.canvasWidth);
  int height = static_cast<int>(uniforms.view.canvasHeight);
  if (uniforms.isSampled != 0.0F) {
    const SampleGrid grid = SampleGrid::ofView(uniforms.view);
    countSamples(textureColumns, grid.columns);
    countSamples(textureRows, grid.rows);
    width = static_cast<int>(grid.columns.size());
    height = static_cast<int>(grid.rows.size());
  }
  // An image whose size differs from the canvas's can't be placed on it.
  if (texture->width() != width || texture->height() != height) return;

  const auto lane = [&](std::size_t channel, std::uint32_t mask) {
    return uniforms.channelVisibility[channel] != 0.0F ? mask : 0U;
  };
  const std::uint32_t channelMask = 0xFF000000U | lane(0, 0xFF0000U) | lane(1, 0xFF00U) | lane(2, 0xFFU);
  RowBuilder builder(*texture, columns, std::move(textureColumns), channelMask);
  int built = -1;
  for (int y = rows.begin; y < rows.end; ++y) {
    const int textureY = textureRows[static_cast<std::size_t>(y - rows.begin)];
    if (textureY != built) builder.build(built = textureY);
    builder.draw(bandRow(band, y - band.y));
  }
}

}  // namespace orvanel::fragments
