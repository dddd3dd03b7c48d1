#include "model/DisplayColor.h"

#include <gtest/gtest.h>

#include "model/ModelSupport.h"

namespace orvanel {
namespace {

TEST(DisplayColorTest, WritesSixUpperCaseDigits) {
  EXPECT_EQ(DisplayColor::black().hexText(), "000000");
  EXPECT_EQ(DisplayColor::white().hexText(), "FFFFFF");
  EXPECT_EQ((DisplayColor{1.0F, 0.5F, 171.0F / 255.0F, 0.25F}.hexText()), "FF80AB");
  EXPECT_EQ((DisplayColor{1.5F, -1.0F, 0.0F, 1.0F}.hexText()), "FF0000");
}

TEST(DisplayColorTest, ReadsEitherCaseAsAnOpaqueColour) {
  EXPECT_EQ(DisplayColor::fromHexText("ff00AB"), (DisplayColor{1.0F, 0.0F, 171.0F / 255.0F, 1.0F}));
}

TEST(DisplayColorTest, EveryByteValueSurvivesARoundTrip) {
  for (int value = 0; value < 256; ++value) {
    const auto component = static_cast<float>(value) / 255.0F;
    const DisplayColor color{component, 0.0F, 1.0F, 1.0F};
    EXPECT_EQ(DisplayColor::fromHexText(color.hexText()), color);
  }
}

TEST(DisplayColorTest, ALeadingSignIsAcceptedBeforeFiveDigits) {
  EXPECT_EQ(DisplayColor::fromHexText("+12345"), DisplayColor::fromHexText("012345"));
  EXPECT_EQ(DisplayColor::fromHexText("-00001"), DisplayColor::fromHexText("FFFFFF"));
}

TEST(DisplayColorTest, RejectsAllOtherTexts) {
  for (const char* text :
       {"", "12345", "1234567", "#12345", "12345g", " 12345", "++1234", "0x1234", "+-1234"}) {
    EXPECT_EQ(DisplayColor::fromHexText(text), std::nullopt) << text;
  }
}

TEST(DisplayColorTest, GreyModesWeighTheComponents) {
  const DisplayColor color{1.0F, 0.5F, 0.25F, 0.75F};
  EXPECT_EQ(channelValues(color, ColorMode::rgb16), (Color4{1.0F, 0.5F, 0.25F, 0.75F}));
  const Color4 grey = channelValues(color, ColorMode::grayscale8);
  EXPECT_FLOAT_EQ(grey[0], 0.299F + 0.587F * 0.5F + 0.114F * 0.25F);
  EXPECT_EQ(grey[3], 0.75F);
}

TEST(DisplayColorTest, WhiteStaysWhiteInGrey) {
  EXPECT_EQ(channelValues(DisplayColor::white(), ColorMode::grayscale16)[0], 1.0F);
  EXPECT_EQ(channelValues(DisplayColor::black(), ColorMode::grayscale16)[0], 0.0F);
}

}  // namespace
}  // namespace orvanel
