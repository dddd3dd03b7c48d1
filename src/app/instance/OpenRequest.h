// What a second start of the program asks of the first: to open files and come to the front. Plain values,
// any thread.
#pragma once

#include <QByteArray>
#include <QStringList>
#include <optional>

namespace orvanel {

struct OpenRequest {
  /// The largest message that is sent or read: more than a command line can hold.
  static constexpr qsizetype maximumBytes = qsizetype{4} << 20;

  /// Absolute paths.
  QStringList files;
  /// With it the desktop lets the window come to the front; may be empty.
  QString activationToken;

  friend bool operator==(const OpenRequest&, const OpenRequest&) = default;

  /// The request of a process that was started here and now with these files.
  [[nodiscard]] static OpenRequest ofThisProcess(const QStringList& files);

  [[nodiscard]] QByteArray encoded() const;
  /// Nothing if another version, or anybody else, has written the message.
  [[nodiscard]] static std::optional<OpenRequest> decode(const QByteArray& message);
};

}  // namespace orvanel
