// Raw deflate (RFC 1951) in independent chunks, so that all cores can work on one stream: chunks from
// `deflateChunk`, concatenated in order and followed by `deflateStreamEnd`, form one valid stream.
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

/// Compresses to a part of a deflate stream that is self-contained and ends on a byte boundary. Empty blocks
/// make its size a multiple of `multiple` bytes, so that file systems can share it.
[[nodiscard]] ByteBuffer deflateChunk(std::span<const std::byte> raw, std::size_t multiple = 1);

/// Follows the last chunk: an empty final block.
inline constexpr std::array<std::byte, 2> deflateStreamEnd{std::byte{3}, std::byte{0}};

/// The highest compression ratio that deflate can reach.
inline constexpr std::uint64_t largestInflation = 1032;

/// CRC-32 as ZIP and PNG use it, continued from `seed`.
[[nodiscard]] std::uint32_t crc32(std::span<const std::byte> bytes, std::uint32_t seed = 0);
/// Combines the CRC-32 of two consecutive runs of bytes.
[[nodiscard]] std::uint32_t joinCrc32(std::uint32_t first, std::uint32_t second, std::uint64_t secondSize);

/// Inflates a raw deflate stream incrementally.
class InflateStream {
 public:
  /// Returns the next compressed bytes, valid until the next call; empty at the end.
  using Input = std::function<Described<std::span<const std::byte>>()>;

  explicit InflateStream(Input input);
  ~InflateStream();
  InflateStream(InflateStream&&) noexcept;
  InflateStream& operator=(InflateStream&&) noexcept;

  /// Fills `out` completely. Fails if the data is damaged or the stream ends early.
  [[nodiscard]] Described<void> read(std::span<std::byte> out);
  /// Whether the rest of the input makes no more bytes and leaves the stream open, so that another part of it
  /// can follow. Nothing can be read after this call.
  [[nodiscard]] Described<bool> isPartAtEnd();
  /// Whether the stream ends here and no input follows. Nothing can be read after this call.
  [[nodiscard]] Described<bool> isAtEnd();

 private:
  Described<bool> step(std::span<std::byte> out, std::size_t& made);

  Input input_;
  std::unique_ptr<inflate_state> state_;
  bool inputEnded_ = false;
};

}  // namespace orvanel
