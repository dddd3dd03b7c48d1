#include "io/files/FileName.h"

#include <QFileInfo>
#include <QStringDecoder>

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
  constexpr qsizetype mostCharacters = 60;
  QString name = path.section(u'/', -1, -1, QString::SectionSkipEmpty);
  for (QChar& character : name) {
    if (!character.isPrint() && !character.isSurrogate()) character = QChar::ReplacementCharacter;
  }
  if (name.size() <= mostCharacters) return name;
  qsizetype head = mostCharacters / 2;
  qsizetype tail = name.size() - (mostCharacters - head - 1);
  // A surrogate pair stays together.
  if (name[head - 1].isHighSurrogate()) --head;
  if (name[tail].isLowSurrogate()) ++tail;
  return name.first(head) + QChar(0x2026) + name.sliced(tail);
}

bool isUtf8(std::string_view text) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  static_cast<void>(QString(decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())))));
  return !decoder.hasError();
}

}  // namespace orvanel
