#include "io/files/FileName.h"

#include <QFileInfo>
#include <QStringDecoder>

#include "model/DisplayText.h"

namespace orvanel {

bool hasExtension(const QString& path, QStringView extension) {
  return QFileInfo(path).suffix().compare(extension, Qt::CaseInsensitive) == 0;
}

bool isDocumentName(const QString& path) {
  return hasExtension(path, QString::fromLatin1(documentExtension));
}

QString documentName(const QString& path) {
  const QFileInfo file(path);
  return file.completeBaseName().isEmpty() ? file.fileName() : file.completeBaseName();
}

QString displayName(const QString& path) {
  return displayText(path.section(u'/', -1, -1, QString::SectionSkipEmpty));
}

bool isUtf8(std::string_view text) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  static_cast<void>(QString(decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())))));
  return !decoder.hasError();
}

}  // namespace orvanel
