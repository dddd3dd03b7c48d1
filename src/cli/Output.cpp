#include "cli/Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace orvanel {

CommandResult printText(const QString& text) {
  const QByteArray bytes = text.toUtf8();
  const auto length = static_cast<std::size_t>(bytes.size());
  errno = 0;
  if (std::fwrite(bytes.constData(), 1, length, stdout) != length || std::fflush(stdout) != 0) {
    return tl::make_unexpected(
        CommandFailure{QStringLiteral("standard output"), QString::fromLocal8Bit(std::strerror(errno))});
  }
  return {};
}

void printErrorLine(const QString& text) {
  QString line = text;
  std::replace_if(
      line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; }, u' ');
  const QByteArray bytes = line.toUtf8() + '\n';
  std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

}  // namespace orvanel
