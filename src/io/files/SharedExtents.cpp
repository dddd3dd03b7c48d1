#include "io/files/SharedExtents.h"

#include <linux/fiemap.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

namespace orvanel {
namespace {

/// Whether the extent's address is that of its bytes, and of no others. Compressed extents all have the
/// address at which their block of data begins, wherever in it they stand; those that wait for their place,
/// or stand among the file's own records, have none; and what nobody shares isn't what was shared.
bool isCertain(const FileExtent& extent) {
  constexpr std::uint32_t harmless = FIEMAP_EXTENT_LAST | FIEMAP_EXTENT_MERGED | FIEMAP_EXTENT_SHARED;
  return (extent.flags & ~harmless) == 0 && (extent.flags & FIEMAP_EXTENT_SHARED) != 0;
}

/// The extents of a file that are certain; none if the map can't be had or contradicts itself.
std::vector<FileExtent> certainExtents(int file) {
  std::vector<FileExtent> certain;
  std::array<FileExtent, 512> some{};
  for (std::uint64_t end = 0;;) {
    const int count = FileOperations::current().mapExtents(file, end, some);
    if (count < 0) return {};
    for (const FileExtent& extent : std::span(some).first(static_cast<std::size_t>(count))) {
      if (extent.offset < end || extent.length == 0 || extent.length > UINT64_MAX - extent.offset) return {};
      end = extent.offset + extent.length;
      if (isCertain(extent)) certain.push_back(extent);
      if ((extent.flags & FIEMAP_EXTENT_LAST) != 0) return certain;
    }
    if (count == 0) return certain;
  }
}

/// Where a byte stands, and how many follow it there.
struct Place {
  std::uint64_t physical = 0;
  std::uint64_t length = 0;
};

std::optional<Place> placeOf(const std::vector<FileExtent>& extents, std::uint64_t offset) {
  const auto startsBehind = [](std::uint64_t value, const FileExtent& extent) {
    return value < extent.offset;
  };
  const auto behind = std::upper_bound(extents.begin(), extents.end(), offset, startsBehind);
  if (behind == extents.begin()) return std::nullopt;
  const FileExtent& extent = *std::prev(behind);
  const std::uint64_t within = offset - extent.offset;
  if (within >= extent.length) return std::nullopt;
  return Place{extent.physical + within, extent.length - within};
}

}  // namespace

SharedExtents::SharedExtents(Extents first, Extents second)
    : first_(std::move(first)), second_(std::move(second)) {}

SharedExtents SharedExtents::between(int first, int second) {
  return {certainExtents(first), certainExtents(second)};
}

bool SharedExtents::areSame(std::uint64_t firstOffset, std::uint64_t secondOffset,
                            std::uint64_t length) const {
  while (length > 0) {
    const auto one = placeOf(first_, firstOffset);
    const auto other = placeOf(second_, secondOffset);
    if (!one || !other || one->physical != other->physical) return false;
    const std::uint64_t count = std::min({one->length, other->length, length});
    firstOffset += count;
    secondOffset += count;
    length -= count;
  }
  return true;
}

}  // namespace orvanel
