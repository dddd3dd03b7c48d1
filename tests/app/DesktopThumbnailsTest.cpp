// What file managers find in the user's thumbnail cache after a save.
#include "app/DesktopThumbnails.h"

#include <gmock/gmock.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include "app/AppFixture.h"
#include "io/document/DocumentIO.h"

namespace orvanel {
namespace {

/// The folder of the fixture stands for a home; the cache is in it.
class DesktopThumbnailsTest : public AppFixture {
 protected:
  DesktopThumbnailsTest() {
    qputenv("HOME", QFile::encodeName(folder.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(path("cache")));
  }
  ~DesktopThumbnailsTest() override {
    qputenv("HOME", home);
    qputenv("XDG_CACHE_HOME", cache);
  }

  QString writeDocument(const QString& file, int width = 600, int height = 300) {
    const DocumentPtr document =
        Document::create(QStringLiteral("A"), width, height, ColorMode::rgb8, state.metalContext);
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, file, state.metalContext).has_value());
    return file;
  }

  [[nodiscard]] QString thumbnailPath(const char* size, const QByteArray& uri) const {
    const QByteArray name = QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex();
    return path("cache/thumbnails/") + QLatin1String(size) + u'/' + QString::fromLatin1(name) +
           QStringLiteral(".png");
  }
  [[nodiscard]] QString thumbnailOf(const char* size, const QString& file) const {
    return thumbnailPath(size, QUrl::fromLocalFile(file).toEncoded(QUrl::FullyEncoded));
  }

  QByteArray home = qgetenv("HOME");
  QByteArray cache = qgetenv("XDG_CACHE_HOME");
};

TEST_F(DesktopThumbnailsTest, NormalAndLargeOnesTellWhatTheyShow) {
  const QString document = writeDocument(path("ein Bild ü.tessel"));
  ASSERT_TRUE(publishThumbnails(document));
  const QByteArray uri = "file://" + QFile::encodeName(folder.path()) + "/ein%20Bild%20%C3%BC.tessel";
  for (const auto& [size, pixels] :
       {std::pair{"normal", QSize(128, 64)}, std::pair{"large", QSize(256, 128)}}) {
    const QString file = thumbnailPath(size, uri);
    const QImage thumbnail(file);
    EXPECT_EQ(thumbnail.size(), pixels) << file.toStdString();
    EXPECT_EQ(thumbnail.text(QStringLiteral("Thumb::URI")), QString::fromLatin1(uri));
    EXPECT_EQ(thumbnail.text(QStringLiteral("Thumb::MTime")).toLongLong(),
              QFileInfo(document).lastModified().toSecsSinceEpoch());
    EXPECT_EQ(thumbnail.text(QStringLiteral("Thumb::Size")).toLongLong(), QFileInfo(document).size());
  }
}

TEST_F(DesktopThumbnailsTest, AreForTheirOwnerOnly) {
  const QString document = writeDocument(path("a.tessel"));
  ASSERT_TRUE(publishThumbnails(document));
  const QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup |
                                    QFile::WriteOther | QFile::ExeGroup | QFile::ExeOther;
  for (const QString& made : {thumbnailOf("normal", document), thumbnailOf("large", document),
                              path("cache/thumbnails"), path("cache/thumbnails/normal")}) {
    EXPECT_TRUE(QFileInfo::exists(made)) << made.toStdString();
    EXPECT_EQ(QFile::permissions(made) & others, QFile::Permissions()) << made.toStdString();
  }
}

TEST_F(DesktopThumbnailsTest, ANewSaveReplacesThem) {
  const QString document = writeDocument(path("a.tessel"), 100, 50);
  ASSERT_TRUE(publishThumbnails(document));
  writeDocument(document, 50, 100);
  ASSERT_TRUE(publishThumbnails(document));
  EXPECT_EQ(QImage(thumbnailOf("normal", document)).size(), QSize(50, 100));
  EXPECT_EQ(QDir(path("cache/thumbnails/normal")).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(DesktopThumbnailsTest, WhatIsNoDocumentHasNone) {
  EXPECT_FALSE(publishThumbnails(path("missing.tessel")));
  EXPECT_FALSE(publishThumbnails(folder.path()));
  EXPECT_FALSE(publishThumbnails(writeText("text.tessel", "no archive")));
  EXPECT_FALSE(QFileInfo::exists(path("cache/thumbnails")));
}

TEST_F(DesktopThumbnailsTest, FilesThatAreNotForKeepingHaveNone) {
  EXPECT_TRUE(mayHaveThumbnails(path("a.tessel")));
  EXPECT_TRUE(mayHaveThumbnails(QStringLiteral("/media/disk/a.tessel")));
  EXPECT_FALSE(mayHaveThumbnails(path("cache/thumbnails/a.tessel")));
  EXPECT_FALSE(mayHaveThumbnails(QDir::tempPath() + QStringLiteral("/a.tessel")));
  EXPECT_FALSE(mayHaveThumbnails(QStringLiteral("/dev/shm/a.tessel")));
  EXPECT_TRUE(mayHaveThumbnails(QStringLiteral("/devices/a.tessel")));
  ASSERT_TRUE(QDir().mkpath(path("cache")));
  EXPECT_FALSE(publishThumbnails(writeDocument(path("cache/a.tessel"))));
}

TEST_F(DesktopThumbnailsTest, AreThereSoonAfterASaveInTheEditor) {
  observeNotifications();
  const DocumentPtr document = addDocument(QStringLiteral("A"), 64, 32);
  document->setSource(path("saved.tessel"), std::nullopt);
  document->setDirty(true);
  files.save(document);
  EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(thumbnailOf("large", path("saved.tessel"))); }));
  EXPECT_EQ(QImage(thumbnailOf("large", path("saved.tessel"))).size(), QSize(64, 32));
}

}  // namespace
}  // namespace orvanel
