#include "io/image/SvgSource.h"

#include <zlib.h>

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <array>

namespace orvanel {
namespace {

constexpr qint64 mostBytes = qint64{64} << 20U;

QString tooLarge() {
  return QStringLiteral("The drawing is larger than %1 MiB.").arg(mostBytes >> 20U);
}

Described<QByteArray> inflated(const QByteArray& compressed) {
  constexpr int gzipWindow = 16 + MAX_WBITS;
  z_stream stream{};
  if (inflateInit2(&stream, gzipWindow) != Z_OK)
    return because(QStringLiteral("The drawing can't be unpacked."));
  // The library takes its input as writable, but only reads it.
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(compressed.constData()));
  stream.avail_in = static_cast<uInt>(compressed.size());
  QByteArray plain;
  std::array<char, 65536> piece{};
  int status = Z_OK;
  while (status == Z_OK && plain.size() <= mostBytes) {
    stream.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream.avail_out = piece.size();
    status = ::inflate(&stream, Z_NO_FLUSH);
    plain.append(piece.data(), static_cast<qsizetype>(piece.size() - stream.avail_out));
  }
  inflateEnd(&stream);
  if (plain.size() > mostBytes) return because(tooLarge());
  if (status != Z_STREAM_END) return because(QStringLiteral("The drawing's compressed data is damaged."));
  return plain;
}

bool isRasterImage(const QByteArray& bytes) {
  return bytes.startsWith("\x89PNG") || bytes.startsWith("\xFF\xD8\xFF") || bytes.startsWith("GIF8") ||
         (bytes.startsWith("RIFF") && bytes.sliced(std::min<qsizetype>(8, bytes.size())).startsWith("WEBP"));
}

/// An image in an image may be a drawing again, which would be drawn as it stands.
bool isEmbeddedRasterImage(QStringView reference) {
  const QLatin1String mark("base64,");
  const qsizetype at = reference.lastIndexOf(mark);
  return reference.startsWith(QLatin1String("data:")) && at >= 0 &&
         isRasterImage(
             QByteArray::fromBase64(reference.sliced(at + mark.size())
                                        .first(std::min<qsizetype>(64, reference.size() - at - mark.size()))
                                        .toLatin1()));
}

bool isHarmless(const QXmlStreamAttribute& attribute) {
  if (attribute.name() != u"href") return true;
  const QStringView reference = attribute.value().trimmed();
  return reference.startsWith(u'#') || isEmbeddedRasterImage(reference);
}

void copyElement(const QXmlStreamReader& xml, QXmlStreamWriter& out) {
  out.writeStartElement(xml.qualifiedName().toString());
  for (const QXmlStreamNamespaceDeclaration& space : xml.namespaceDeclarations()) {
    const QString prefix = space.prefix().toString();
    out.writeAttribute(prefix.isEmpty() ? QStringLiteral("xmlns") : QStringLiteral("xmlns:") + prefix,
                       space.namespaceUri().toString());
  }
  for (const QXmlStreamAttribute& attribute : xml.attributes()) {
    if (isHarmless(attribute)) {
      out.writeAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
    }
  }
}

void copyToken(const QXmlStreamReader& xml, QXmlStreamWriter& out) {
  switch (xml.tokenType()) {
    case QXmlStreamReader::StartElement:
      copyElement(xml, out);
      return;
    case QXmlStreamReader::EndElement:
      out.writeEndElement();
      return;
    case QXmlStreamReader::Characters:
      out.writeCharacters(xml.text().toString());
      return;
    default:
      return;
  }
}

}  // namespace

Described<QByteArray> selfContainedSvg(QIODevice& file) {
  if (file.size() > mostBytes) return because(tooLarge());
  file.seek(0);
  QByteArray text = file.readAll();
  if (text.startsWith("\x1F\x8B")) {
    auto plain = inflated(text);
    if (!plain) return because(plain.error());
    text = std::move(*plain);
  }
  QByteArray result;
  QXmlStreamReader xml(text);  // expands entities within a limit of its own
  QXmlStreamWriter out(&result);
  while (!xml.atEnd()) {
    xml.readNext();
    copyToken(xml, out);
  }
  if (xml.hasError()) return because(QStringLiteral("The drawing is damaged: %1.").arg(xml.errorString()));
  return result;
}

}  // namespace orvanel
