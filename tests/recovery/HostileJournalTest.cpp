// Journals that no program of ours would write. Each is refused, or read up to its last good record.
#include <QBuffer>
#include <cstring>
#include <functional>
#include <random>

#include "io/archive/Deflate.h"
#include "io/document/Manifest.h"
#include "io/document/SaveSnapshot.h"
#include "model/ModelSupport.h"
#include "raster/MemoryBudget.h"
#include "recovery/RecordWriter.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using journal::RecordContents;
using journal::RecordHeader;
using journal::TileSource;

struct HostileRecord {
  RecordHeader header{.fileMark = 7};
  RecordContents contents;
  QByteArray tiles;
};

QByteArray bytesOf(const std::vector<HostileRecord>& records) {
  QByteArray journal;
  for (const HostileRecord& record : records) {
    const auto crc = [](const QByteArray& bytes) {
      return crc32(std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size()))));
    };
    const QByteArray contents = record.contents.encoded();
    RecordHeader header = record.header;
    header.tileBytes = static_cast<std::uint64_t>(record.tiles.size());
    header.contentBytes = static_cast<std::uint32_t>(contents.size());
    header.tilesCrc = crc(record.tiles);
    header.contentsCrc = crc(contents);
    const auto encoded = header.encoded();
    journal.append(reinterpret_cast<const char*>(encoded.data()), encoded.size());
    journal.append(record.tiles);
    journal.append(contents);
  }
  return journal;
}

Described<RestoredContents> restore(const QByteArray& journal) {
  const auto bytes = std::as_bytes(std::span(journal.constData(), static_cast<std::size_t>(journal.size())));
  return restoreContents(JournalInput::ofBytes(bytes), MetalContext::shared(),
                         [](std::uint32_t) { return std::string(); }, {});
}

/// A base of which one chunk holds everything.
journal::BaseSurface smallBase() {
  return {"layers/x", PixelFormat::rgba8Unorm, 200, 100, {{.storedSize = 100, .size = 24 + 200 * 100 * 4}}};
}

class HostileJournalTest : public ::testing::Test {
 protected:
  HostileJournalTest() : document(test::makeDocument(200, 100)) {
    const Layer& layer = *document->activeLayer();
    first.contents.canvasWidth = 200;
    first.contents.canvasHeight = 100;
    first.contents.manifest = encodeManifest(*describeDocument(*document));
    first.contents.surfaces.push_back(
        {layerEntryPath(uuidText(layer.id)).toStdString(), layer.texture.value()->format(), true, {}});
    later.header.kind = RecordHeader::Kind::change;
    later.header.sequence = 1;
    later.contents = first.contents;
    later.contents.surfaces[0].isNew = false;
    later.contents.name = QStringLiteral("Later");
  }

  /// A journal of this one record isn't read.
  void expectRefused(const std::function<void(HostileRecord&)>& change, const char* what) const {
    HostileRecord hostile = first;
    change(hostile);
    const auto contents = restore(bytesOf({hostile}));
    ASSERT_FALSE(contents.has_value()) << what;
    EXPECT_FALSE(contents.error().isEmpty());
  }
  /// As the second record it doesn't count.
  void expectIgnored(const std::function<void(HostileRecord&)>& change, const char* what) const {
    HostileRecord hostile = later;
    change(hostile);
    const QByteArray journal = bytesOf({first, hostile});
    const auto state = readJournalState(JournalInput::ofBytes(std::as_bytes(std::span(
                                            journal.constData(), static_cast<std::size_t>(journal.size())))),
                                        TileCheck::all);
    ASSERT_TRUE(state.has_value()) << what;
    EXPECT_EQ(state->records, 1U) << what;
  }

  DocumentPtr document;
  HostileRecord first;
  HostileRecord later;
};

TEST_F(HostileJournalTest, isReadAsLongAsItIsHonest) {
  EXPECT_TRUE(restore(bytesOf({first})).has_value());
  const auto contents = restore(bytesOf({first, later}));
  ASSERT_TRUE(contents.has_value());
  EXPECT_EQ(contents->plan.nodes.size(), 1U);
}

TEST_F(HostileJournalTest, refusesWhatCantBeADocument) {
  EXPECT_FALSE(restore({}).has_value());
  EXPECT_FALSE(restore(QByteArray(1000, 'x')).has_value());
  expectRefused([](HostileRecord& r) { r.contents.canvasWidth = 16385; }, "wider than any canvas");
  expectRefused([](HostileRecord& r) { r.contents.canvasHeight = 0; }, "no height");
  expectRefused([](HostileRecord& r) { r.contents.canvasHeight = 5000; }, "another canvas than its manifest");
  expectRefused([](HostileRecord& r) { r.contents.manifest = "{}"; }, "no manifest");
  expectRefused([](HostileRecord& r) { r.contents.manifest.clear(); }, "none at all");
  expectRefused([](HostileRecord& r) { r.contents.surfaces.clear(); }, "a layer without pixels");
  expectRefused([](HostileRecord& r) { r.contents.surfaces[0].format = PixelFormat::rgba16Float; },
                "pixels of another mode");
  expectRefused([](HostileRecord& r) { r.contents.surfaces[0].format = PixelFormat::rgba32Float; },
                "pixels of no mode");
  expectRefused([](HostileRecord& r) { r.contents.surfaces[0].isNew = false; }, "the rest of nothing");
  expectRefused([](HostileRecord& r) { r.header.kind = RecordHeader::Kind::change; }, "a change of nothing");
  expectRefused([](HostileRecord& r) { r.header.sequence = 1; }, "no beginning");
  expectRefused([](HostileRecord& r) { r.contents.surfaces[0].path = std::string(5000, 'x'); },
                "a long path");
}

TEST_F(HostileJournalTest, refusesTilesThatArentThere) {
  const auto run = [](std::uint32_t at, std::uint32_t count, TileSource source) {
    return [=](HostileRecord& r) { r.contents.surfaces[0].runs = {{at, count, source}}; };
  };
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  using Kind = TileSource::Kind;
  expectRefused(run(1, 2, {Kind::uniform, 0, 0}), "beyond the canvas");
  expectRefused(run(0xFFFFFFFF, 2, {Kind::uniform, 0, 0}), "a place that wraps around");
  expectRefused(run(0, 0, {Kind::uniform, 0, 0}), "no tiles");
  expectRefused(run(0, 1, {Kind::stored, 0, 0}), "a tile that isn't stored");
  expectRefused(run(0, 2, {Kind::stored, 0, most}), "a number that wraps around");
  expectRefused(run(0, 1, {Kind::base, 0, 0}), "a file that isn't named");
  expectRefused(run(0, 1, {static_cast<Kind>(3), 0, 0}), "another kind");
  expectRefused(
      [](HostileRecord& r) {
        r.contents.base = journal::BaseFile{"/nowhere", {}, 0, {smallBase()}};
        r.contents.surfaces[0].runs = {{0, 1, {Kind::base, 1, 0}}};
      },
      "a surface that the file doesn't have");
  const auto withBase = [](const std::function<void(journal::BaseSurface&)>& change) {
    return [=](HostileRecord& r) {
      journal::BaseSurface surface = smallBase();
      change(surface);
      r.contents.base = journal::BaseFile{"/nowhere", {}, 0, {surface}};
      r.contents.surfaces[0].runs = {{0, 1, {Kind::base, 0, 0}}};
    };
  };
  using Base = journal::BaseSurface;
  expectRefused(withBase([](Base& base) { base.chunks[0].size += 1; }), "chunks of more than the surface");
  expectRefused(withBase([](Base& base) { base.chunks.clear(); }), "no chunks");
  expectRefused(withBase([](Base& base) { base.width = 0; }), "no width");
  expectRefused(withBase([](Base& base) { base.height = 16385; }), "higher than any canvas");
  expectRefused(withBase([](Base& base) { base.format = PixelFormat::rgba32Float; }), "a format of no layer");
  expectRefused(withBase([](Base& base) {
                  base.format = PixelFormat::r16Float;
                  base.chunks[0].size = 24 + 200 * 100 * 2;
                }),
                "a mask's tiles in a layer");
  expectRefused(withBase([](Base& base) {
                  base.width = base.height = 16384;
                  base.chunks.assign(64, {.storedSize = 0xFFFFFFFF, .size = 0xFFFFFFFF});
                }),
                "chunks that no memory holds");
  expectRefused(
      [](HostileRecord& r) {
        r.contents.surfaces[0].runs = {{1, 1, {Kind::uniform, 0, 0}}, {0, 1, {Kind::uniform, 0, 0}}};
      },
      "runs out of order");
}

TEST_F(HostileJournalTest, refusesTilesThatArentWhatTheySay) {
  const auto tile = [](std::uint8_t pixelBytes, const QByteArray& bytes) {
    return [=](HostileRecord& r) {
      r.tiles = bytes;
      r.contents.tiles = {{static_cast<std::uint32_t>(bytes.size()), pixelBytes}};
      r.contents.surfaces[0].runs = {{0, 1, {TileSource::Kind::stored, 0, 0}}};
    };
  };
  expectRefused(tile(4, "garbage"), "no compressed bytes");
  expectRefused(tile(4, {}), "no bytes");
  expectRefused(tile(8, QByteArray(300, '\0')), "tiles of another format");
  expectRefused(tile(3, "garbage"), "pixels of three bytes");
  expectRefused(
      [&](HostileRecord& r) {
        tile(4, "garbage")(r);
        r.contents.tiles[0].bytes = 0xFFFFFFFF;
      },
      "more bytes than there are");
}

TEST_F(HostileJournalTest, ignoresRecordsThatDontContinue) {
  expectIgnored([](HostileRecord& r) { r.header.fileMark = 8; }, "of another journal");
  expectIgnored([](HostileRecord& r) { r.header.sequence = 0; }, "the same again");
  expectIgnored([](HostileRecord& r) { r.header.sequence = 2; }, "one left out");
  expectIgnored([](HostileRecord& r) { r.header.kind = RecordHeader::Kind::whole; }, "another beginning");
  expectIgnored([](HostileRecord& r) { r.contents.base.emplace(); }, "another file");
  expectIgnored([](HostileRecord& r) { r.contents.surfaces[0].path = "layers/other"; }, "an unknown surface");
  expectIgnored([](HostileRecord& r) { r.contents.canvasWidth = 500; }, "another size for the same surface");
}

TEST_F(HostileJournalTest, refusesWhatMemoryDoesntHold) {
  const ScopedMemoryLimit limit(std::uint64_t{8} << 20U);
  expectRefused(
      [](HostileRecord& r) {
        r.contents.canvasWidth = r.contents.canvasHeight = 16384;
        for (int i = 0; i < 1000; ++i) {
          r.contents.surfaces.push_back({"layers/" + std::to_string(i), PixelFormat::rgba8Unorm, true, {}});
        }
      },
      "many empty surfaces");
}

TEST_F(HostileJournalTest, thumbnailsOfOtherSizesAreNone) {
  QImage large(400, 100, QImage::Format_RGB32);
  QBuffer buffer(&first.contents.thumbnail);
  ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
  ASSERT_TRUE(large.save(&buffer, "PNG"));
  const QByteArray journal = bytesOf({first});
  const auto state = readJournalState(JournalInput::ofBytes(std::as_bytes(std::span(
                                          journal.constData(), static_cast<std::size_t>(journal.size())))),
                                      TileCheck::none);
  ASSERT_TRUE(state.has_value());
  EXPECT_TRUE(thumbnailOf(*state).isNull());
}

TEST_F(HostileJournalTest, survivesChangedBytesWhoseSumsAreMended) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    HostileRecord record = first;
    QByteArray contents = record.contents.encoded();
    for (int change = 0; change < 1 + round % 4; ++change) {
      const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(contents.size()));
      contents[at] = static_cast<char>(random());
    }
    const auto bytes =
        std::as_bytes(std::span(contents.constData(), static_cast<std::size_t>(contents.size())));
    static_cast<void>(RecordContents::decode(bytes));
  }
}

}  // namespace
}  // namespace orvanel
