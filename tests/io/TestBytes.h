// Test data for files: noise, repetition, and inflation by zlib as an independent reference.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <optional>
#include <random>
#include <span>
#include <string_view>
#include <vector>

namespace orvanel::testing {

using Bytes = std::vector<std::byte>;

inline Bytes noise(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (std::byte& byte : bytes) byte = static_cast<std::byte>(random() & 0xFFU);
  return bytes;
}

/// Bytes that compress to about half their size.
inline Bytes halfNoise(std::size_t size, unsigned seed) {
  Bytes bytes = noise(size, seed);
  for (std::size_t i = 1; i < size; i += 2) bytes[i] = static_cast<std::byte>(i / 4096);
  return bytes;
}

inline Bytes bytesOf(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

/// Inflates a raw deflate stream to exactly `size` bytes, with nothing after it.
inline std::optional<Bytes> inflateWithZlib(std::span<const std::byte> deflated, std::size_t size) {
  z_stream stream{};
  if (inflateInit2(&stream, -15) != Z_OK) return std::nullopt;
  Bytes out(size + 1);
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(deflated.data()));
  stream.avail_in = static_cast<uInt>(deflated.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const int status = inflate(&stream, Z_FINISH);
  const bool isWhole = status == Z_STREAM_END && stream.avail_in == 0 && stream.total_out == size;
  inflateEnd(&stream);
  if (!isWhole) return std::nullopt;
  out.resize(size);
  return out;
}

}  // namespace orvanel::testing
