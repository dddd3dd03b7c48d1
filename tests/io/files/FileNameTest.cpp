#include "io/files/FileName.h"

#include <gtest/gtest.h>

#include "model/DisplayText.h"

namespace orvanel {
namespace {

TEST(FileName, extensionsAreComparedInEitherCase) {
  EXPECT_TRUE(isDocumentName(QStringLiteral("/a/b.tessel")));
  EXPECT_TRUE(isDocumentName(QStringLiteral("b.TesseL")));
  EXPECT_FALSE(isDocumentName(QStringLiteral("tessel")));
  EXPECT_FALSE(isDocumentName(QStringLiteral("b.tessel.png")));
  EXPECT_TRUE(hasExtension(QStringLiteral("x.HEIC"), u"heic"));
}

TEST(FileName, aNameWithoutABaseNamesTheDocument) {
  EXPECT_EQ(documentName(QStringLiteral("/a/.png")), QStringLiteral(".png"));
  EXPECT_EQ(documentName(QStringLiteral("/a/b.c.png")), QStringLiteral("b.c"));
}

TEST(FileName, shortNamesAreShownWithoutTheirFolder) {
  EXPECT_EQ(displayName(QStringLiteral("/pictures/sea.png")), QStringLiteral("sea.png"));
  EXPECT_EQ(displayName(QStringLiteral("/pictures/")), QStringLiteral("pictures"));
  EXPECT_EQ(displayName(QString()), QString());
}

TEST(FileName, longNamesKeepTheirEnds) {
  const QString shown = displayName(QString(300, u'a') + QStringLiteral("-the-end.png"));
  EXPECT_EQ(shown.size(), 60);
  EXPECT_TRUE(shown.startsWith(QString(29, u'a')));
  EXPECT_TRUE(shown.contains(QChar(0x2026)));
  EXPECT_TRUE(shown.endsWith(QStringLiteral("-the-end.png")));
  // Each of these characters takes two UTF-16 units.
  const QString whales = displayName(QString::fromUtf8("🐋").repeated(200));
  EXPECT_LE(whales.size(), 60);
  EXPECT_TRUE(whales.isValidUtf16());
}

TEST(FileName, aTextOfSeveralLinesIsShownOnOne) {
  EXPECT_EQ(displayText(QStringLiteral("Sky/Sea\nand\tsand")), QStringLiteral("Sky/Sea and sand"));
  EXPECT_EQ(displayText(QString(QChar::LineSeparator)), QStringLiteral(" "));
  EXPECT_EQ(displayText(QString(1000000, u'a')).size(), 60);
}

TEST(FileName, controlCharactersNeverReachAMessage) {
  const QString shown = displayName(QStringLiteral("a\nb\x1b[31m.png"));
  EXPECT_FALSE(shown.contains(u'\n'));
  EXPECT_FALSE(shown.contains(QChar(0x1B)));
}

}  // namespace
}  // namespace orvanel
