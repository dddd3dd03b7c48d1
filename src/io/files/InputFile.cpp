#include "io/files/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstring>
#include <utility>

namespace orvanel {

Described<FileHandle> FileHandle::openForReading(const std::string& path) {
  // Without O_NONBLOCK, opening a pipe would wait for its writer.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0 && errno == ENXIO) return because(QStringLiteral("This is not a regular file."));
  if (descriptor < 0) {
    return because(
        QStringLiteral("The file can't be opened: %1.").arg(QString::fromLocal8Bit(std::strerror(errno))));
  }
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    return because(S_ISDIR(status.st_mode) ? QStringLiteral("This is a folder, not a file.")
                                           : QStringLiteral("This is not a regular file."));
  }
  return FileHandle(descriptor, status.st_size);
}

void FileHandle::settleMappings() const {
  // Where this can't be done, times tell less, as they always did.
  static_cast<void>(::fsync(descriptor_));
}

FileHandle::~FileHandle() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_) {}

Described<std::unique_ptr<InputFile>> InputFile::open(const QString& path, const Progress& progress) {
  auto file = FileHandle::openForReading(QFile::encodeName(path).toStdString());
  if (!file) return because(file.error());
  return std::unique_ptr<InputFile>(new InputFile(std::move(*file), progress));
}

InputFile::InputFile(FileHandle file, Progress progress)
    : file_(std::move(file)), progress_(std::move(progress)) {
  setOpenMode(ReadOnly);
}

bool InputFile::seek(qint64 position) {
  if (position < 0 || !QIODevice::seek(position)) return false;
  offset_ = position;
  return true;
}

qint64 InputFile::readData(char* out, qint64 count) {
  if (progress_.isCancelled()) return -1;
  ssize_t done = 0;
  do {
    done = ::pread(file_.descriptor(), out, static_cast<std::size_t>(count), offset_);
  } while (done < 0 && errno == EINTR);
  if (done > 0) offset_ += done;
  return done;
}

}  // namespace orvanel
