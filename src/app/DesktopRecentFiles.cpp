#include "app/DesktopRecentFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <mutex>

#include "io/files/FileName.h"

namespace orvanel {

namespace {

constexpr auto applicationName = "Orvanel";
constexpr qint64 largestList = 64LL * 1024 * 1024;

struct RecentFile {
  QString href;
  QString mimeType;
  QString now;
};

void writeApplication(QXmlStreamWriter& writer, const RecentFile& file, int count) {
  writer.writeEmptyElement(QStringLiteral("bookmark:application"));
  writer.writeAttribute(QStringLiteral("name"), QLatin1String(applicationName));
  writer.writeAttribute(QStringLiteral("exec"), QStringLiteral("'orvanel %u'"));
  writer.writeAttribute(QStringLiteral("modified"), file.now);
  writer.writeAttribute(QStringLiteral("count"), QString::number(count));
}

void writeBookmark(QXmlStreamWriter& writer, const RecentFile& file) {
  writer.writeStartElement(QStringLiteral("bookmark"));
  writer.writeAttribute(QStringLiteral("href"), file.href);
  for (const char* stamp : {"added", "modified", "visited"}) {
    writer.writeAttribute(QLatin1String(stamp), file.now);
  }
  writer.writeStartElement(QStringLiteral("info"));
  writer.writeStartElement(QStringLiteral("metadata"));
  writer.writeAttribute(QStringLiteral("owner"), QStringLiteral("http://freedesktop.org"));
  writer.writeEmptyElement(QStringLiteral("mime:mime-type"));
  writer.writeAttribute(QStringLiteral("type"), file.mimeType);
  writer.writeStartElement(QStringLiteral("bookmark:applications"));
  writeApplication(writer, file, 1);
  for (int open = 0; open < 4; ++open) writer.writeEndElement();
}

void writeEmptyList(QXmlStreamWriter& writer, const RecentFile& file) {
  writer.setAutoFormatting(true);
  writer.writeStartDocument();
  writer.writeStartElement(QStringLiteral("xbel"));
  writer.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
  writer.writeAttribute(QStringLiteral("xmlns:bookmark"),
                        QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks"));
  writer.writeAttribute(QStringLiteral("xmlns:mime"),
                        QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info"));
  writeBookmark(writer, file);
  writer.writeEndDocument();
}

/// Copies the list token by token, updating the file's entry on the way or adding one at the end.
class ListCopy {
 public:
  ListCopy(QXmlStreamReader& reader, QXmlStreamWriter& writer, RecentFile file)
      : reader_(reader), writer_(writer), file_(std::move(file)) {}

  bool run() {
    while (!reader_.atEnd()) {
      switch (reader_.readNext()) {
        case QXmlStreamReader::StartElement:
          startElement();
          break;
        case QXmlStreamReader::EndElement:
          endElement();
          break;
        case QXmlStreamReader::Invalid:
          return false;
        default:
          writer_.writeCurrentToken(reader_);
      }
    }
    return sawList_;
  }

 private:
  void startElement() {
    const QString name = reader_.qualifiedName().toString();
    if (name == u"xbel") sawList_ = true;
    if (name == u"bookmark")
      inOwnBookmark_ = reader_.attributes().value(QStringLiteral("href")) == file_.href;
    if (inOwnBookmark_ && name == u"bookmark:application" &&
        reader_.attributes().value(QStringLiteral("name")) == QLatin1String(applicationName)) {
      count_ = reader_.attributes().value(QStringLiteral("count")).toInt();
      reader_.skipCurrentElement();
      return;
    }
    writer_.writeStartElement(name);
    for (const QXmlStreamAttribute& attribute : reader_.attributes()) {
      const QString key = attribute.qualifiedName().toString();
      const bool isStamp = name == u"bookmark" && (key == u"modified" || key == u"visited");
      writer_.writeAttribute(key, inOwnBookmark_ && isStamp ? file_.now : attribute.value().toString());
    }
  }

  void endElement() {
    const QString name = reader_.qualifiedName().toString();
    if (inOwnBookmark_ && name == u"bookmark:applications") writeApplication(writer_, file_, count_ + 1);
    if (inOwnBookmark_ && name == u"bookmark") {
      inOwnBookmark_ = false;
      isListed_ = true;
    }
    if (name == u"xbel" && !isListed_) writeBookmark(writer_, file_);
    writer_.writeEndElement();
  }

  QXmlStreamReader& reader_;
  QXmlStreamWriter& writer_;
  RecentFile file_;
  bool sawList_ = false;
  bool inOwnBookmark_ = false;
  bool isListed_ = false;
  int count_ = 0;
};

}  // namespace

bool publishRecentFile(const QString& absolutePath) {
  static std::mutex oneAtATime;
  const std::lock_guard lock(oneAtATime);

  const QString directory = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  if (directory.isEmpty() || !QDir().mkpath(directory)) return false;
  const QString listPath = directory + QStringLiteral("/recently-used.xbel");
  const RecentFile file{
      QString::fromLatin1(QUrl::fromLocalFile(absolutePath).toEncoded(QUrl::FullyEncoded)),
      isDocumentName(absolutePath)
          ? QStringLiteral("application/vnd.fennimoor.orvanel+zip")
          : QMimeDatabase().mimeTypeForFile(absolutePath, QMimeDatabase::MatchExtension).name(),
      QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)};

  QFile list(listPath);
  QSaveFile replacement(listPath);
  if (!replacement.open(QIODevice::WriteOnly)) return false;
  // The list names private files, so a new one is readable by its owner only.
  if (!list.exists()) replacement.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
  QXmlStreamWriter writer(&replacement);
  if (!list.exists() || list.size() == 0) {
    writeEmptyList(writer, file);
  } else {
    if (list.size() > largestList || !list.open(QIODevice::ReadOnly)) return false;
    QXmlStreamReader reader(&list);
    // Elements keep the namespace prefixes they were written with.
    reader.setNamespaceProcessing(false);
    if (!ListCopy(reader, writer, file).run()) return false;
  }
  return !writer.hasError() && replacement.commit();
}

}  // namespace orvanel
