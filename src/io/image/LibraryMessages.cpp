#include "io/image/LibraryMessages.h"

#include <unistd.h>

#include <QtGlobal>
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "io/files/LazyLibrary.h"

namespace orvanel {
namespace {

thread_local LibraryMessages* capturing = nullptr;
QtMessageHandler nextHandler = nullptr;

void capture(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (capturing != nullptr && type != QtFatalMsg) {
    capturing->add(message);
  } else if (nextHandler != nullptr) {
    nextHandler(type, context, message);
  }
}

/// Discards what is written to `stderr` while this thread captures messages; passes it on otherwise.
ssize_t writeToStandardError(void* /*cookie*/, const char* text, std::size_t length) {
  if (capturing != nullptr) return static_cast<ssize_t>(length);
  return ::write(STDERR_FILENO, text, length);
}

/// libpng prints to `stderr` unless its caller, here the platform's reader, installs handlers.
void catchStandardError() {
  cookie_io_functions_t functions{};
  functions.write = writeToStandardError;
  std::FILE* stream = fopencookie(nullptr, "w", functions);
  if (stream == nullptr) return;
  std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
  std::fflush(stderr);
  stderr = stream;
}

using TiffHandler = void (*)(const char* module, const char* format, std::va_list arguments);

void recordTiffError(const char* /*module*/, const char* /*format*/, std::va_list /*arguments*/) {
  if (capturing != nullptr) capturing->addTiffError();
}

struct TiffLibrary : LazyLibrary {
  TiffLibrary() : LazyLibrary(QStringLiteral("tiff"), 6) {
    if (!isComplete()) return;
    setErrorHandler(recordTiffError);
    setWarningHandler(nullptr);
  }

  TiffHandler (*setErrorHandler)(TiffHandler) = find<TiffHandler(TiffHandler)>("TIFFSetErrorHandler");
  TiffHandler (*setWarningHandler)(TiffHandler) = find<TiffHandler(TiffHandler)>("TIFFSetWarningHandler");
};

}  // namespace

LibraryMessages::LibraryMessages() {
  static std::once_flag once;
  std::call_once(once, [] {
    nextHandler = qInstallMessageHandler(capture);
    catchStandardError();
  });
  capturing = this;
}

LibraryMessages::~LibraryMessages() {
  capturing = nullptr;
}

void LibraryMessages::catchTiff() {
  static const TiffLibrary library;
}

bool LibraryMessages::reportDamage() const {
  // The wording of libjpeg. Extraneous bytes between two markers don't affect any pixel.
  const auto isDamage = [](const QString& text) {
    return text.startsWith(QLatin1String("Premature end of JPEG")) ||
           (text.startsWith(QLatin1String("Corrupt JPEG data")) &&
            !text.contains(QLatin1String("extraneous bytes")));
  };
  return hasTiffError_ || std::ranges::any_of(texts_, isDamage);
}

}  // namespace orvanel
