#include "thumbnailer/Thumbnailer.h"

#include <QFile>
#include <QFileDevice>
#include <cstdio>
#include <optional>

#include "io/document/StoredPreview.h"

namespace orvanel {
namespace {

constexpr int success = 0;
constexpr int failure = 1;
constexpr int wrongUsage = 2;

/// What desktops call a large thumbnail, and the largest one that they ask for.
constexpr int defaultSide = 256;
constexpr int largestSide = maximumPreviewSide;

constexpr auto helpText = R"(Usage: orvanel-thumbnailer [--size PIXELS] DOCUMENT PNG
Writes the preview that DOCUMENT carries to the file PNG.

  --size PIXELS  the longest side of the thumbnail, 1 to 1024 (256)
  --help         show this help and exit
  --version      show the version and exit
)";

struct Invocation {
  int side = defaultSide;
  QString document;
  QString thumbnail;
};

/// Nothing for invalid usage.
std::optional<Invocation> invocationOf(QStringList arguments) {
  Invocation invocation;
  if (!arguments.isEmpty() && arguments.constFirst() == QStringLiteral("--size")) {
    arguments.removeFirst();
    if (arguments.isEmpty()) return std::nullopt;
    bool isNumber = false;
    invocation.side = arguments.takeFirst().toInt(&isNumber);
    if (!isNumber || invocation.side < 1 || invocation.side > largestSide) return std::nullopt;
  }
  if (!arguments.isEmpty() && arguments.constFirst() == QStringLiteral("--")) arguments.removeFirst();
  if (arguments.size() != 2) return std::nullopt;
  invocation.document = arguments.at(0);
  invocation.thumbnail = arguments.at(1);
  return invocation;
}

int failed(const QString& path, const QString& reason) {
  std::fprintf(stderr, "%s: %s\n", QFile::encodeName(path).constData(), qPrintable(reason));
  return failure;
}

}  // namespace

int runThumbnailer(const QStringList& arguments) {
  if (arguments.size() == 1 && arguments.constFirst() == QStringLiteral("--help")) {
    std::fputs(helpText, stdout);
    return success;
  }
  if (arguments.size() == 1 && arguments.constFirst() == QStringLiteral("--version")) {
    std::puts("orvanel-thumbnailer 0.1");
    return success;
  }
  const std::optional<Invocation> invocation = invocationOf(arguments);
  if (!invocation) {
    std::fputs("orvanel-thumbnailer: invalid usage; see orvanel-thumbnailer --help\n", stderr);
    return wrongUsage;
  }
  const auto preview = readStoredPreview(invocation->document);
  if (!preview) return failed(invocation->document, preview.error());
  // Written in place: the file manager has made the file, and may have locked the rest of its folder.
  QFile thumbnail(invocation->thumbnail);
  const bool isWritten = thumbnail.open(QIODevice::WriteOnly) &&
                         fittedPreview(*preview, invocation->side).save(&thumbnail, "png") &&
                         thumbnail.flush();
  if (!isWritten) return failed(invocation->thumbnail, thumbnail.errorString());
  return success;
}

}  // namespace orvanel
