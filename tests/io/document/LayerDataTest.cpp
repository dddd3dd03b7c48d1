#include "io/document/LayerData.h"

#include <gtest/gtest.h>

namespace orvanel {
namespace {

std::vector<int> valuesOf(std::span<const std::byte> bytes) {
  std::vector<int> values;
  for (const std::byte byte : bytes) values.push_back(std::to_integer<int>(byte));
  return values;
}

TEST(LayerdataHeader, matchesTheFormatByteForByte) {
  const LayerdataHeader header = LayerdataHeader::of(PixelFormat::rg8Unorm, 3, 2);
  EXPECT_EQ(valuesOf(header.encoded()), (std::vector<int>{'V', 'K', 'R', 'M', 1, 0, 0, 0, 3, 0, 0, 0,
                                                          2,   0,   0,   0,   6, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(header.payloadSize(), 12U);
}

TEST(LayerdataHeader, readsWhatItWrote) {
  for (const PixelFormat format : {PixelFormat::rg8Unorm, PixelFormat::rg16Unorm, PixelFormat::rgba8Unorm,
                                   PixelFormat::rgba16Float, PixelFormat::r16Float}) {
    const LayerdataHeader header = LayerdataHeader::of(format, 16384, 16383);
    const auto decoded = LayerdataHeader::decode(header.encoded());
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, header);
    EXPECT_EQ(decoded->surfaceFormat(), format);
    EXPECT_EQ(decoded->payloadSize(), 16384ULL * 16383ULL * static_cast<unsigned>(bytesPerPixel(format)));
  }
}

TEST(LayerdataHeader, codesAreFixed) {
  EXPECT_EQ(layerdataCode(PixelFormat::rg8Unorm), 0);
  EXPECT_EQ(layerdataCode(PixelFormat::rg16Unorm), 1);
  EXPECT_EQ(layerdataCode(PixelFormat::rgba8Unorm), 2);
  EXPECT_EQ(layerdataCode(PixelFormat::rgba16Float), 3);
  EXPECT_EQ(layerdataCode(PixelFormat::r16Float), 4);
}

TEST(LayerdataHeader, unknownFormatsAndCodesFallBackToHalfFloats) {
  EXPECT_EQ(layerdataCode(PixelFormat::bgra8Unorm), 3);
  EXPECT_EQ(layerdataFormat(5), PixelFormat::rgba16Float);
  EXPECT_EQ(layerdataFormat(65535), PixelFormat::rgba16Float);
  EXPECT_EQ(LayerdataHeader::of(PixelFormat::bgra8Unorm, 10, 1).bytesPerRow, 80U);
}

TEST(LayerdataHeader, requiresAWholeHeaderAndItsMagic) {
  const auto bytes = LayerdataHeader::of(PixelFormat::rgba8Unorm, 5, 5).encoded();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_FALSE(LayerdataHeader::decode(std::span(bytes).first(length)).has_value());
  }
  for (std::size_t place = 0; place < 4; ++place) {
    auto wrong = bytes;
    wrong[place] ^= std::byte{1};
    EXPECT_FALSE(LayerdataHeader::decode(wrong).has_value());
  }
}

TEST(LayerdataHeader, versionRowBytesAndFlagsAreIgnored) {
  LayerdataHeader header = LayerdataHeader::of(PixelFormat::rgba8Unorm, 5, 5);
  header.headerVersion = 77;
  header.bytesPerRow = 1;
  header.flags = 0xFFFFFFFF;
  const auto decoded = LayerdataHeader::decode(header.encoded());
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(decoded->payloadSize(), 100U);
}

TEST(LayerdataHeader, absurdSizesDoNotOverflow) {
  LayerdataHeader header = LayerdataHeader::of(PixelFormat::rgba16Float, 1, 1);
  header.width = 0xFFFFFFFF;
  header.height = 0xFFFFFFFF;
  EXPECT_EQ(header.payloadSize(), std::numeric_limits<std::uint64_t>::max());
}

}  // namespace
}  // namespace orvanel
