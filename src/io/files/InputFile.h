// A file opened for reading, whoever it comes from. Only regular files are opened: a pipe or a device could
// keep the reader waiting for ever. An `InputFile` belongs to one thread.
#pragma once

#include <QIODevice>
#include <QString>
#include <memory>

#include "io/files/FileError.h"
#include "io/files/Progress.h"

namespace orvanel {

/// A descriptor of a regular file, closed with its owner.
class FileHandle {
 public:
  [[nodiscard]] static Described<FileHandle> openForReading(const std::string& path);
  ~FileHandle();
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// Bytes, at the time of opening.
  [[nodiscard]] qint64 size() const { return size_; }

 private:
  FileHandle(int descriptor, qint64 size) : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  qint64 size_;
};

/// The file as a device for image readers. Reading fails once the work is cancelled.
class InputFile final : public QIODevice {
 public:
  /// `progress` is asked, not told.
  [[nodiscard]] static Described<std::unique_ptr<InputFile>> open(const QString& path,
                                                                  const Progress& progress = {});

  [[nodiscard]] qint64 size() const override { return file_.size(); }
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
