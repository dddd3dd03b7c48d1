#include "io/archive/Deflate.h"

#include <isa-l.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace orvanel {
namespace {

constexpr std::size_t largestStoredBlock = 65535;
constexpr std::size_t storedHeaderBytes = 5;

/// Working memory of the compressor, one for each thread that compresses.
struct Workspace {
  isal_zstream stream{};
  std::array<std::uint8_t, ISAL_DEF_LVL3_DEFAULT> levels{};
};

void appendStoredBlock(std::byte*& out, std::span<const std::byte> raw) {
  const auto length = static_cast<std::uint16_t>(raw.size());
  const auto inverse = static_cast<std::uint16_t>(~length);
  *out++ = std::byte{0};
  *out++ = static_cast<std::byte>(length & 0xFFU);
  *out++ = static_cast<std::byte>(length >> 8U);
  *out++ = static_cast<std::byte>(inverse & 0xFFU);
  *out++ = static_cast<std::byte>(inverse >> 8U);
  std::memcpy(out, raw.data(), raw.size());
  out += raw.size();
}

std::size_t storedSize(std::size_t rawSize) {
  const std::size_t blocks = (rawSize + largestStoredBlock - 1) / largestStoredBlock;
  return rawSize + blocks * storedHeaderBytes;
}

constexpr std::array emptyStoredBlock{std::byte{0}, std::byte{0}, std::byte{0}, std::byte{0xFF},
                                      std::byte{0xFF}};
/// An empty block with the fixed code before the stored one: the same in six bytes.
constexpr std::array longEmptyBlock{std::byte{2}, std::byte{0},    std::byte{0},
                                    std::byte{0}, std::byte{0xFF}, std::byte{0xFF}};

/// How many bytes of empty blocks make `size` a multiple. Fives and sixes add up to any number from 20 on.
std::size_t paddingFor(std::size_t size, std::size_t multiple) {
  constexpr std::size_t leastPadding = 24;
  std::size_t padding = (multiple - size % multiple) % multiple;
  while (padding != 0 && padding < leastPadding) padding += multiple;
  return padding;
}

/// The most that `paddingFor` gives.
std::size_t mostPadding(std::size_t multiple) {
  return multiple == 1 ? 0 : multiple + 24;
}

void appendPadding(std::byte* out, std::size_t padding) {
  for (std::size_t sixes = padding % emptyStoredBlock.size(); padding > 0;) {
    const std::span<const std::byte> block =
        sixes > 0 ? std::span<const std::byte>(longEmptyBlock) : std::span<const std::byte>(emptyStoredBlock);
    std::memcpy(out, block.data(), block.size());
    out += block.size();
    padding -= block.size();
    sixes -= sixes > 0 ? 1 : 0;
  }
}

/// Stores the bytes as they are; the buffer has room for them.
std::size_t storeChunk(std::span<const std::byte> raw, ByteBuffer& chunk) {
  std::byte* out = chunk.data();
  while (!raw.empty()) {
    const std::size_t length = std::min(raw.size(), largestStoredBlock);
    appendStoredBlock(out, raw.first(length));
    raw = raw.subspan(length);
  }
  return static_cast<std::size_t>(out - chunk.data());
}

}  // namespace

ByteBuffer deflateChunk(std::span<const std::byte> raw, std::size_t multiple) {
  thread_local const auto workspace = std::make_unique<Workspace>();
  const std::size_t room = storedSize(raw.size());
  ByteBuffer chunk(room + mostPadding(multiple));
  isal_zstream& stream = workspace->stream;
  isal_deflate_init(&stream);
  // The highest level is the one written in vectors: on photographs it is faster than the levels below it,
  // smaller, and its streams inflate up to a third faster.
  stream.level = 3;
  stream.level_buf = workspace->levels.data();
  stream.level_buf_size = ISAL_DEF_LVL3_DEFAULT;
  stream.gzip_flag = IGZIP_DEFLATE;
  stream.flush = FULL_FLUSH;
  stream.end_of_stream = 0;
  // The library takes its input as writable, but only reads it.
  stream.next_in = const_cast<std::uint8_t*>(reinterpret_cast<const std::uint8_t*>(raw.data()));
  stream.avail_in = static_cast<std::uint32_t>(raw.size());
  stream.next_out = reinterpret_cast<std::uint8_t*>(chunk.data());
  stream.avail_out = static_cast<std::uint32_t>(room);
  const int status = isal_deflate(&stream);
  std::size_t size = 0;
  // With no room left there may be more to come: what doesn't get smaller is stored.
  if (status != COMP_OK || stream.avail_in != 0 || stream.avail_out == 0) {
    size = storeChunk(raw, chunk);
  } else {
    size = room - stream.avail_out;
  }
  const std::size_t padding = paddingFor(size, multiple);
  appendPadding(chunk.data() + size, padding);
  chunk.truncate(size + padding);
  return chunk;
}

std::uint32_t crc32(std::span<const std::byte> bytes, std::uint32_t seed) {
  return crc32_gzip_refl(seed, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

std::uint32_t joinCrc32(std::uint32_t first, std::uint32_t second, std::uint64_t secondSize) {
  return static_cast<std::uint32_t>(crc32_combine64(first, second, static_cast<z_off64_t>(secondSize)));
}

InflateStream::InflateStream(Input input)
    : input_(std::move(input)), state_(std::make_unique_for_overwrite<inflate_state>()) {
  isal_inflate_init(state_.get());
}

InflateStream::~InflateStream() = default;
InflateStream::InflateStream(InflateStream&&) noexcept = default;
InflateStream& InflateStream::operator=(InflateStream&&) noexcept = default;

/// One call of the library; false when the input has ended before the stream did.
Described<bool> InflateStream::step(std::span<std::byte> out, std::size_t& made) {
  if (state_->avail_in == 0 && !inputEnded_) {
    const auto next = input_();
    if (!next) return because(next.error());
    inputEnded_ = next->empty();
    state_->next_in = const_cast<std::uint8_t*>(reinterpret_cast<const std::uint8_t*>(next->data()));
    state_->avail_in = static_cast<std::uint32_t>(next->size());
  }
  constexpr std::size_t mostAtOnce = std::size_t{1} << 30U;
  const std::size_t room = std::min(out.size(), mostAtOnce);
  const std::uint32_t inputBefore = state_->avail_in;
  state_->next_out = reinterpret_cast<std::uint8_t*>(out.data());
  state_->avail_out = static_cast<std::uint32_t>(room);
  if (isal_inflate(state_.get()) != ISAL_DECOMP_OK) {
    return because(QStringLiteral("The compressed data is damaged."));
  }
  made = room - state_->avail_out;
  return made != 0 || inputBefore != state_->avail_in || !inputEnded_;
}

Described<void> InflateStream::read(std::span<std::byte> out) {
  while (!out.empty()) {
    std::size_t made = 0;
    const auto moved = step(out, made);
    if (!moved) return because(moved.error());
    out = out.subspan(made);
    if (made == 0 && (!*moved || state_->block_state == ISAL_BLOCK_FINISH)) {
      return because(QStringLiteral("The compressed data ends too early."));
    }
  }
  return {};
}

Described<bool> InflateStream::isPartAtEnd() {
  std::byte beyond{};
  while (state_->block_state != ISAL_BLOCK_FINISH) {
    std::size_t made = 0;
    const auto moved = step({&beyond, 1}, made);
    if (!moved) return because(moved.error());
    if (made != 0) return false;
    if (!*moved) return true;
  }
  return false;
}

Described<bool> InflateStream::isAtEnd() {
  std::byte beyond{};
  while (state_->block_state != ISAL_BLOCK_FINISH) {
    std::size_t made = 0;
    const auto moved = step({&beyond, 1}, made);
    if (!moved) return because(moved.error());
    if (made != 0 || !*moved) return false;
  }
  if (state_->avail_in != 0 || state_->read_in_length >= 8) return false;
  if (inputEnded_) return true;
  const auto next = input_();
  if (!next) return because(next.error());
  return next->empty();
}

}  // namespace orvanel
