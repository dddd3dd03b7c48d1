#include "raster/kernels/SpanFlood.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "raster/HalfFloat.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

constexpr std::byte eligibleFlag{1};
constexpr std::uint64_t eightEligible = 0x0101010101010101ULL;
constexpr std::ptrdiff_t probed = 24;

std::uint64_t eightFrom(const std::byte* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, 8);
  return word;
}

/// The first place in [from, end) that isn't eligible, or `end`. Narrow runs are found by the plain probe.
const std::byte* endOfRun(const std::byte* from, const std::byte* end) {
  const std::byte* probeEnd = end - from > probed ? from + probed : end;
  while (from < probeEnd) {
    if (*from != eligibleFlag) return from;
    ++from;
  }
  while (end - from >= 8) {
    const std::uint64_t differing = eightFrom(from) ^ eightEligible;
    if (differing != 0) return from + std::countr_zero(differing) / 8;
    from += 8;
  }
  while (from < end && *from == eligibleFlag) ++from;
  return from;
}

/// The lowest place such that [place, from) is all eligible, not below `begin`.
const std::byte* startOfRun(const std::byte* from, const std::byte* begin) {
  const std::byte* probeEnd = from - begin > probed ? from - probed : begin;
  while (from > probeEnd) {
    if (from[-1] != eligibleFlag) return from;
    --from;
  }
  while (from - begin >= 8) {
    const std::uint64_t differing = eightFrom(from - 8) ^ eightEligible;
    if (differing != 0) return from - std::countl_zero(differing) / 8;
    from -= 8;
  }
  while (from > begin && from[-1] == eligibleFlag) --from;
  return from;
}

/// The first eligible place in [from, end), or `end`.
const std::byte* nextEligible(const std::byte* from, const std::byte* end) {
  const std::byte* probeEnd = end - from > probed ? from + probed : end;
  while (from < probeEnd) {
    if (*from == eligibleFlag) return from;
    ++from;
  }
  const void* found = std::memchr(from, static_cast<int>(eligibleFlag), static_cast<std::size_t>(end - from));
  return found != nullptr ? static_cast<const std::byte*>(found) : end;
}

/// A flooded run whose neighbouring row is still to be looked at.
struct PendingRow {
  int left;
  int right;  ///< one past the last
  int y;      ///< the row to look at
  int step;   ///< which way the flood came
};

}  // namespace

void floodFrom(std::span<std::byte> map, int width, int height, int seedX, int seedY) {
  std::vector<PendingRow> pending;
  const auto rowOf = [&](int y) {
    return map.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  };
  const auto floodRun = [&](std::byte* row, int from, int& left, int& right) {
    left = static_cast<int>(startOfRun(row + from, row) - row);
    right = static_cast<int>(endOfRun(row + from, row + width) - row);
    std::fill(row + left, row + right, floodedFlag);
  };
  rowOf(seedY)[seedX] = eligibleFlag;
  int left = 0;
  int right = 0;
  floodRun(rowOf(seedY), seedX, left, right);
  pending.push_back({left, right, seedY + 1, 1});
  pending.push_back({left, right, seedY - 1, -1});
  while (!pending.empty()) {
    const PendingRow work = pending.back();
    pending.pop_back();
    if (work.y < 0 || work.y >= height) continue;
    std::byte* row = rowOf(work.y);
    int x = work.left;
    while (true) {
      x = static_cast<int>(nextEligible(row + x, row + work.right) - row);
      if (x >= work.right) break;
      floodRun(row, x, left, right);
      pending.push_back({left, right, work.y + work.step, work.step});
      // Behind lies the run the flood came from; only what this run has beyond it can lead back.
      if (left < work.left) pending.push_back({left, work.left, work.y - work.step, -work.step});
      if (right > work.right) pending.push_back({work.right, right, work.y - work.step, -work.step});
      x = right;
      if (x >= work.right) break;
    }
  }
}

void writeFloodedMask(std::span<const std::byte> map, Surface& mask) {
  const auto width = static_cast<std::size_t>(mask.width());
  forEachTile(mask, [&](int index) {
    const PixelRect rect = mask.tileRect(index);
    const std::byte* first =
        map.data() + static_cast<std::size_t>(rect.y) * width + static_cast<std::size_t>(rect.x);
    const auto columns = static_cast<std::size_t>(rect.width);
    bool any = false;
    bool all = true;
    for (int y = 0; y < rect.height && !(any && !all); ++y) {
      const std::byte* row = first + static_cast<std::size_t>(y) * width;
      const auto flooded = static_cast<std::size_t>(std::count(row, row + columns, floodedFlag));
      any |= flooded != 0;
      all &= flooded == columns;
    }
    if (!any || all) return mask.setUniform(index, all ? halfOne : 0);
    auto* out = reinterpret_cast<std::uint16_t*>(mask.overwriteTile(index));
    std::fill_n(out, tilePixels, std::uint16_t{0});
    for (int y = 0; y < rect.height; ++y) {
      const std::byte* row = first + static_cast<std::size_t>(y) * width;
      for (std::size_t x = 0; x < columns; ++x) {
        out[static_cast<std::size_t>(y) * tileSide + x] = row[x] == floodedFlag ? halfOne : std::uint16_t{0};
      }
    }
  });
}

}  // namespace orvanel::kernels
