// How the command line of the editor is understood.
#include "app/StartArguments.h"

#include <gtest/gtest.h>

namespace orvanel {
namespace {

StartArguments start(const char* arguments) {
  return StartArguments::of(QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts));
}

TEST(StartArguments, areFilesUnlessTheyAreOptions) {
  const StartArguments plain = start("a.png b.tessel");
  EXPECT_EQ(plain.files, QStringList({QStringLiteral("a.png"), QStringLiteral("b.tessel")}));
  EXPECT_FALSE(plain.wantsHelp || plain.wantsVersion || plain.wantsNewWindow || plain.isUITesting ||
               plain.hasOtherOptions);
  EXPECT_TRUE(start("--help").wantsHelp);
  EXPECT_TRUE(start("--version").wantsVersion);
  EXPECT_TRUE(start("--uitesting").isUITesting);
  const StartArguments own = start("--new-window a.png");
  EXPECT_TRUE(own.wantsNewWindow);
  EXPECT_EQ(own.files, QStringList({QStringLiteral("a.png")}));
}

TEST(StartArguments, aTranslationIsNoFileToOpen) {
  const StartArguments german = start("--translation de.qm a.png");
  EXPECT_EQ(german.translation, QStringLiteral("de.qm"));
  EXPECT_EQ(german.files, QStringList({QStringLiteral("a.png")}));
  EXPECT_TRUE(start("--translation").translation.isEmpty());
}

TEST(StartArguments, twoDashesEndTheOptions) {
  const StartArguments names = start("-- --help -x");
  EXPECT_FALSE(names.wantsHelp || names.hasOtherOptions);
  EXPECT_EQ(names.files, QStringList({QStringLiteral("--help"), QStringLiteral("-x")}));
}

TEST(StartArguments, optionsOfTheToolkitAreNoticed) {
  EXPECT_TRUE(start("-platform offscreen a.png").hasOtherOptions);
}

TEST(StartArguments, fileUrlsBecomePaths) {
  EXPECT_EQ(start("file:///pictures/a%20b.png").files, QStringList({QStringLiteral("/pictures/a b.png")}));
}

}  // namespace
}  // namespace orvanel
