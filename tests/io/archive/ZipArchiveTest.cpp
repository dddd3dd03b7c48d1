#include <gtest/gtest.h>
#include <zip.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstring>

#include "io/TestBytes.h"
#include "io/archive/ZipFixture.h"
#include "io/archive/ZipReader.h"
#include "io/archive/ZipWriter.h"
#include "io/files/FaultyDisk.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::bytesOf;
using testing::ZipFixture;

ArchiveEntry entryOf(std::string path, ArchiveEntry::Method method, const Bytes& bytes,
                     std::size_t chunkBytes) {
  const std::size_t chunks = std::max<std::size_t>(1, (bytes.size() + chunkBytes - 1) / chunkBytes);
  return {std::move(path),
          method,
          bytes.size(),
          static_cast<int>(chunks),
          [&bytes, chunkBytes](int chunk, ByteBuffer& out) {
            const std::size_t first = static_cast<std::size_t>(chunk) * chunkBytes;
            const std::size_t count = std::min(chunkBytes, bytes.size() - first);
            out.resizeDiscarding(count);
            std::copy_n(bytes.data() + first, count, out.data());
          },
          {}};
}

Bytes readWithLibrary(const QString& path, const char* name) {
  int error = 0;
  zip_t* archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
  if (archive == nullptr) return {};
  zip_stat_t stat;
  zip_stat_init(&stat);
  Bytes bytes;
  if (zip_stat(archive, name, 0, &stat) == 0) {
    bytes.resize(stat.size);
    zip_file_t* file = zip_fopen(archive, name, 0);
    if (file == nullptr ||
        zip_fread(file, bytes.data(), bytes.size()) != static_cast<zip_int64_t>(stat.size)) {
      bytes.clear();
    }
    if (file != nullptr) zip_fclose(file);
  }
  zip_discard(archive);
  return bytes;
}

class ZipArchiveTest : public ::testing::Test {
 protected:
  Described<void> write(const std::vector<ArchiveEntry>& entries) const {
    auto file = AtomicFile::create(path());
    if (!file) return because(file.error());
    const auto written = writeArchive(**file, entries, {});
    if (!written) return because(written.error().reason);
    return {};
  }
  QString path() const { return directory_.filePath(QStringLiteral("archive.zip")); }

  QTemporaryDir directory_;
  const Bytes manifest_ = bytesOf("{\"some\" : \"text\"}");
  const Bytes picture_ = testing::noise(5000, 1);
  const Bytes pixels_ = testing::halfNoise(2'000'003, 2);
  const std::vector<ArchiveEntry> entries_{
      entryOf("manifest.json", ArchiveEntry::Method::deflated, manifest_, 1 << 20),
      entryOf("preview.png", ArchiveEntry::Method::stored, picture_, 1 << 20),
      entryOf("layers/A.layerdata", ArchiveEntry::Method::deflated, pixels_, 100'000)};
};

TEST_F(ZipArchiveTest, isReadByAnotherLibrary) {
  ASSERT_TRUE(write(entries_).has_value());
  EXPECT_EQ(readWithLibrary(path(), "manifest.json"), manifest_);
  EXPECT_EQ(readWithLibrary(path(), "preview.png"), picture_);
  EXPECT_EQ(readWithLibrary(path(), "layers/A.layerdata"), pixels_);
}

TEST_F(ZipArchiveTest, keepsOrderMethodsAndSizes) {
  ASSERT_TRUE(write(entries_).has_value());
  const auto reader = ZipReader::open(path().toStdString());
  ASSERT_TRUE(reader.has_value());
  ASSERT_EQ(reader->entries().size(), 3U);
  EXPECT_EQ(reader->entries()[0].path, "manifest.json");
  EXPECT_EQ(reader->entries()[1].path, "preview.png");
  EXPECT_EQ(reader->entries()[2].path, "layers/A.layerdata");
  EXPECT_TRUE(reader->entries()[0].isDeflated);
  EXPECT_FALSE(reader->entries()[1].isDeflated);
  EXPECT_TRUE(reader->entries()[2].isDeflated);
  EXPECT_EQ(reader->entries()[2].size, pixels_.size());
  EXPECT_LT(reader->entries()[2].storedSize, pixels_.size());
}

TEST_F(ZipArchiveTest, sizeOfASingleChunkIsOptional) {
  std::vector<ArchiveEntry> entries = entries_;
  entries[1].size.reset();
  ASSERT_TRUE(write(entries).has_value());
  EXPECT_EQ(readWithLibrary(path(), "preview.png"), picture_);
}

TEST_F(ZipArchiveTest, progressGrowsTowardsTheEnd) {
  auto file = AtomicFile::create(path());
  double last = 0.0;
  ASSERT_TRUE(writeArchive(**file, entries_, Progress([&](double done) {
                EXPECT_GE(done, last);
                EXPECT_LE(done, 1.0);
                last = done;
              })).has_value());
  EXPECT_GE(last, 0.9);
}

TEST_F(ZipArchiveTest, cancelledWritingLeavesNoFile) {
  const auto cancellation = std::make_shared<Cancellation>();
  const Progress progress([&](double) { cancellation->cancel(); }, cancellation);
  {
    auto file = AtomicFile::create(path());
    const auto written = writeArchive(**file, entries_, progress);
    ASSERT_FALSE(written.has_value());
    EXPECT_EQ(written.error().reason, cancelled().value());
  }
  EXPECT_FALSE(QFile::exists(path()));
}

TEST_F(ZipArchiveTest, streamsReturnTheBytes) {
  ASSERT_TRUE(write(entries_).has_value());
  const auto reader = ZipReader::open(path().toStdString());
  auto stream = reader->stream(*reader->find("layers/A.layerdata"));
  ASSERT_TRUE(stream.has_value());
  Bytes head(24);
  Bytes rest(pixels_.size() - 24);
  ASSERT_TRUE(stream->read(head).has_value());
  ASSERT_TRUE(stream->read(rest).has_value());
  ASSERT_TRUE(stream->finish().has_value());
  head.insert(head.end(), rest.begin(), rest.end());
  EXPECT_EQ(head, pixels_);
  EXPECT_FALSE(reader->find("layers/a.layerdata").has_value());
}

TEST_F(ZipArchiveTest, finishVerifiesTheUnreadRest) {
  ASSERT_TRUE(write(entries_).has_value());
  const auto reader = ZipReader::open(path().toStdString());
  for (std::size_t i = 0; i < 3; ++i) {
    auto stream = reader->stream(i);
    EXPECT_TRUE(stream->finish().has_value());
  }
}

TEST_F(ZipArchiveTest, fullDiskAtAnyPointFailsAndLeavesNoFile) {
  ASSERT_TRUE(write(entries_).has_value());
  QFile written(path());
  const std::int64_t size = written.size();
  ASSERT_TRUE(written.remove());
  for (std::int64_t capacity = 0; capacity < size; capacity += 70'001) {
    testing::FullDisk disk(capacity);
    const ScopedFileOperations scope(disk);
    const auto result = write(entries_);
    ASSERT_FALSE(result.has_value()) << capacity;
    EXPECT_TRUE(result.error().contains(QStringLiteral("No space left on device")));
    EXPECT_TRUE(QDir(directory_.path()).isEmpty());
  }
}

TEST_F(ZipArchiveTest, bytesThatChangedOnTheDiskAreNoticed) {
  // Flips one byte on its way to the disk.
  class Corrupting final : public FileOperations {
   public:
    explicit Corrupting(std::int64_t place) : place_(place) {}
    int sync(int file) override {
      std::byte byte{};
      const std::string path = "/proc/self/fd/" + std::to_string(file);
      FILE* readable = std::fopen(path.c_str(), "rb");
      std::fseek(readable, place_, SEEK_SET);
      const bool isRead = std::fread(&byte, 1, 1, readable) == 1;
      std::fclose(readable);
      byte ^= std::byte{0x10};
      return isRead && FileOperations::writeAt(file, &byte, 1, place_) == 1 ? 0 : -1;
    }

   private:
    std::int64_t place_;
  };
  ASSERT_TRUE(write(entries_).has_value());
  const std::int64_t size = QFile(path()).size();
  ASSERT_TRUE(QFile::remove(path()));
  for (std::int64_t place = 60; place < size - 300; place += 111'111) {
    Corrupting disk(place);
    const ScopedFileOperations scope(disk);
    EXPECT_FALSE(write(entries_).has_value()) << place;
  }
}

Described<ZipReader> open(const Bytes& archive) {
  return ZipReader::openBytes(archive);
}

/// Whether the archive opens and all its entries are valid.
bool isSound(const Bytes& archive) {
  const auto reader = open(archive);
  if (!reader) return false;
  for (std::size_t i = 0; i < reader->entries().size(); ++i) {
    auto stream = reader->stream(i);
    if (!stream || !stream->finish()) return false;
  }
  return true;
}

Bytes deflatedContents() {
  return testing::halfNoise(3000, 3);
}
Bytes storedContents() {
  return testing::noise(500, 4);
}

ZipFixture honest() {
  ZipFixture fixture;
  fixture.add(ZipFixture::deflated("a", deflatedContents()));
  fixture.add(ZipFixture::stored("b", storedContents()));
  return fixture;
}

TEST(HostileArchive, ATruncatedArchiveIsToldFromWhatIsNone) {
  const Bytes whole = honest().make();
  EXPECT_EQ(open(Bytes(whole.begin(), whole.begin() + std::ssize(whole) * 2 / 3)).error(),
            QStringLiteral("The file is damaged or incomplete."));
  EXPECT_EQ(open(testing::bytesOf("neither archive nor image")).error(),
            QStringLiteral("The file is not a readable archive."));
  EXPECT_EQ(open(testing::bytesOf("PK")).error(), QStringLiteral("The file is not a readable archive."));
}

TEST(HostileArchive, validArchiveIsAccepted) {
  EXPECT_TRUE(isSound(honest().make()));
}

TEST(HostileArchive, truncatedAnywhere) {
  const Bytes whole = honest().make();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_FALSE(isSound(cut)) << length;
  }
}

TEST(HostileArchive, wrongCheckSum) {
  ZipFixture fixture = honest();
  fixture.entries[0].crc ^= 1;
  EXPECT_FALSE(isSound(fixture.make()));
}

TEST(HostileArchive, lyingSizes) {
  for (const int difference : {-1, 1, 1000}) {
    ZipFixture fixture = honest();
    fixture.entries[0].size += static_cast<std::uint32_t>(difference);
    EXPECT_FALSE(isSound(fixture.make())) << difference;
    fixture = honest();
    fixture.entries[1].size += static_cast<std::uint32_t>(difference);
    EXPECT_FALSE(open(fixture.make()).has_value()) << difference;
    fixture = honest();
    fixture.entries[0].storedSize += static_cast<std::uint32_t>(difference);
    EXPECT_FALSE(isSound(fixture.make())) << difference;
  }
}

TEST(HostileArchive, sizesThatDeflateCannotReach) {
  ZipFixture fixture = honest();
  fixture.entries[0].size = 0xFFFFFFF0;
  const auto reader = open(fixture.make());
  ASSERT_FALSE(reader.has_value());
  EXPECT_TRUE(reader.error().contains(QStringLiteral("impossible")));
}

TEST(HostileArchive, overlappingEntries) {
  ZipFixture fixture;
  fixture.add(ZipFixture::deflated("a", Bytes(1'000'000)));
  for (int i = 0; i < 1000; ++i) {
    ZipFixture::Entry twin = fixture.entries[0];
    twin.path = "twin" + std::to_string(i);
    twin.sharesWith = 0;
    fixture.add(twin);
  }
  const auto reader = open(fixture.make());
  ASSERT_FALSE(reader.has_value());
  EXPECT_TRUE(reader.error().contains(QStringLiteral("larger than the archive")));
}

TEST(HostileArchive, twoEntriesWithTheSameName) {
  ZipFixture fixture = honest();
  fixture.add(fixture.entries[0]);
  EXPECT_FALSE(open(fixture.make()).has_value());
}

TEST(HostileArchive, invalidNames) {
  for (const std::string& name : {std::string(), std::string("\xC3\x28"), std::string("\xED\xA0\x80"),
                                  std::string("\xFF"), std::string(2000, 'a')}) {
    ZipFixture fixture = honest();
    fixture.entries[0].path = name;
    EXPECT_FALSE(open(fixture.make()).has_value()) << name;
  }
}

TEST(HostileArchive, aHundredThousandEntries) {
  ZipFixture fixture;
  for (int i = 0; i < 100'000; ++i) fixture.add(ZipFixture::stored(std::to_string(i), {}));
  const auto reader = open(fixture.make());
  ASSERT_FALSE(reader.has_value());
  EXPECT_TRUE(reader.error().contains(QStringLiteral("too many entries")));
}

TEST(HostileArchive, encryptedOrUnknownMethod) {
  ZipFixture fixture = honest();
  fixture.entries[0].method = 12;
  EXPECT_FALSE(open(fixture.make()).has_value());
  fixture = honest();
  fixture.entries[0].flags |= 1;
  EXPECT_FALSE(isSound(fixture.make()));
}

TEST(HostileArchive, anyCorruptByte) {
  const Bytes whole = honest().make();
  for (std::size_t place = 0; place < whole.size(); ++place) {
    for (const unsigned flip : {0x01U, 0x80U, 0xFFU}) {
      Bytes archive = whole;
      archive[place] ^= static_cast<std::byte>(flip);
      const auto reader = open(archive);
      if (!reader) continue;
      // Not every field matters, but an entry is either correct or can't be read.
      for (std::size_t i = 0; i < reader->entries().size(); ++i) {
        const auto read = reader->readAll(i, whole.size() * largestInflation);
        if (!read) continue;
        const Bytes contents(read->data(), read->data() + read->size());
        EXPECT_EQ(contents, i == 0 ? deflatedContents() : storedContents())
            << "byte " << place << ", entry " << i;
      }
    }
  }
}

}  // namespace
}  // namespace orvanel
