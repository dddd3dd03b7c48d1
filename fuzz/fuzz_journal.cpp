// Arbitrary bytes as a journal, restored as the program does; sums are mended first, so that mutations reach
// what is behind them. The file that a journal leaves tiles to is the input itself: a document may stand
// behind the records. Memory and canvas size are limited to keep the fuzzer fast.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "io/archive/Deflate.h"
#include "raster/MemoryBudget.h"
#include "recovery/JournalReader.h"

namespace {

using orvanel::journal::RecordHeader;

// Places of the fields within a header.
constexpr std::size_t tileBytesAt = 32;
constexpr std::size_t contentBytesAt = 40;
constexpr std::size_t tilesCrcAt = 44;
constexpr std::size_t contentsCrcAt = 48;
constexpr std::size_t headerCrcAt = 60;
/// What every record begins with.
constexpr std::uint64_t magic = 0x524A524F;

/// Under which the input can be opened; the seeds name it.
constexpr int ownDescriptor = 99;
constexpr const char* ownPath = "/proc/self/fd/99";

std::uint64_t numberAt(std::span<const std::byte> bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) number |= std::to_integer<std::uint64_t>(bytes[at + i]) << (8 * i);
  return number;
}

void put(std::span<std::byte> bytes, std::size_t at, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::byte>(number >> (8 * i));
}

/// Gives each record the sums that its bytes have, as far as its sizes fit.
void mend(std::span<std::byte> journal) {
  while (journal.size() >= RecordHeader::byteSize && numberAt(journal, 0, 4) == magic) {
    const std::span<std::byte> header = journal.first(RecordHeader::byteSize);
    const std::span<std::byte> body = journal.subspan(RecordHeader::byteSize);
    const std::uint64_t tiles = std::min<std::uint64_t>(numberAt(header, tileBytesAt, 8), body.size());
    const std::uint64_t contents =
        std::min<std::uint64_t>(numberAt(header, contentBytesAt, 4), body.size() - tiles);
    put(header, tilesCrcAt, orvanel::crc32(body.first(tiles)));
    put(header, contentsCrcAt, orvanel::crc32(body.subspan(tiles, contents)));
    put(header, headerCrcAt, orvanel::crc32(header.first(headerCrcAt)));
    journal = body.subspan(tiles + contents);
  }
}

void makeFile(std::span<const std::byte> bytes) {
  static const bool isMade = [] {
    const int file = ::memfd_create("journal", 0);
    return file >= 0 && ::dup2(file, ownDescriptor) == ownDescriptor && ::close(file) == 0;
  }();
  const auto size = static_cast<ssize_t>(bytes.size());
  if (!isMade || ::ftruncate(ownDescriptor, size) != 0 ||
      ::pwrite(ownDescriptor, bytes.data(), bytes.size(), 0) != size) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const orvanel::ScopedMemoryLimit limit(std::uint64_t{64} << 20U);
  std::vector<std::byte> journal(size);
  std::ranges::copy(std::as_bytes(std::span(data, size)), journal.begin());
  mend(journal);
  const auto input = orvanel::JournalInput::ofBytes(journal);
  const auto state = orvanel::readJournalState(input, orvanel::TileCheck::all);
  if (!state) return 0;
  static_cast<void>(orvanel::thumbnailOf(*state));
  // Other files that a journal names are none of a fuzzer's business.
  if (state->base && state->base->path != ownPath) return 0;
  if (state->document.imageFormat && state->document.path != ownPath) return 0;
  makeFile(journal);
  constexpr std::uint64_t largestArea = 1 << 16;
  if (std::uint64_t{state->document.canvasWidth} * state->document.canvasHeight > largestArea) return 0;
  orvanel::MetalContext& context = orvanel::MetalContext::shared();
  const auto contents =
      orvanel::restoreContents(input, context, [](std::uint32_t) { return std::string(ownPath); }, {});
  if (!contents) {
    if (contents.error().isEmpty()) std::abort();
    return 0;
  }
  if (contents->plan.manifest.document.canvasWidth * contents->plan.manifest.document.canvasHeight >
      static_cast<std::int64_t>(largestArea))
    return 0;
  static_cast<void>(orvanel::buildRestored(*contents, context));
  return 0;
}
