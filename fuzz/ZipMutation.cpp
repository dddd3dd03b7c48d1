#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "Mutations.h"

namespace orvanel::fuzz {
namespace {

constexpr std::uint32_t localSignature = 0x04034B50U;
constexpr std::uint32_t centralSignature = 0x02014B50U;
constexpr std::uint32_t endSignature = 0x06054B50U;
constexpr std::size_t localSize = 30;
constexpr std::size_t centralSize = 46;
constexpr std::size_t endSize = 22;
constexpr std::uint16_t deflated = 8;
constexpr std::uint16_t partsFieldID = 0x5650U;
constexpr std::size_t mostContent = std::size_t{1} << 20U;

/// Little-endian numbers at a place; 0 beyond the end.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t count) const {
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < count && at + i < bytes_.size(); ++i) {
      result |= std::uint32_t{bytes_[at + i]} << (8 * i);
    }
    return result;
  }
  [[nodiscard]] std::span<const std::uint8_t> part(std::size_t at, std::size_t count) const {
    const std::size_t start = std::min(at, bytes_.size());
    return bytes_.subspan(start, std::min(count, bytes_.size() - start));
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

void add(Bytes& out, std::uint64_t number, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) out.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

void add(Bytes& out, std::span<const std::uint8_t> bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

std::optional<Bytes> inflated(std::span<const std::uint8_t> stored, std::size_t size) {
  Bytes content(std::min(size, mostContent) + 1);
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) return std::nullopt;
  stream.next_in = const_cast<std::uint8_t*>(stored.data());
  stream.avail_in = static_cast<uInt>(stored.size());
  stream.next_out = content.data();
  stream.avail_out = static_cast<uInt>(content.size());
  const int result = inflate(&stream, Z_FINISH);
  content.resize(stream.total_out);
  inflateEnd(&stream);
  return result == Z_STREAM_END ? std::optional(content) : std::nullopt;
}

struct Packed {
  Bytes stored;
  /// For the archive's directory.
  Bytes extra;
};

Packed packed(const ZipEntry& entry) {
  if (entry.parts == 0) return {entry.content, {}};
  constexpr std::array<std::uint8_t, 2> streamEnd{0x03, 0x00};
  Packed result;
  Bytes sizes;
  const std::size_t step = entry.content.size() / entry.parts + 1;
  for (std::size_t start = 0; start < entry.content.size(); start += step) {
    const std::size_t count = std::min(step, entry.content.size() - start);
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    Bytes part(count * 2 + 64);
    stream.next_in = const_cast<std::uint8_t*>(entry.content.data() + start);
    stream.avail_in = static_cast<uInt>(count);
    stream.next_out = part.data();
    stream.avail_out = static_cast<uInt>(part.size());
    deflate(&stream, Z_FULL_FLUSH);
    part.resize(stream.total_out);
    deflateEnd(&stream);
    add(sizes, part.size(), 4);
    add(sizes, count, 4);
    add(result.stored, part);
  }
  add(result.stored, streamEnd);
  if (entry.parts > 1 && sizes.size() < 60000) {
    add(result.extra, partsFieldID, 2);
    add(result.extra, sizes.size(), 2);
    add(result.extra, sizes);
  }
  return result;
}

}  // namespace

std::optional<std::vector<ZipEntry>> unpackedZip(std::span<const std::uint8_t> archive) {
  if (archive.size() < endSize) return std::nullopt;
  const Reader reader(archive);
  const std::size_t end = archive.size() - endSize;
  if (reader.number(end, 4) != endSignature) return std::nullopt;
  std::vector<ZipEntry> entries;
  std::size_t total = 0;
  std::size_t at = reader.number(end + 16, 4);
  for (std::uint32_t left = reader.number(end + 10, 2); left > 0; --left) {
    if (reader.number(at, 4) != centralSignature) return std::nullopt;
    const std::size_t nameSize = reader.number(at + 28, 2);
    const std::size_t local = reader.number(at + 42, 4);
    const std::size_t start = local + localSize + reader.number(local + 26, 2) + reader.number(local + 28, 2);
    const auto name = reader.part(at + centralSize, nameSize);
    const auto stored = reader.part(start, reader.number(at + 20, 4));
    ZipEntry entry{.name = std::string(name.begin(), name.end())};
    if (reader.number(at + 10, 2) == deflated) {
      const auto content = inflated(stored, reader.number(at + 24, 4));
      if (!content) return std::nullopt;
      entry.content = *content;
      entry.parts = 1;
    } else {
      entry.content.assign(stored.begin(), stored.end());
    }
    total += entry.content.size();
    if (total > mostContent) return std::nullopt;
    entries.push_back(std::move(entry));
    at += centralSize + nameSize + reader.number(at + 30, 2) + reader.number(at + 32, 2);
  }
  return entries;
}

Bytes packedZip(const std::vector<ZipEntry>& entries) {
  Bytes archive;
  Bytes directory;
  for (const ZipEntry& entry : entries) {
    const Packed body = packed(entry);
    const std::size_t place = archive.size();
    Bytes common;
    add(common, 20, 2);
    add(common, 0, 2);
    add(common, entry.parts > 0 ? deflated : 0, 2);
    add(common, 0x00215C21U, 4);
    add(common, crc32(0, entry.content.data(), static_cast<uInt>(entry.content.size())) + entry.lie / 7, 4);
    add(common, body.stored.size(), 4);
    add(common, entry.content.size() + entry.lie, 4);
    add(common, entry.name.size(), 2);
    const auto* name = reinterpret_cast<const std::uint8_t*>(entry.name.data());
    add(archive, localSignature, 4);
    add(archive, common);
    add(archive, 0, 2);
    add(archive, {name, entry.name.size()});
    add(archive, body.stored);
    add(directory, centralSignature, 4);
    add(directory, 20, 2);
    add(directory, common);
    add(directory, body.extra.size(), 2);
    add(directory, 0, 6);
    add(directory, 0, 4);
    add(directory, place, 4);
    add(directory, {name, entry.name.size()});
    add(directory, body.extra);
  }
  const std::size_t start = archive.size();
  add(archive, directory);
  add(archive, endSignature, 4);
  add(archive, 0, 4);
  add(archive, entries.size(), 2);
  add(archive, entries.size(), 2);
  add(archive, directory.size(), 4);
  add(archive, start, 4);
  add(archive, 0, 2);
  return archive;
}

void mendPng(std::span<std::uint8_t> file) {
  constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (file.size() < signature.size() || !std::equal(signature.begin(), signature.end(), file.begin())) return;
  std::size_t at = signature.size();
  // Length, kind, content, sum; numbers are big-endian.
  while (at + 12 <= file.size()) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i) length = length << 8U | file[at + i];
    if (length > file.size() - at - 12) return;
    const auto sum = crc32(0, file.data() + at + 4, static_cast<uInt>(length) + 4);
    for (std::size_t i = 0; i < 4; ++i) {
      file[at + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    }
    at += length + 12;
  }
}

}  // namespace orvanel::fuzz
