#include "io/archive/EntryParts.h"

#include <gtest/gtest.h>

#include "io/archive/Deflate.h"

namespace orvanel {
namespace {

const std::vector<EntryPart> threeParts{{100, 1000}, {90, 1000}, {50, 400}};
constexpr std::uint64_t size = 2400;
constexpr std::uint64_t storedSize = 240 + deflateStreamEnd.size();

TEST(EntryParts, roundTrip) {
  EXPECT_EQ(decodedParts(encodedParts(threeParts), size, storedSize), threeParts);
}

TEST(EntryParts, areEncodedOnlyIfThereAreSeveral) {
  EXPECT_TRUE(encodedParts({}).empty());
  EXPECT_FALSE(encodedParts({{100, 1000}}).empty());
  EXPECT_FALSE(encodedParts(std::vector<EntryPart>(8000, {1, 1})).empty());
  EXPECT_TRUE(encodedParts(std::vector<EntryPart>(9000, {1, 1})).empty());
}

TEST(EntryParts, aContradictoryFieldIsIgnored) {
  const auto field = encodedParts(threeParts);
  EXPECT_TRUE(decodedParts(field, size + 1, storedSize).empty());
  EXPECT_TRUE(decodedParts(field, size, storedSize - 1).empty());
  EXPECT_TRUE(decodedParts(std::span(field).first(field.size() - 1), size, storedSize).empty());
  EXPECT_TRUE(decodedParts({}, size, storedSize).empty());
  EXPECT_TRUE(decodedParts(encodedParts({{240, 2400}, {0, 0}}), size, storedSize).empty());
  // Sums that overflow.
  EXPECT_TRUE(
      decodedParts(encodedParts(std::vector<EntryPart>(3, {0xFFFFFFFFU, 0xFFFFFFFFU})), size, storedSize)
          .empty());
}

}  // namespace
}  // namespace orvanel
