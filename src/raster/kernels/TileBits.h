// A bit for each pixel of a tile, and what a flood does with them a row at a time. Plain values; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "raster/Tile.h"

namespace orvanel::kernels {

/// 128 bits, the leftmost pixel in the lowest one.
struct BitRow {
  std::uint64_t low = 0;
  std::uint64_t high = 0;

  /// The lowest `count` bits, 0 to 128.
  [[nodiscard]] static constexpr BitRow first(int count) {
    const auto ones = [](int bits) { return bits >= 64 ? ~0ULL : (1ULL << static_cast<unsigned>(bits)) - 1; };
    return {ones(count), count > 64 ? ones(count - 64) : 0};
  }
  [[nodiscard]] constexpr bool any() const { return (low | high) != 0; }
  [[nodiscard]] constexpr bool at(int bit) const {
    return (((bit < 64 ? low : high) >> (static_cast<unsigned>(bit) % 64)) & 1U) != 0;
  }
  constexpr void set(int bit) { (bit < 64 ? low : high) |= 1ULL << (static_cast<unsigned>(bit) % 64); }
  /// Every bit moved to the next higher one; `lowest` moves in.
  [[nodiscard]] constexpr BitRow movedUp(bool lowest) const {
    return {low << 1U | std::uint64_t{lowest}, high << 1U | low >> 63U};
  }
  /// Every bit moved to the next lower one; `highest` moves in.
  [[nodiscard]] constexpr BitRow movedDown(bool highest) const {
    return {low >> 1U | high << 63U, high >> 1U | std::uint64_t{highest} << 63U};
  }

  friend constexpr BitRow operator&(const BitRow& a, const BitRow& b) {
    return {a.low & b.low, a.high & b.high};
  }
  friend constexpr BitRow operator|(const BitRow& a, const BitRow& b) {
    return {a.low | b.low, a.high | b.high};
  }
  friend constexpr BitRow operator^(const BitRow& a, const BitRow& b) {
    return {a.low ^ b.low, a.high ^ b.high};
  }
  friend constexpr BitRow operator~(const BitRow& a) { return {~a.low, ~a.high}; }
  friend constexpr bool operator==(const BitRow&, const BitRow&) = default;
};

using TileBits = std::array<BitRow, tileSide>;

/// The seeds, and every bit of `open` below that a run of ones joins to one of them.
[[nodiscard]] constexpr std::uint64_t filledDown(std::uint64_t seeds, std::uint64_t open) {
  for (unsigned step = 1; step < 64; step *= 2) {
    seeds |= open & (seeds >> step);
    open &= open >> step;
  }
  return seeds;
}

/// The runs of ones in `open` that hold a seed; every seed is one of `open`'s ones.
[[nodiscard]] constexpr BitRow runsThrough(const BitRow& seeds, const BitRow& open) {
  // Upwards, the carry of an addition runs from each seed to the end of its run.
  const std::uint64_t lowSum = open.low + seeds.low;
  const std::uint64_t highSum = open.high + seeds.high + (lowSum < open.low ? 1 : 0);
  BitRow runs{((lowSum ^ open.low) & open.low) | seeds.low, ((highSum ^ open.high) & open.high) | seeds.high};
  runs.high = filledDown(runs.high, open.high);
  runs.low = filledDown(runs.low | (((runs.high << 63U) & open.low)), open.low);
  return runs;
}

/// Spreads the bits of `reached` over all that are connected with them through `open`, by four neighbours.
/// Every row of `reached` holds whole runs.
inline void floodRows(TileBits& reached, const TileBits& open) {
  const auto spread = [&](std::size_t from, std::size_t to) {
    const BitRow entered = reached[from] & open[to] & ~reached[to];
    if (!entered.any()) return false;
    reached[to] = runsThrough(reached[to] | entered, open[to]);
    return true;
  };
  const auto sweepDown = [&] {
    bool changed = false;
    for (std::size_t y = 1; y < tileSide; ++y) changed |= spread(y - 1, y);
    return changed;
  };
  const auto sweepUp = [&] {
    bool changed = false;
    for (std::size_t y = tileSide - 1; y > 0; --y) changed |= spread(y, y - 1);
    return changed;
  };
  sweepDown();
  while (sweepUp() && sweepDown()) {
  }
}

}  // namespace orvanel::kernels
