#include "io/archive/ZipRecords.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zip.h>

#include <QFile>
#include <QTemporaryDir>
#include <string>

#include "io/TestBytes.h"
#include "io/archive/Deflate.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::bytesOf;

/// An archive of one stored entry whose header stands at `offset`, behind a hole in the file.
void writeArchiveAt(const std::string& path, std::uint64_t offset, bool isLarge, std::size_t alignment,
                    const Bytes& data) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ASSERT_GE(file, 0);
  std::uint64_t at = offset;
  const auto put = [&](const Bytes& bytes) {
    EXPECT_EQ(::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(at)),
              static_cast<ssize_t>(bytes.size()));
    at += bytes.size();
  };
  const zipRecords::Entry entry{.path = "entry",
                                .isDeflated = false,
                                .isLarge = isLarge,
                                .modified = 1'700'000'000,
                                .crc = crc32(data),
                                .size = data.size(),
                                .storedSize = data.size(),
                                .headerOffset = offset,
                                .parts = {}};
  put(zipRecords::localHeader(entry, alignment));
  EXPECT_EQ(at % alignment, 0U);
  put(data);
  const std::uint64_t directory = at;
  put(zipRecords::directoryEntry(entry));
  put(zipRecords::directoryEnd(1, directory, at - directory));
  ::close(file);
}

Bytes readEntry(const std::string& path) {
  int error = 0;
  zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
  if (archive == nullptr) return {};
  Bytes bytes(1000);
  zip_file_t* file = zip_fopen(archive, "entry", 0);
  const zip_int64_t count = file != nullptr ? zip_fread(file, bytes.data(), bytes.size()) : 0;
  if (file != nullptr) zip_fclose(file);
  zip_discard(archive);
  bytes.resize(static_cast<std::size_t>(std::max<zip_int64_t>(count, 0)));
  return bytes;
}

class ZipRecordsTest : public ::testing::Test {
 protected:
  std::string path() const {
    return QFile::encodeName(directory_.filePath(QStringLiteral("archive.zip"))).toStdString();
  }
  QTemporaryDir directory_;
  const Bytes data_ = bytesOf("some bytes");
};

TEST_F(ZipRecordsTest, aPlainEntryIsRead) {
  writeArchiveAt(path(), 0, false, 1, data_);
  EXPECT_EQ(readEntry(path()), data_);
}

TEST_F(ZipRecordsTest, sizesOf64BitsAreRead) {
  writeArchiveAt(path(), 0, true, 1, data_);
  EXPECT_EQ(readEntry(path()), data_);
}

TEST_F(ZipRecordsTest, offsetsBeyondFourGigabytesAreRead) {
  for (const bool isLarge : {false, true}) {
    writeArchiveAt(path(), std::uint64_t{5} << 30U, isLarge, 1, data_);
    EXPECT_EQ(readEntry(path()), data_);
  }
}

TEST_F(ZipRecordsTest, dataBeginsOnTheGrid) {
  // Every distance to the grid, those too short for a field among them.
  for (std::uint64_t offset = 0; offset < 64; ++offset) {
    writeArchiveAt(path(), offset, false, 64, data_);
    EXPECT_EQ(readEntry(path()), data_) << offset;
  }
}

TEST(ZipRecords, headersKeepTheirLengthWhateverTheSizes) {
  zipRecords::Entry entry{.path = "layers/A.layerdata", .isLarge = true, .headerOffset = 77, .parts = {}};
  const std::size_t before = zipRecords::localHeader(entry, 4096).size();
  entry.crc = 0xFFFFFFFFU;
  entry.size = std::uint64_t{7} << 40U;
  entry.storedSize = entry.size + 5;
  EXPECT_EQ(zipRecords::localHeader(entry, 4096).size(), before);
}

}  // namespace
}  // namespace orvanel
