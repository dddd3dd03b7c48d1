// Captures the messages of image libraries during decoding and encoding: keeps them off standard error, and
// uses them to detect damaged files. Any thread.
#pragma once

#include <QString>
#include <QStringList>

namespace orvanel {

/// Captures messages of the current thread during its lifetime. Must not be nested.
class LibraryMessages {
 public:
  LibraryMessages();
  ~LibraryMessages();
  LibraryMessages(const LibraryMessages&) = delete;
  LibraryMessages& operator=(const LibraryMessages&) = delete;

  /// Also captures the errors of libtiff, from now on. Loads the library, so call it only for TIFF files.
  static void catchTiff();

  /// Whether a message reported missing or corrupt pixels.
  [[nodiscard]] bool reportDamage() const;

  void add(const QString& text) { texts_ << text; }
  void addTiffError() { hasTiffError_ = true; }

 private:
  QStringList texts_;
  bool hasTiffError_ = false;
};

}  // namespace orvanel
