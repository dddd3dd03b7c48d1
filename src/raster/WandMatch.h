// The pixels that a magic wand finds, a bit for each. Tiles of the sample are looked at when a flood reaches
// them, and the memory is kept from one tolerance to the next. Owned by the gesture; main thread only, it
// spreads its work itself.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"
#include "raster/kernels/TileBits.h"

namespace orvanel {

enum class WandEdges {
  crisp,
  /// An unselected pixel between n >= 2 selected neighbours of its four becomes min(n / 4, 0.75).
  antialiased,
};

class WandMatch {
 public:
  /// Makes a tile of colours. Called once for each tile that is looked at, from several threads.
  using TileColors = std::function<Tile(int index)>;

  explicit WandMatch(const Surface& sample);
  /// For a sample of this size and format whose tiles are made on demand.
  WandMatch(PixelFormat format, int width, int height, TileColors colors);

  [[nodiscard]] PixelFormat format() const { return colors_.format(); }
  /// A pixel of the sample, regular.
  [[nodiscard]] std::uint64_t pixelAt(int x, int y);

  // Colours match if no channel differs by more than the tolerance, 0 to 1. False if there is no memory; the
  // match is then empty.
  /// Finds the pixels connected with the seed, which always belongs to them, by four neighbours.
  [[nodiscard]] bool flood(int seedX, int seedY, const Color4& color, float tolerance);
  [[nodiscard]] bool findAll(const Color4& color, float tolerance);

  [[nodiscard]] bool isEmpty() const;
  [[nodiscard]] bool isFull() const;
  /// Writes 1.0 for what was found, 0.0 elsewhere.
  void writeTo(Surface& mask, WandEdges edges) const;

 private:
  enum class Extent : std::uint8_t { unknown, none, some, all };
  enum Side : std::size_t { left, right, top, bottom };
  static constexpr std::array allSides{left, right, top, bottom};
  [[nodiscard]] static Side opposite(Side side);
  /// The pixels along each edge of a tile, columns from the top.
  using Edges = std::array<kernels::BitRow, 4>;

  struct Place {
    Extent eligible = Extent::unknown;
    Extent found = Extent::none;
    bool isPending = false;
    bool isVisited = false;
    Edges arrived;  ///< what the neighbours have found beyond each edge
    Edges edges;    ///< what was found along each edge
    std::unique_ptr<kernels::TileBits> eligibleBits;
    std::unique_ptr<kernels::TileBits> foundBits;
  };
  struct Criterion {
    Color4 color{};
    float limit = 0.0F;
  };

  [[nodiscard]] bool begin();
  [[nodiscard]] Place& place(int index) { return places_[static_cast<std::size_t>(index)]; }
  [[nodiscard]] const Place& place(int index) const { return places_[static_cast<std::size_t>(index)]; }
  /// The tile beyond an edge, or -1.
  [[nodiscard]] int neighbour(int index, Side side) const;
  [[nodiscard]] kernels::BitRow visibleColumns(int index) const;

  void fetchColors(int index);
  /// Finds out which pixels of a tile are eligible.
  void look(int index, const Criterion& criterion);
  void plantSeed(int x, int y);
  void visit(int index, const Criterion& criterion);
  void enter(Place& here) const;
  void settle(int index);
  void passOn(int index);
  /// What was found right beyond an edge of a tile.
  [[nodiscard]] kernels::BitRow foundBeyond(int index, Side side) const;
  [[nodiscard]] bool softenInto(int index, kernels::TileBits& halves, kernels::TileBits& threeQuarters) const;
  void writeTile(int index, Surface& mask, WandEdges edges) const;

  Surface colors_;
  TileColors makeColors_;
  /// Bytes, which tasks can write side by side.
  std::vector<std::uint8_t> isFetched_;
  std::vector<Place> places_;
  std::vector<int> visited_;
  std::vector<int> pending_;
};

}  // namespace orvanel
