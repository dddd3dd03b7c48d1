#include "raster/WandMatch.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "raster/HalfFloat.h"
#include "raster/Regularity.h"
#include "raster/TileMemory.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Wand.h"

namespace orvanel {
namespace {

using kernels::BitRow;
using kernels::TileBits;

constexpr int lastPixel = tileSide - 1;

/// Eight bytes of 0 or 1 as bits.
std::uint64_t packed(const std::uint8_t* flags) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, flags, sizeof(bytes));
  return bytes * 0x0102040810204080ULL >> 56U;
}

BitRow packedRow(const std::uint8_t* flags) {
  BitRow row;
  for (unsigned i = 0; i < 8; ++i) {
    row.low |= packed(flags + std::size_t{8} * i) << (8 * i);
    row.high |= packed(flags + 64 + std::size_t{8} * i) << (8 * i);
  }
  return row;
}

BitRow column(const TileBits& bits, int x) {
  BitRow column;
  for (int y = 0; y < tileSide; ++y) {
    if (bits[static_cast<std::size_t>(y)].at(x)) column.set(y);
  }
  return column;
}

/// Eight bits spread over eight half floats, as masks.
using Lanes = std::array<std::uint64_t, 2>;

constexpr std::array<Lanes, 256> makeLanes() {
  std::array<Lanes, 256> table{};
  for (std::size_t bits = 0; bits < 256; ++bits) {
    for (std::size_t i = 0; i < 8; ++i) {
      if ((bits >> i & 1U) != 0) table[bits][i / 4] |= 0xFFFFULL << (16 * (i % 4));
    }
  }
  return table;
}

constexpr std::array<Lanes, 256> lanesOfByte = makeLanes();

constexpr std::uint64_t fourTimes(std::uint16_t half) {
  return half * 0x0001000100010001ULL;
}

const Lanes& lanesOf(const BitRow& row, std::size_t group) {
  return lanesOfByte[(group < 8 ? row.low : row.high) >> (8 * (group % 8)) & 0xFFU];
}

void writeRow(const BitRow& ones, const BitRow& halves, const BitRow& threeQuarters, std::uint16_t* out) {
  const bool isSoft = (halves | threeQuarters).any();
  for (std::size_t group = 0; group < tileSide / 8; ++group, out += 8) {
    Lanes values = lanesOf(ones, group);
    for (std::size_t i = 0; i < 2; ++i) {
      values[i] &= fourTimes(halfOne);
      if (!isSoft) continue;
      values[i] |= lanesOf(halves, group)[i] & fourTimes(kernels::halfHalf);
      values[i] |= lanesOf(threeQuarters, group)[i] & fourTimes(kernels::halfThreeQuarters);
    }
    std::memcpy(out, values.data(), sizeof(values));
  }
}

}  // namespace

WandMatch::WandMatch(const Surface& sample)
    : colors_(sample),
      isFetched_(static_cast<std::size_t>(sample.tileCount()), 1),
      places_(static_cast<std::size_t>(sample.tileCount())) {}

WandMatch::WandMatch(PixelFormat format, int width, int height, TileColors colors)
    : colors_(format, width, height),
      makeColors_(std::move(colors)),
      isFetched_(static_cast<std::size_t>(colors_.tileCount()), 0),
      places_(static_cast<std::size_t>(colors_.tileCount())) {}

void WandMatch::fetchColors(int index) {
  std::uint8_t& isFetched = isFetched_[static_cast<std::size_t>(index)];
  if (isFetched == 0) colors_.setTile(index, makeColors_(index));
  isFetched = 1;
}

std::uint64_t WandMatch::pixelAt(int x, int y) {
  fetchColors(colors_.tileIndex(x / tileSide, y / tileSide));
  return regularPixel(colors_.pixelAt(x, y), colors_.format());
}

bool WandMatch::begin() {
  for (const int index : visited_) {
    Place& visited = place(index);
    visited.eligible = Extent::unknown;
    visited.found = Extent::none;
    visited.isPending = false;
    visited.isVisited = false;
    visited.arrived = {};
    visited.edges = {};
  }
  visited_.clear();
  return tileMemory::admitSurface();
}

WandMatch::Side WandMatch::opposite(Side side) {
  constexpr std::array<Side, 4> opposites{right, left, bottom, top};
  return opposites[side];
}

int WandMatch::neighbour(int index, Side side) const {
  const int x = index % colors_.tilesAcross();
  const int y = index / colors_.tilesAcross();
  switch (side) {
    case left:
      return x > 0 ? index - 1 : -1;
    case right:
      return x + 1 < colors_.tilesAcross() ? index + 1 : -1;
    case top:
      return y > 0 ? index - colors_.tilesAcross() : -1;
    case bottom:
      return y + 1 < colors_.tilesDown() ? index + colors_.tilesAcross() : -1;
  }
  return -1;
}

BitRow WandMatch::visibleColumns(int index) const {
  return BitRow::first(colors_.tileRect(index).width);
}

void WandMatch::look(int index, const Criterion& criterion) {
  fetchColors(index);
  Place& here = place(index);
  const kernels::TileReader reader(colors_, index);
  alignas(64) std::array<std::uint8_t, tileSide> flags;
  if (reader.isUniform()) {
    kernels::withinRow(colors_.format(), reader.row(0), criterion.color, criterion.limit, flags.data(), 16);
    here.eligible = flags[0] != 0 ? Extent::all : Extent::none;
    return;
  }
  if (here.eligibleBits == nullptr) here.eligibleBits = std::make_unique<TileBits>();
  const auto rows = static_cast<std::size_t>(colors_.tileRect(index).height);
  const BitRow visible = visibleColumns(index);
  bool isAny = false;
  bool isAll = true;
  for (std::size_t y = 0; y < tileSide; ++y) {
    BitRow& row = (*here.eligibleBits)[y];
    row = {};
    if (y >= rows) continue;
    kernels::withinRow(colors_.format(), reader.row(static_cast<int>(y)), criterion.color, criterion.limit,
                       flags.data(), tileSide);
    row = packedRow(flags.data()) & visible;
    isAny |= row.any();
    isAll &= row == visible;
  }
  here.eligible = isAll ? Extent::all : isAny ? Extent::some : Extent::none;
}

void WandMatch::plantSeed(int x, int y) {
  const int index = colors_.tileIndex(x / tileSide, y / tileSide);
  Place& here = place(index);
  pending_ = {index};
  here.isPending = true;
  const auto row = static_cast<std::size_t>(y % tileSide);
  if (here.foundBits == nullptr) here.foundBits = std::make_unique<TileBits>();
  here.foundBits->fill({});
  here.found = Extent::some;
  (*here.foundBits)[row].set(x % tileSide);
  if (here.eligible == Extent::all) return;
  // The flood passes through the seed whatever its colour.
  if (here.eligibleBits == nullptr) here.eligibleBits = std::make_unique<TileBits>();
  if (here.eligible == Extent::none) here.eligibleBits->fill({});
  here.eligible = Extent::some;
  (*here.eligibleBits)[row].set(x % tileSide);
  (*here.foundBits)[row] = kernels::runsThrough((*here.foundBits)[row], (*here.eligibleBits)[row]);
}

/// Takes in what has arrived from the neighbours and still matches.
void WandMatch::enter(Place& here) const {
  const TileBits& open = *here.eligibleBits;
  TileBits& found = *here.foundBits;
  const auto reach = [&](int y, const BitRow& bits) {
    const auto row = static_cast<std::size_t>(y);
    const BitRow entered = bits & open[row] & ~found[row];
    if (entered.any()) found[row] = kernels::runsThrough(found[row] | entered, open[row]);
  };
  reach(0, here.arrived[top]);
  reach(lastPixel, here.arrived[bottom]);
  if (!(here.arrived[left] | here.arrived[right]).any()) return;
  for (int y = 0; y < tileSide; ++y) {
    BitRow bits;
    if (here.arrived[left].at(y)) bits.set(0);
    if (here.arrived[right].at(y)) bits.set(lastPixel);
    reach(y, bits);
  }
}

void WandMatch::visit(int index, const Criterion& criterion) {
  Place& here = place(index);
  if (here.eligible == Extent::unknown) look(index, criterion);
  if (here.eligible == Extent::none || here.found == Extent::all) return;
  if (here.eligible == Extent::all) {
    here.found = Extent::all;
  } else {
    if (here.foundBits == nullptr) here.foundBits = std::make_unique<TileBits>();
    if (here.found == Extent::none) here.foundBits->fill({});
    enter(here);
    kernels::floodRows(*here.foundBits, *here.eligibleBits);
    here.found = Extent::some;
  }
  settle(index);
}

/// Summarises what was found in a tile, for its neighbours.
void WandMatch::settle(int index) {
  Place& here = place(index);
  const PixelRect rect = colors_.tileRect(index);
  const BitRow columns = BitRow::first(rect.width);
  if (here.found == Extent::some) {
    const TileBits& found = *here.foundBits;
    const auto isWhole = [&](const BitRow& row) { return row == columns; };
    here.edges = {column(found, 0), column(found, lastPixel), found.front(), found.back()};
    if (!std::all_of(found.begin(), found.begin() + rect.height, isWhole)) return;
    here.found = Extent::all;
  }
  const BitRow rows = BitRow::first(rect.height);
  here.edges = {rows, rows, columns, columns};
}

/// Tells the neighbours of a tile what they can't know yet.
void WandMatch::passOn(int index) {
  for (const Side side : allSides) {
    const int next = neighbour(index, side);
    if (next < 0) continue;
    Place& beyond = place(next);
    BitRow& arrived = beyond.arrived[opposite(side)];
    const BitRow news = place(index).edges[side] & ~arrived & ~beyond.edges[opposite(side)];
    if (!news.any()) continue;
    arrived = arrived | news;
    if (!std::exchange(beyond.isPending, true)) pending_.push_back(next);
  }
}

bool WandMatch::flood(int seedX, int seedY, const Color4& color, float tolerance) {
  if (!begin()) return false;
  const Criterion criterion{.color = color, .limit = tolerance + kernels::wandMargin};
  look(colors_.tileIndex(seedX / tileSide, seedY / tileSide), criterion);
  plantSeed(seedX, seedY);
  // Tiles that have heard news are flooded side by side, round after round.
  std::vector<int> round;
  while (!pending_.empty()) {
    round.swap(pending_);
    pending_.clear();
    tbb::parallel_for(std::size_t{0}, round.size(), [&](std::size_t i) { visit(round[i], criterion); });
    for (const int index : round) {
      place(index).isPending = false;
      if (!std::exchange(place(index).isVisited, true)) visited_.push_back(index);
    }
    for (const int index : round) passOn(index);
  }
  return true;
}

bool WandMatch::findAll(const Color4& color, float tolerance) {
  if (!begin()) return false;
  const Criterion criterion{.color = color, .limit = tolerance + kernels::wandMargin};
  kernels::forEachTile(colors_, [&](int index) {
    Place& here = place(index);
    look(index, criterion);
    here.found = here.eligible;
    if (here.found == Extent::none) return;
    std::swap(here.foundBits, here.eligibleBits);
    settle(index);
  });
  for (int index = 0; index < colors_.tileCount(); ++index) visited_.push_back(index);
  return true;
}

bool WandMatch::isEmpty() const {
  return std::ranges::all_of(visited_, [this](int index) { return place(index).found == Extent::none; });
}

bool WandMatch::isFull() const {
  return std::ranges::all_of(places_, [](const Place& place) { return place.found == Extent::all; });
}

BitRow WandMatch::foundBeyond(int index, Side side) const {
  const int next = neighbour(index, side);
  return next < 0 ? BitRow{} : place(next).edges[opposite(side)];
}

/// The unselected pixels of a tile with two selected neighbours, and with more; false if there are none.
bool WandMatch::softenInto(int index, TileBits& halves, TileBits& threeQuarters) const {
  static constexpr TileBits nothing{};
  const Place& here = place(index);
  const TileBits& found = here.found == Extent::none ? nothing : *here.foundBits;
  const BitRow leftOf = foundBeyond(index, left);
  const BitRow rightOf = foundBeyond(index, right);
  const BitRow above = foundBeyond(index, top);
  const BitRow below = foundBeyond(index, bottom);
  if (here.found == Extent::none && !(leftOf | rightOf | above | below).any()) return false;
  const BitRow visible = visibleColumns(index);
  bool isAny = false;
  const int rows = colors_.tileRect(index).height;
  for (int y = 0; y < rows; ++y) {
    const auto row = static_cast<std::size_t>(y);
    const BitRow a = found[row].movedUp(leftOf.at(y));
    const BitRow b = found[row].movedDown(rightOf.at(y));
    const BitRow c = y > 0 ? found[row - 1] : above;
    const BitRow d = y < lastPixel ? found[row + 1] : below;
    const BitRow unselected = visible & ~found[row];
    const BitRow three = (a & b & (c | d)) | (c & d & (a | b));
    const BitRow two = (a & b) | (c & d) | ((a | b) & (c | d));
    threeQuarters[row] = three & unselected;
    halves[row] = two & ~three & unselected;
    isAny |= (two & unselected).any();
  }
  return isAny;
}

void WandMatch::writeTile(int index, Surface& mask, WandEdges edges) const {
  const Place& here = place(index);
  if (here.found == Extent::all) return mask.setUniform(index, halfOne);
  TileBits halves{};
  TileBits threeQuarters{};
  const bool isSoft = edges == WandEdges::antialiased && softenInto(index, halves, threeQuarters);
  if (here.found == Extent::none && !isSoft) return mask.setUniform(index, 0);
  auto* out = reinterpret_cast<std::uint16_t*>(mask.overwriteTile(index));
  for (std::size_t y = 0; y < tileSide; ++y, out += tileSide) {
    writeRow(here.found == Extent::none ? BitRow{} : (*here.foundBits)[y], halves[y], threeQuarters[y], out);
  }
  mask.collapseIfUniform(index);
}

void WandMatch::writeTo(Surface& mask, WandEdges edges) const {
  if (!fitInSize(colors_, mask)) return;
  kernels::forEachTile(mask, [&](int index) { writeTile(index, mask, edges); });
}

}  // namespace orvanel
