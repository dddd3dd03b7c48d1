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

thread_local LibraryMessages* listening = nullptr;
QtMessageHandler nextHandler = nullptr;

void listen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (listening != nullptr && type != QtFatalMsg) {
    listening->add(message);
  } else if (nextHandler != nullptr) {
    nextHandler(type, context, message);
  }
}

/// What is written to `stderr`: kept back while this thread listens, and passed on otherwise.
ssize_t writeToStandardError(void* /*cookie*/, const char* text, std::size_t length) {
  if (listening != nullptr) return static_cast<ssize_t>(length);
  return ::write(STDERR_FILENO, text, length);
}

/// libpng prints by itself unless its caller prevents that, which isn't us.
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

void noteTiffError(const char* /*module*/, const char* /*format*/, std::va_list /*arguments*/) {
  if (listening != nullptr) listening->addTiffError();
}

struct TiffLibrary : LazyLibrary {
  TiffLibrary() : LazyLibrary(QStringLiteral("tiff"), 6) {
    if (!isComplete()) return;
    setErrorHandler(noteTiffError);
    setWarningHandler(nullptr);
  }

  TiffHandler (*setErrorHandler)(TiffHandler) = find<TiffHandler(TiffHandler)>("TIFFSetErrorHandler");
  TiffHandler (*setWarningHandler)(TiffHandler) = find<TiffHandler(TiffHandler)>("TIFFSetWarningHandler");
};

}  // namespace

LibraryMessages::LibraryMessages() {
  static std::once_flag once;
  std::call_once(once, [] {
    nextHandler = qInstallMessageHandler(listen);
    catchStandardError();
  });
  listening = this;
}

LibraryMessages::~LibraryMessages() {
  listening = nullptr;
}

void LibraryMessages::catchTiff() {
  static const TiffLibrary library;
}

bool LibraryMessages::tellOfDamage() const {
  // libjpeg's words; bytes too many between two markers cost no pixel.
  const auto isDamage = [](const QString& text) {
    return text.startsWith(QLatin1String("Premature end of JPEG")) ||
           (text.startsWith(QLatin1String("Corrupt JPEG data")) &&
            !text.contains(QLatin1String("extraneous bytes")));
  };
  return hasTiffError_ || std::ranges::any_of(texts_, isDamage);
}

}  // namespace orvanel
