#include "app/DesktopThumbnails.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>
#include <array>

#include "io/document/StoredPreview.h"

namespace orvanel {

namespace {

struct ThumbnailSize {
  const char* folder;
  int side;
};
constexpr std::array sizes{ThumbnailSize{"normal", 128}, ThumbnailSize{"large", 256}};

constexpr QFileDevice::Permissions ownerReadsAndWrites = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ownerEnters = ownerReadsAndWrites | QFileDevice::ExeOwner;

bool isIn(const QString& path, const QString& folder) {
  return !folder.isEmpty() && path.startsWith(QDir::cleanPath(folder) + u'/');
}

QString cacheFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

/// Makes the folder, for its owner alone. One that is there keeps its permissions.
bool makePrivateFolder(const QString& folder) {
  if (QFileInfo(folder).isDir()) return true;
  return QDir().mkpath(folder) && QFile::setPermissions(folder, ownerEnters);
}

bool writeThumbnail(const QString& path, const QImage& picture) {
  QSaveFile file(path);
  return file.open(QIODevice::WriteOnly) && file.setPermissions(ownerReadsAndWrites) &&
         picture.save(&file, "png") && file.commit();
}

}  // namespace

bool mayHaveThumbnails(const QString& absolutePath) {
  if (isIn(absolutePath, cacheFolder())) return false;
  // A home may itself stand in a folder that is otherwise not for keeping.
  if (isIn(absolutePath, QDir::homePath())) return true;
  const QStringList others = {QDir::tempPath(), qEnvironmentVariable("XDG_RUNTIME_DIR"),
                              QStringLiteral("/dev"), QStringLiteral("/proc"), QStringLiteral("/sys")};
  return std::none_of(others.begin(), others.end(),
                      [&absolutePath](const QString& folder) { return isIn(absolutePath, folder); });
}

bool publishThumbnails(const QString& documentPath) {
  const QFileInfo before(documentPath);
  const QString path = QDir::cleanPath(before.absoluteFilePath());
  if (!before.isFile() || !mayHaveThumbnails(path)) return false;
  const qint64 changed = before.lastModified().toSecsSinceEpoch();
  const auto preview = readStoredPreview(path);
  // A newer file has newer thumbnails coming.
  if (!preview || QFileInfo(path).lastModified() != before.lastModified()) return false;

  const QByteArray uri = QUrl::fromLocalFile(path).toEncoded(QUrl::FullyEncoded);
  const QString root = cacheFolder() + QStringLiteral("/thumbnails");
  const QString name = QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) +
                       QStringLiteral(".png");
  bool areWritten = makePrivateFolder(root);
  for (const ThumbnailSize& size : sizes) {
    QImage picture = fittedPreview(*preview, size.side);
    picture.setText(QStringLiteral("Thumb::URI"), QString::fromLatin1(uri));
    picture.setText(QStringLiteral("Thumb::MTime"), QString::number(changed));
    picture.setText(QStringLiteral("Thumb::Size"), QString::number(before.size()));
    picture.setText(QStringLiteral("Thumb::Mimetype"),
                    QStringLiteral("application/vnd.fennimoor.orvanel+zip"));
    picture.setText(QStringLiteral("Software"), QStringLiteral("Orvanel"));
    const QString folder = root + u'/' + QLatin1String(size.folder);
    areWritten = areWritten && makePrivateFolder(folder) && writeThumbnail(folder + u'/' + name, picture);
  }
  return areWritten;
}

}  // namespace orvanel
