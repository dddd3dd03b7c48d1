#include "io/image/SvgSource.h"

#include <zlib.h>

#include <QBuffer>
#include <QImageReader>
#include <QSize>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <array>
#include <cstdint>

#include "io/image/ImageLimits.h"

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

/// The decoded bytes of a `data:` reference; empty for other references.
QByteArray embeddedBytes(QStringView reference) {
  const QLatin1String mark("base64,");
  const qsizetype at = reference.lastIndexOf(mark);
  if (!reference.startsWith(QLatin1String("data:")) || at < 0) return {};
  return QByteArray::fromBase64(reference.sliced(at + mark.size()).toLatin1());
}

/// Copies the harmless parts of a drawing.
class Sanitizer {
 public:
  explicit Sanitizer(QByteArray* result) : out_(result) {}

  /// Fails when the embedded images are too large.
  Described<void> copy(const QXmlStreamReader& xml) {
    switch (xml.tokenType()) {
      case QXmlStreamReader::StartElement:
        return copyElement(xml);
      case QXmlStreamReader::EndElement:
        out_.writeEndElement();
        return {};
      case QXmlStreamReader::Characters:
        out_.writeCharacters(xml.text().toString());
        return {};
      default:
        return {};
    }
  }

 private:
  Described<void> copyElement(const QXmlStreamReader& xml) {
    out_.writeStartElement(xml.qualifiedName().toString());
    for (const QXmlStreamNamespaceDeclaration& space : xml.namespaceDeclarations()) {
      const QString prefix = space.prefix().toString();
      out_.writeAttribute(prefix.isEmpty() ? QStringLiteral("xmlns") : QStringLiteral("xmlns:") + prefix,
                          space.namespaceUri().toString());
    }
    for (const QXmlStreamAttribute& attribute : xml.attributes()) {
      const Described<bool> harmless = isHarmless(attribute);
      if (!harmless) return because(harmless.error());
      if (*harmless) out_.writeAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
    }
    return {};
  }

  Described<bool> isHarmless(const QXmlStreamAttribute& attribute) {
    if (attribute.name() != u"href") return true;
    const QStringView reference = attribute.value().trimmed();
    if (reference.startsWith(u'#')) return true;
    QByteArray bytes = embeddedBytes(reference);
    // An embedded drawing would be rendered without being sanitized.
    if (!isRasterImage(bytes)) return false;
    QBuffer buffer(&bytes);
    return admits(QImageReader(&buffer).size());
  }

  /// Counts an embedded image. The renderer decodes all of them and holds them in memory together.
  Described<bool> admits(const QSize& size) {
    if (size.isEmpty()) return false;
    if (const auto judged = judgeImageSize(size); !judged) return because(judged.error());
    embeddedPixels_ += static_cast<std::uint64_t>(size.width()) * static_cast<std::uint64_t>(size.height());
    if (const auto judged = judgePixelCount(embeddedPixels_); !judged) return because(judged.error());
    return true;
  }

  QXmlStreamWriter out_;
  std::uint64_t embeddedPixels_ = 0;
};

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
  QXmlStreamReader xml(text);  // limits the expansion of entities itself
  Sanitizer sanitizer(&result);
  while (!xml.atEnd()) {
    xml.readNext();
    if (const auto copied = sanitizer.copy(xml); !copied) return because(copied.error());
  }
  if (xml.hasError()) return because(QStringLiteral("The drawing is damaged: %1.").arg(xml.errorString()));
  return result;
}

}  // namespace orvanel
