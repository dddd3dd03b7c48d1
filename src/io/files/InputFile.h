// Opening files for reading. Only regular files are accepted: reading a pipe or a device could block for
// ever. An `InputFile` belongs to one thread.
#pragma once

#include <QIODevice>
#include <QString>
#include <memory>

#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"
#include "io/files/Progress.h"

namespace orvanel {

/// Owns the descriptor of a regular file.
class FileHandle {
 public:
  [[nodiscard]] static Described<FileHandle> openForReading(const std::string& path);
  ~FileHandle();
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// The size in bytes at the time of opening.
  [[nodiscard]] qint64 size() const { return size_; }
  /// Has what programs have stored in mappings of the file brought to the disk. Of what they store later, its
  /// times then tell; a page that still waits for the disk takes more without changing them.
  void settleMappings() const;

 private:
  FileHandle(int descriptor, qint64 size) : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  qint64 size_;
};

/// A file as an I/O device. Reads fail once the work is cancelled.
class InputFile final : public QIODevice {
 public:
  /// `progress` is only checked for cancellation.
  [[nodiscard]] static Described<std::unique_ptr<InputFile>> open(const QString& path,
                                                                  const Progress& progress = {});

  [[nodiscard]] qint64 size() const override { return file_.size(); }
  /// Which file it is, in its state of now.
  [[nodiscard]] std::optional<FileIdentity> identity() const { return FileIdentity::of(file_.descriptor()); }
  bool seek(qint64 position) override;

 protected:
  qint64 readData(char* out, qint64 count) override;
  qint64 writeData(const char* /*bytes*/, qint64 /*count*/) override { return -1; }

 private:
  InputFile(FileHandle file, Progress progress);

  FileHandle file_;
  Progress progress_;
  qint64 offset_ = 0;
};

}  // namespace orvanel
