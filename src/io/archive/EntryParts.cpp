#include "io/archive/EntryParts.h"

#include <cstring>

#include "io/archive/Deflate.h"

namespace orvanel {
namespace {

constexpr std::size_t partBytes = 8;
/// An extra field's length has 16 bits, and other fields want room beside it.
constexpr std::size_t mostFieldBytes = 65000;

}  // namespace

std::vector<std::byte> encodedParts(const std::vector<EntryPart>& parts) {
  static_assert(sizeof(EntryPart) == partBytes);
  if (parts.size() * partBytes > mostFieldBytes) return {};
  const std::span<const std::byte> bytes = std::as_bytes(std::span(parts));
  return {bytes.begin(), bytes.end()};
}

std::vector<EntryPart> decodedParts(std::span<const std::byte> field, std::uint64_t size,
                                    std::uint64_t storedSize) {
  if (field.empty() || field.size() % partBytes != 0) return {};
  std::vector<EntryPart> parts(field.size() / partBytes);
  std::memcpy(parts.data(), field.data(), field.size());
  std::uint64_t sum = 0;
  std::uint64_t storedSum = deflateStreamEnd.size();
  for (const EntryPart& part : parts) {
    if (part.size == 0 || part.storedSize == 0) return {};
    sum += part.size;
    storedSum += part.storedSize;
  }
  if (sum != size || storedSum != storedSize) return {};
  return parts;
}

}  // namespace orvanel
