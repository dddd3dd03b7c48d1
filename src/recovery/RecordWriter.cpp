#include "recovery/RecordWriter.h"

#include <cerrno>
#include <cstring>

#include "io/archive/Deflate.h"
#include "io/files/FileOperations.h"
#include "recovery/DiskReserve.h"

namespace orvanel::journal {
namespace {

constexpr std::size_t bufferBytes = std::size_t{1} << 20U;

std::span<const std::byte> bytesOf(const QByteArray& bytes) {
  return {reinterpret_cast<const std::byte*>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

}  // namespace

QString writeFailure(int error) {
  return QStringLiteral("Recovery data can't be written: %1.")
      .arg(QString::fromLocal8Bit(std::strerror(error)));
}

RecordWriter::RecordWriter(int file, std::int64_t start, std::int64_t limit)
    : file_(file),
      start_(start),
      limit_(limit),
      position_(start + static_cast<std::int64_t>(RecordHeader::byteSize)) {}

Described<void> RecordWriter::writeAt(std::span<const std::byte> bytes, std::int64_t offset) const {
  if (offset + static_cast<std::int64_t>(bytes.size()) > limit_) {
    return because(QStringLiteral("Recovery data has reached its size limit."));
  }
  while (!bytes.empty()) {
    const ssize_t written = FileOperations::current().writeAt(file_, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return because(writeFailure(written == 0 ? ENOSPC : errno));
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
  return {};
}

Described<void> RecordWriter::flush() {
  if (!leavesReserve(file_, static_cast<std::int64_t>(buffer_.size()))) {
    return because(QStringLiteral("The disk is nearly full. The remaining space is left for your files."));
  }
  auto result = writeAt(buffer_, position_);
  position_ += static_cast<std::int64_t>(buffer_.size());
  buffer_.clear();
  return result;
}

Described<void> RecordWriter::add(std::span<const std::byte> bytes) {
  if (buffer_.size() + bytes.size() > bufferBytes) {
    if (auto result = flush(); !result) return result;
  }
  if (bytes.size() <= bufferBytes) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    return {};
  }
  auto result = writeAt(bytes, position_);
  position_ += static_cast<std::int64_t>(bytes.size());
  return result;
}

Described<void> RecordWriter::addTile(std::span<const std::byte> compressed) {
  tileBytes_ += compressed.size();
  tilesCrc_ = crc32(compressed, tilesCrc_);
  return add(compressed);
}

Described<std::int64_t> RecordWriter::finish(RecordHeader header, const RecordContents& contents) {
  const QByteArray encoded = contents.encoded();
  if (encoded.size() > static_cast<qsizetype>(maximumContentBytes)) {
    return because(QStringLiteral("The document has more nodes than recovery data can hold."));
  }
  if (auto result = add(bytesOf(encoded)); !result) return because(result.error());
  if (auto result = flush(); !result) return because(result.error());
  header.tileBytes = tileBytes_;
  header.contentBytes = static_cast<std::uint32_t>(encoded.size());
  header.tilesCrc = tilesCrc_;
  header.contentsCrc = crc32(bytesOf(encoded));
  if (auto result = writeAt(header.encoded(), start_); !result) return because(result.error());
  if (FileOperations::current().syncData(file_) != 0) return because(writeFailure(errno));
  return position_;
}

}  // namespace orvanel::journal
