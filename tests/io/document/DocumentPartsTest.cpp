// Parallel loading of a single layer.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <numeric>

#include "io/document/DocumentCheck.h"
#include "io/document/DocumentFixture.h"
#include "io/document/DocumentReader.h"

namespace orvanel {
namespace {

using testing::contentsOf;
using testing::firstDifference;

class DocumentParts : public ::testing::Test {
 protected:
  static constexpr int width = 2100;
  static constexpr int height = 2900;

  DocumentParts() {
    const auto layer =
        std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Only")},
                                testing::scribbled(layerPixelFormat(ColorMode::rgb16), width, height, 5));
    document_ = Document::create({.name = QStringLiteral("Large"),
                                  .width = width,
                                  .height = height,
                                  .colorMode = ColorMode::rgb16,
                                  .rootNodes = {layer},
                                  .selectedNodeID = layer->id},
                                 MetalContext::shared());
    EXPECT_TRUE(DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()).has_value());
    bytes_ = contentsOf(path());
  }

  QString path() const { return folder_.filePath(QStringLiteral("large.tessel")); }

  FileResult<DocumentPtr> loadChanged() const {
    QFile file(path());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes_);
    file.close();
    return DocumentIO::loadSynchronously(path(), MetalContext::shared());
  }

  /// The position of the sizes of the layer's parts in the file.
  qsizetype partsAt() const {
    const qsizetype layer = bytes_.lastIndexOf(".layerdata");
    const qsizetype field = bytes_.indexOf(QByteArray("\x50\x56", 2), layer);
    EXPECT_GT(field, layer);
    return field + 4;
  }

  DocumentPtr document_;
  QByteArray bytes_;

 private:
  QTemporaryDir folder_;
};

TEST_F(DocumentParts, layersListTheirParts) {
  const auto reader = ZipReader::open(path().toStdString());
  ASSERT_TRUE(reader.has_value());
  const ArchiveEntryInfo& entry = reader->entries().back();
  const auto& parts = reader->parts(reader->entries().size() - 1);
  ASSERT_GT(parts.size(), 40U);
  const auto sum =
      std::accumulate(parts.begin(), parts.end(), std::uint64_t{0},
                      [](std::uint64_t bytes, const EntryPart& part) { return bytes + part.size; });
  EXPECT_EQ(sum, entry.size);
  // A part ends at the end of every row of tiles.
  constexpr std::uint64_t tileRowBytes = std::uint64_t{width} * 8 * tileSide;
  std::uint64_t offset = 0;
  std::uint64_t rowsMet = 0;
  for (const EntryPart& part : parts) {
    offset += part.size;
    if ((offset - 24) % tileRowBytes == 0) ++rowsMet;
  }
  EXPECT_EQ(rowsMet, std::uint64_t{height / tileSide});
}

TEST_F(DocumentParts, areReadInParallelAsSequentially) {
  const auto inPieces = loadChanged();
  ASSERT_TRUE(inPieces.has_value());
  EXPECT_EQ(firstDifference(*document_, **inPieces), QString());
  bytes_[partsAt() - 4] = '\x51';  // another program's field, from now on
  const auto inOne = loadChanged();
  ASSERT_TRUE(inOne.has_value());
  EXPECT_EQ(firstDifference(*document_, **inOne), QString());
}

TEST_F(DocumentParts, inconsistentSizesAreIgnored) {
  const qsizetype at = partsAt();
  bytes_[at] = static_cast<char>(bytes_[at] + 1);
  const auto loaded = loadChanged();
  ASSERT_TRUE(loaded.has_value());
  EXPECT_EQ(firstDifference(*document_, **loaded), QString());
}

TEST_F(DocumentParts, damagedSizesNeverGiveOtherPixels) {
  const qsizetype at = partsAt();
  for (qsizetype part = 0; part < 20; ++part) {
    const qsizetype storedSize = at + part * 8;
    bytes_[storedSize] = static_cast<char>(bytes_[storedSize] ^ 1);
  }
  const auto loaded = loadChanged();
  // Whether or not the sums still match, what opens must be what was saved.
  EXPECT_TRUE(!loaded || firstDifference(*document_, **loaded).isEmpty());
}

TEST_F(DocumentParts, exchangedSizesAreRejected) {
  const qsizetype at = partsAt();
  // Exchange the compressed sizes of two distant parts: the sums still match, but all parts between are
  // misplaced.
  const QByteArray first = bytes_.sliced(at, 4);
  constexpr qsizetype other = 44;
  const QByteArray second = bytes_.sliced(at + other * 8, 4);
  ASSERT_NE(first, second);
  bytes_.replace(at, 4, second);
  bytes_.replace(at + other * 8, 4, first);
  EXPECT_FALSE(loadChanged().has_value());
  const auto check = checkDocument(path(), MetalContext::shared());
  ASSERT_TRUE(check.has_value());
  EXPECT_FALSE(check->isWhole()) << "what can't be opened";
}

TEST_F(DocumentParts, aChangedByteIsDetected) {
  bytes_[bytes_.size() / 2] = static_cast<char>(bytes_[bytes_.size() / 2] ^ 0x10);
  EXPECT_FALSE(loadChanged().has_value());
}

}  // namespace
}  // namespace orvanel
