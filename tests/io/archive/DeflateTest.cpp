#include "io/archive/Deflate.h"

#include <gtest/gtest.h>

#include "io/TestBytes.h"

namespace orvanel {
namespace {

using testing::Bytes;

Bytes joined(const std::vector<Bytes>& chunks) {
  Bytes stream;
  for (const Bytes& chunk : chunks) {
    const ByteBuffer deflated = deflateChunk(chunk);
    stream.insert(stream.end(), deflated.data(), deflated.data() + deflated.size());
  }
  stream.insert(stream.end(), deflateStreamEnd.begin(), deflateStreamEnd.end());
  return stream;
}

/// Delivers the stream in pieces of one size.
InflateStream inPieces(const Bytes& stream, std::size_t pieceSize) {
  return InflateStream([rest = std::span<const std::byte>(stream),
                        pieceSize]() mutable -> Described<std::span<const std::byte>> {
    const auto piece = rest.first(std::min(pieceSize, rest.size()));
    rest = rest.subspan(piece.size());
    return piece;
  });
}

TEST(Deflate, chunksFormOneStream) {
  const std::vector<Bytes> chunks{testing::halfNoise(100'000, 1), testing::noise(70'000, 2), Bytes(50'000),
                                  testing::bytesOf("a"), testing::halfNoise(33, 3)};
  Bytes whole;
  for (const Bytes& chunk : chunks) whole.insert(whole.end(), chunk.begin(), chunk.end());
  EXPECT_EQ(testing::inflateWithZlib(joined(chunks), whole.size()), whole);
}

TEST(Deflate, emptyChunkIsValid) {
  const Bytes text = testing::bytesOf("orchard");
  EXPECT_EQ(testing::inflateWithZlib(joined({{}, text, {}}), text.size()), text);
  EXPECT_EQ(testing::inflateWithZlib(joined({}), 0), Bytes());
}

TEST(Deflate, noiseGrowsByLessThanOnePerMille) {
  const Bytes bytes = testing::noise(1'000'000, 4);
  const ByteBuffer deflated = deflateChunk(bytes);
  EXPECT_LE(deflated.size(), bytes.size() + bytes.size() / 1000);
  EXPECT_EQ(testing::inflateWithZlib(joined({bytes}), bytes.size()), bytes);
}

TEST(Deflate, repetitionShrinks) {
  EXPECT_LT(deflateChunk(Bytes(1'000'000)).size(), 10'000U);
}

TEST(Deflate, paddedChunksHaveAMultipleOfTheSizeAndFormOneStream) {
  // Ends at every distance to the grid.
  Bytes whole;
  Bytes stream;
  for (unsigned seed = 0; seed < 300; ++seed) {
    const Bytes chunk = testing::noise(500 + seed, seed);
    const ByteBuffer deflated = deflateChunk(chunk, 64);
    EXPECT_EQ(deflated.size() % 64, 0U);
    whole.insert(whole.end(), chunk.begin(), chunk.end());
    stream.insert(stream.end(), deflated.data(), deflated.data() + deflated.size());
  }
  stream.insert(stream.end(), deflateStreamEnd.begin(), deflateStreamEnd.end());
  EXPECT_EQ(testing::inflateWithZlib(stream, whole.size()), whole);
  Bytes out(whole.size());
  InflateStream inflate = inPieces(stream, 1000);
  ASSERT_TRUE(inflate.read(out).has_value());
  EXPECT_EQ(out, whole);
  EXPECT_TRUE(inflate.isAtEnd().value());
}

TEST(InflateStream, knowsAPartFromAStreamThatEndsOrGoesOn) {
  const Bytes bytes = testing::halfNoise(20'000, 11);
  const ByteBuffer deflated = deflateChunk(bytes, 4096);
  Bytes stream(deflated.data(), deflated.data() + deflated.size());
  const auto isPartAtEnd = [&] {
    InflateStream inflate = inPieces(stream, 700);
    Bytes out(bytes.size());
    EXPECT_TRUE(inflate.read(out).has_value());
    return inflate.isPartAtEnd().value();
  };
  EXPECT_TRUE(isPartAtEnd());
  const Bytes part = stream;
  stream.insert(stream.end(), part.begin(), part.end());
  EXPECT_FALSE(isPartAtEnd());
  stream = part;
  stream.insert(stream.end(), deflateStreamEnd.begin(), deflateStreamEnd.end());
  EXPECT_FALSE(isPartAtEnd());
}

TEST(Crc32, agreesWithZlibAndCombines) {
  const Bytes bytes = testing::noise(100'003, 5);
  const auto* raw = reinterpret_cast<const Bytef*>(bytes.data());
  EXPECT_EQ(crc32(bytes), ::crc32(0, raw, static_cast<uInt>(bytes.size())));
  const std::span<const std::byte> all(bytes);
  for (const std::size_t cut : {std::size_t{0}, std::size_t{1}, std::size_t{77'777}, bytes.size()}) {
    const std::uint32_t first = crc32(all.first(cut));
    EXPECT_EQ(joinCrc32(first, crc32(all.subspan(cut)), bytes.size() - cut), crc32(all));
    EXPECT_EQ(crc32(all.subspan(cut), first), crc32(all));
  }
}

TEST(InflateStream, readsInPiecesOfAnySize) {
  const Bytes bytes = testing::halfNoise(300'000, 6);
  const Bytes stream = joined({bytes});
  for (const std::size_t inputPiece : {std::size_t{1}, std::size_t{1000}, stream.size()}) {
    for (const std::size_t outputPiece : {std::size_t{24}, std::size_t{65'536}, bytes.size()}) {
      InflateStream inflate = inPieces(stream, inputPiece);
      Bytes out(bytes.size());
      for (std::size_t at = 0; at < out.size(); at += outputPiece) {
        const std::size_t count = std::min(outputPiece, out.size() - at);
        ASSERT_TRUE(inflate.read(std::span(out).subspan(at, count)).has_value());
      }
      EXPECT_EQ(out, bytes);
      EXPECT_EQ(inflate.isAtEnd(), true);
    }
  }
}

TEST(InflateStream, distinguishesALongerStreamFromAFinishedOne) {
  const Bytes bytes = testing::halfNoise(10'000, 7);
  const Bytes stream = joined({bytes});
  InflateStream inflate = inPieces(stream, 4096);
  Bytes out(bytes.size() - 1);
  ASSERT_TRUE(inflate.read(out).has_value());
  EXPECT_EQ(inflate.isAtEnd(), false);
}

TEST(InflateStream, failsWhenTheStreamEndsTooEarly) {
  const Bytes bytes = testing::halfNoise(20'000, 8);
  const Bytes stream = joined({bytes});
  for (std::size_t length = 0; length < stream.size(); length += 97) {
    const Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
    InflateStream inflate = inPieces(cut, 512);
    Bytes out(bytes.size() + 1);
    EXPECT_FALSE(inflate.read(out).has_value()) << length;
  }
}

TEST(InflateStream, failsWhenAskedForMoreThanTheStreamHolds) {
  const Bytes bytes = testing::halfNoise(20'000, 9);
  const Bytes stream = joined({bytes});
  InflateStream inflate = inPieces(stream, 512);
  Bytes out(bytes.size() + 1);
  EXPECT_FALSE(inflate.read(out).has_value());
}

TEST(InflateStream, survivesNoise) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    const Bytes stream = testing::noise(2'000, seed);
    InflateStream inflate = inPieces(stream, 100);
    Bytes out(1'000'000);
    EXPECT_FALSE(inflate.read(out).has_value());
  }
}

}  // namespace
}  // namespace orvanel
