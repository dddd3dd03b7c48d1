// What image libraries would print while they decode. It is kept from standard error, where it would stand
// beside our own words, and tells what is wrong with a file. Any thread.
#pragma once

#include <QString>
#include <QStringList>

namespace orvanel {

/// While alive, collects what the libraries say on this thread. Not nested.
class LibraryMessages {
 public:
  LibraryMessages();
  ~LibraryMessages();
  LibraryMessages(const LibraryMessages&) = delete;
  LibraryMessages& operator=(const LibraryMessages&) = delete;

  /// libtiff has a way of its own to report; it is caught from here on, for files that need the library.
  static void catchTiff();

  /// Whether something was said after which pixels are missing or wrong.
  [[nodiscard]] bool tellOfDamage() const;

  void add(const QString& text) { texts_ << text; }
  void addTiffError() { hasTiffError_ = true; }

 private:
  QStringList texts_;
  bool hasTiffError_ = false;
};

}  // namespace orvanel
