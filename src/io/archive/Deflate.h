// Raw deflate (RFC 1951) in independent chunks, so that all cores can work at one stream: chunks made by
// `deflateChunk` in any order, joined in order and closed with `deflateStreamEnd`, are one valid stream.
// Functions are thread-safe; an `InflateStream` belongs to one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "io/files/ByteBuffer.h"
#include "io/files/FileError.h"

struct inflate_state;

namespace orvanel {

/// Part of a deflate stream that refers to nothing outside itself and ends on a whole byte.
[[nodiscard]] ByteBuffer deflateChunk(std::span<const std::byte> raw);

/// What follows the last chunk: a final block without contents.
inline constexpr std::array<std::byte, 2> deflateStreamEnd{std::byte{3}, std::byte{0}};

/// Deflate can't make more than this many bytes of one.
inline constexpr std::uint64_t largestInflation = 1032;

/// CRC-32 as ZIP and PNG use it, continued from `seed`.
[[nodiscard]] std::uint32_t crc32(std::span<const std::byte> bytes, std::uint32_t seed = 0);
/// The CRC-32 of two runs of bytes from the CRC-32 of each.
[[nodiscard]] std::uint32_t joinCrc32(std::uint32_t first, std::uint32_t second, std::uint64_t secondSize);

/// Inflates a raw deflate stream piece by piece, whatever sizes the pieces have.
class InflateStream {
 public:
  /// Gives the next compressed bytes, which stay valid until the next call; none at the end.
  using Input = std::function<Described<std::span<const std::byte>>()>;

  explicit InflateStream(Input input);
  ~InflateStream();
  InflateStream(InflateStream&&) noexcept;
  InflateStream& operator=(InflateStream&&) noexcept;

  /// Fills `out` wholly. Damaged data and a stream that ends early are failures.
  [[nodiscard]] Described<void> read(std::span<std::byte> out);
  /// Whether the stream ends here, with nothing behind it. Nothing can be read after asking.
  [[nodiscard]] Described<bool> isAtEnd();

 private:
  Described<bool> step(std::span<std::byte> out, std::size_t& made);

  Input input_;
  std::unique_ptr<inflate_state> state_;
  bool inputEnded_ = false;
};

}  // namespace orvanel
