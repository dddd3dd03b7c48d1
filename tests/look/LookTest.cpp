#include "look/Look.h"

#include <gtest/gtest.h>

namespace orvanel::look {
namespace {

// Text on a surface needs 4.5 to 1, symbols 3 to 1 (WCAG 2.1, success criteria 1.4.3 and 1.4.11).

TEST(LookTest, TextIsReadableOnEverySurface) {
  for (const QColor& ink : {color::text, color::secondaryText}) {
    for (const QColor& surface :
         {color::bar, color::pane, color::field, color::hover, color::pressed, color::selectedRow}) {
      EXPECT_GE(contrast(ink, surface), 4.5)
          << ink.name().toStdString() << " on " << surface.name().toStdString();
    }
  }
  for (const QColor& shade : {color::accent, color::accentHover, color::accentPressed}) {
    EXPECT_GE(contrast(color::onAccent, shade), 4.5) << shade.name().toStdString();
  }
  EXPECT_GE(contrast(color::text, color::surround), 4.5);
  EXPECT_GE(contrast(color::alert, color::pane), 4.5);
}

TEST(LookTest, SymbolsStandOutOnEverySurface) {
  for (const QColor& surface : {color::bar, color::pane, color::field, color::hover, color::pressed,
                                color::selectedRow, color::surround}) {
    EXPECT_GE(contrast(color::symbol, surface), 3.0) << surface.name().toStdString();
    EXPECT_GE(contrast(color::accent, surface), 3.0) << surface.name().toStdString();
  }
}

TEST(LookTest, ContrastRunsFromEqualToBlackOnWhite) {
  EXPECT_DOUBLE_EQ(contrast(Qt::black, Qt::black), 1.0);
  EXPECT_DOUBLE_EQ(contrast(Qt::black, Qt::white), 21.0);
  EXPECT_DOUBLE_EQ(contrast(Qt::white, Qt::black), 21.0);
}

TEST(LookTest, GreysHaveNoTint) {
  for (const QColor& grey :
       {color::surround, color::bar, color::pane, color::field, color::hover, color::pressed, color::divider,
        color::border, color::text, color::secondaryText, color::disabledText, color::symbol}) {
    EXPECT_EQ(grey.red(), grey.green()) << grey.name().toStdString();
    EXPECT_EQ(grey.green(), grey.blue()) << grey.name().toStdString();
  }
}

}  // namespace
}  // namespace orvanel::look
