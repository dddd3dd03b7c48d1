#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QThreadPool>

#include "app/AppState.h"
#include "app/DesktopRecentFiles.h"

namespace orvanel {
namespace {

QString listPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
         QStringLiteral("/recently-used.xbel");
}

QByteArray listText() {
  QFile file(listPath());
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeList(const QByteArray& text) {
  QFile file(listPath());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(text);
}

class SettingsTest : public testing::Test {
 protected:
  SettingsTest() {
    // The previous test may still be publishing recent files.
    QThreadPool::globalInstance()->waitForDone();
    QSettings().clear();
    QFile::remove(listPath());
  }
};

TEST_F(SettingsTest, DefaultsApplyUntilAValueIsStored) {
  UserDefaults defaults;
  EXPECT_TRUE(defaults.confirmUnsavedChanges());
  EXPECT_TRUE(defaults.keepsRecovery());
  EXPECT_EQ(defaults.layerThumbnailSize(), 48);
  defaults.setValue(UserDefaults::confirmUnsavedChangesKey, false);
  defaults.setValue(UserDefaults::layerThumbnailSizeKey, 64);
  EXPECT_FALSE(UserDefaults().confirmUnsavedChanges());
  EXPECT_EQ(UserDefaults().layerThumbnailSize(), 64);
}

TEST_F(SettingsTest, AStoredValueOfTheWrongTypeIsIgnored) {
  UserDefaults defaults;
  defaults.setValue(UserDefaults::layerThumbnailSizeKey, QStringLiteral("large"));
  EXPECT_EQ(defaults.layerThumbnailSize(), 48);
}

TEST_F(SettingsTest, AnImpossibleValueCountsAsTheNearestPossibleOne) {
  UserDefaults defaults;
  EXPECT_EQ(defaults.inspectorWidth(), 288);
  for (const auto& [stored, width, thumbnail] :
       {std::tuple(-2147483647, 248, 16), {0, 248, 16}, {256, 256, 256}, {2147483647, 480, 256}}) {
    defaults.setValue(UserDefaults::inspectorWidthKey, stored);
    defaults.setValue(UserDefaults::layerThumbnailSizeKey, stored);
    EXPECT_EQ(defaults.inspectorWidth(), width);
    EXPECT_EQ(defaults.layerThumbnailSize(), thumbnail);
  }
}

TEST_F(SettingsTest, PreferencesAreNotPersistent) {
  AppState state(MetalContext::shared());
  EXPECT_EQ(state.preferences.value().checkerboardSize, 8.0F);
  EXPECT_EQ(state.preferences.value().defaultCanvasWidth, 1024);
  EXPECT_EQ(state.preferences.value().defaultCanvasHeight, 768);
  state.preferences = AppPreferences{4.0F, 1, 2};
  EXPECT_EQ(AppState(MetalContext::shared()).preferences.value(), AppPreferences());
}

TEST_F(SettingsTest, AnApplicationBeginsWithAnEmptyClipboard) {
  EXPECT_FALSE(AppState(MetalContext::shared()).pixelClipboard.value().has_value());
}

TEST_F(SettingsTest, RecentDocumentsKeepTheTenNewest) {
  UserDefaults defaults;
  RecentDocuments recent(defaults);
  for (int index = 0; index < 12; ++index) recent.record(QStringLiteral("/pictures/%1.png").arg(index));
  recent.record(QStringLiteral("/pictures/5.png"));
  const QStringList paths = recent.paths();
  EXPECT_EQ(paths.size(), 10);
  EXPECT_EQ(paths.at(0), "/pictures/5.png");
  EXPECT_EQ(paths.at(1), "/pictures/11.png");
  EXPECT_EQ(paths.count(QStringLiteral("/pictures/5.png")), 1);

  recent.clear();
  EXPECT_TRUE(recent.paths().isEmpty());
}

TEST_F(SettingsTest, EachRunPublishesEvenTheFirstOnce) {
  UserDefaults defaults;
  const QString photo = QStringLiteral("/pictures/photo.png");
  const auto recordAndWait = [&photo](RecentDocuments& recent) {
    recent.record(photo);
    QThreadPool::globalInstance()->waitForDone();
  };
  RecentDocuments before(defaults);
  recordAndWait(before);
  // Another program has cleared the list since.
  QFile::remove(listPath());
  RecentDocuments recent(defaults);
  recordAndWait(recent);
  EXPECT_TRUE(listText().contains("photo.png"));
  recordAndWait(recent);
  EXPECT_TRUE(listText().contains("count=\"1\""));
}

TEST_F(SettingsTest, APublishedFileIsInTheDesktopsList) {
  ASSERT_TRUE(publishRecentFile(QStringLiteral("/pictures/a & b.tessel")));
  const QByteArray text = listText();
  EXPECT_TRUE(text.contains("href=\"file:///pictures/a%20&amp;%20b.tessel\"")) << text.toStdString();
  EXPECT_TRUE(text.contains("type=\"application/vnd.fennimoor.orvanel+zip\""));
  EXPECT_TRUE(text.contains("name=\"Orvanel\""));
  EXPECT_EQ(QFile::permissions(listPath()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(SettingsTest, PublishingAgainUpdatesTheEntry) {
  ASSERT_TRUE(publishRecentFile(QStringLiteral("/pictures/a.png")));
  ASSERT_TRUE(publishRecentFile(QStringLiteral("/pictures/b.png")));
  ASSERT_TRUE(publishRecentFile(QStringLiteral("/pictures/a.png")));
  const QByteArray text = listText();
  EXPECT_EQ(text.count("<bookmark "), 2);
  EXPECT_EQ(text.count("count=\"2\""), 1);
}

TEST_F(SettingsTest, EntriesOfOtherProgramsArePreserved) {
  const QByteArray other =
      R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0"
      xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
  <bookmark href="file:///pictures/a.png" added="2020-01-02T03:04:05Z" modified="2020-01-02T03:04:05Z" visited="2020-01-02T03:04:05Z">
    <info>
      <metadata owner="http://freedesktop.org">
        <mime:mime-type type="image/png"/>
        <bookmark:groups><bookmark:group>Graphics</bookmark:group></bookmark:groups>
        <bookmark:applications>
          <bookmark:application name="Viewer" exec="&apos;viewer %u&apos;" modified="2020-01-02T03:04:05Z" count="7"/>
        </bookmark:applications>
      </metadata>
    </info>
  </bookmark>
</xbel>)";
  writeList(other);
  ASSERT_TRUE(publishRecentFile(QStringLiteral("/pictures/a.png")));
  const QByteArray text = listText();
  EXPECT_TRUE(text.contains("name=\"Viewer\"")) << text.toStdString();
  EXPECT_TRUE(text.contains("count=\"7\""));
  EXPECT_TRUE(text.contains("<bookmark:group>Graphics</bookmark:group>"));
  EXPECT_TRUE(text.contains("added=\"2020-01-02T03:04:05Z\""));
  EXPECT_FALSE(text.contains("visited=\"2020-01-02T03:04:05Z\""));
  EXPECT_EQ(text.count("<bookmark "), 1);
  EXPECT_EQ(text.count("name=\"Orvanel\""), 1);
}

TEST_F(SettingsTest, AMalformedListIsLeftAlone) {
  const QByteArray broken = "<xbel version=\"1.0\"><bookmark href=\"file:///x\">";
  writeList(broken);
  EXPECT_FALSE(publishRecentFile(QStringLiteral("/pictures/a.png")));
  EXPECT_EQ(listText(), broken);
}

}  // namespace
}  // namespace orvanel
