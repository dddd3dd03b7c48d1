#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <string>

#include "io/archive/ZipFixture.h"
#include "io/document/DocumentCheck.h"
#include "io/document/DocumentFixture.h"
#include "io/document/DocumentReader.h"
#include "io/document/LayerData.h"
#include "io/document/TextureLoading.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::ZipFixture;

constexpr const char* layerID = "11111111-2222-3333-4444-55555555AAAA";

std::string layerNode(const std::string& id = layerID, const std::string& extra = "") {
  return R"({"blendMode":0,"id":")" + id + R"(","isLocked":false,"isVisible":true,"name":"L","opacity":1,)" +
         extra + R"("type":"layer"})";
}

std::string manifest(const std::string& nodes,
                     const std::string& canvas = R"("canvasWidth":3,"canvasHeight":2)", int colorMode = 2,
                     const std::string& extra = "") {
  return R"({"formatVersion":3,"generator":"x","metadata":{"createdAt":"","modifiedAt":""},"document":{"name":"n",)" +
         canvas + R"(,"colorMode":)" + std::to_string(colorMode) + extra + R"(},"nodes":[)" + nodes + "]}";
}

Bytes layerdata(const LayerdataHeader& header, std::size_t payload) {
  const auto start = header.encoded();
  Bytes bytes(start.begin(), start.end());
  const Bytes pixels = testing::noise(payload, 1);
  bytes.insert(bytes.end(), pixels.begin(), pixels.end());
  return bytes;
}

const LayerdataHeader smallHeader = LayerdataHeader::of(PixelFormat::rgba8Unorm, 3, 2);

ZipFixture fixture(const std::string& manifestText, const Bytes& layer = layerdata(smallHeader, 24)) {
  ZipFixture made;
  made.add(ZipFixture::deflated("manifest.json", testing::bytesOf(manifestText)));
  made.add(ZipFixture::deflated(std::string("layers/") + layerID + ".layerdata", layer));
  return made;
}

Described<DocumentPtr> load(const Bytes& archive) {
  const auto opened = openDocument(std::span<const std::byte>(archive), MetalContext::shared());
  if (!opened) return because(opened.error());
  DocumentPtr document = buildDocument(*opened, MetalContext::shared());
  if (auto filled = fillTextures(*opened, {}); !filled) return because(filled.error());
  if (auto judged = judgeShownMemory(*opened); !judged) return because(judged.error());
  return document;
}

Described<DocumentPtr> load(const ZipFixture& archive) {
  return load(archive.make());
}

std::string failureOf(const ZipFixture& archive) {
  const auto result = load(archive);
  return result.has_value() ? std::string() : result.error().toStdString();
}

TEST(DocumentReader, readsAFileOfAnotherWriter) {
  const auto document = load(fixture(manifest(layerNode())));
  ASSERT_TRUE(document.has_value()) << document.error().toStdString();
  const auto layer = (*document)->rootNodes.value()[0].layer();
  const Bytes pixels = testing::noise(24, 1);
  Bytes read(24);
  layer->texture.value()->readRect({0, 0, 3, 2}, read.data(), 12);
  EXPECT_EQ(read, pixels);
  EXPECT_EQ((*document)->selectedNodeID.value(), layer->id);
}

TEST(DocumentReader, orderOfEntriesDoesNotMatter) {
  ZipFixture archive = fixture(manifest(layerNode()));
  std::swap(archive.entries[0], archive.entries[1]);
  EXPECT_EQ(failureOf(archive), "");
}

TEST(DocumentReader, unknownEnumeratorsFallBackToDefaults) {
  const std::string node =
      R"({"blendMode":99,"id":"11111111-2222-3333-4444-55555555AAAA","isLocked":false,"isVisible":true,"name":"L",)"
      R"("opacity":1,"type":"layer"})";
  LayerdataHeader header = LayerdataHeader::of(PixelFormat::rgba16Float, 3, 2);
  header.pixelFormat = 77;
  const auto document =
      load(fixture(manifest(node, R"("canvasWidth":3,"canvasHeight":2)", 9), layerdata(header, 48)));
  ASSERT_TRUE(document.has_value()) << document.error().toStdString();
  EXPECT_EQ((*document)->colorMode.value(), ColorMode::rgb16);
  EXPECT_EQ((*document)->rootNodes.value()[0].blendMode().value(), BlendMode::normal);
}

TEST(DocumentReader, nodesOfUnknownTypeAreSkippedWithTheirChildren) {
  const std::string inner = layerNode("22222222-2222-3333-4444-55555555AAAA");
  const auto folder = [&](const std::string& id, const std::string& type) {
    return R"({"blendMode":0,"id":")" + id +
           R"(","isLocked":false,"isVisible":true,"name":"F","opacity":1,"type":")" + type +
           R"(","children":[)" + inner + "]}";
  };
  const std::string goodID = "33333333-2222-3333-4444-55555555AAAA";
  for (const std::string& node : {folder("no uuid", "folder"), folder(goodID, "group"), layerNode("")}) {
    const auto document = load(fixture(manifest(node + "," + layerNode())));
    ASSERT_TRUE(document.has_value()) << document.error().toStdString();
    EXPECT_EQ((*document)->rootNodes.value().size(), 1U);
  }
  const auto document = load(fixture(manifest(folder(goodID, "folder"))));
  ASSERT_TRUE(document.has_value());
  const auto found = (*document)->rootNodes.value()[0].folder();
  EXPECT_TRUE(found->isExpanded.value());
  EXPECT_EQ(found->children.value().size(), 1U);
}

/// The path of a file with these bytes.
QString written(const ZipFixture& archive, const QTemporaryDir& place) {
  QFile file(place.filePath(QStringLiteral("document.tessel")));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  const Bytes bytes = archive.make();
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
  return file.fileName();
}

TEST(DocumentReader, aCheckTellsOfTheNodesThatAreSkipped) {
  const auto folder = [&](const std::string& name, const std::string& id, const std::string& type,
                          const std::string& children) {
    return R"({"blendMode":0,"id":")" + id + R"(","isLocked":false,"isVisible":true,"name":")" + name +
           R"(","opacity":1,"type":")" + type + R"(","children":[)" + children + "]}";
  };
  const std::string goodID = "33333333-2222-3333-4444-55555555AAAA";
  const std::string nodes =
      folder("Lost", "no uuid", "folder", folder("Inner", goodID, "folder", layerNode("whatever"))) + "," +
      folder("Kept", goodID, "folder", folder("Group", goodID, "group", "")) + "," + layerNode();
  const QTemporaryDir place;
  const auto check = checkDocument(written(fixture(manifest(nodes)), place), MetalContext::shared());
  ASSERT_TRUE(check.has_value());
  EXPECT_FALSE(check->isWhole());
  QStringList dropped;
  for (const DroppedNode& node : check->dropped) dropped << node.name << node.reason;
  const QString inside = QStringLiteral("It is inside a layer, or inside a node that is left out.");
  EXPECT_EQ(dropped, (QStringList{QStringLiteral("Lost"), QStringLiteral("Its id is not valid."),
                                  QStringLiteral("Inner"), inside, QStringLiteral("L"), inside,
                                  QStringLiteral("Group"), QStringLiteral("Its type is unknown.")}));
}

TEST(DocumentReader, aCheckTellsOfAMaskThatIsLeftOut) {
  ZipFixture archive = fixture(manifest(layerNode(layerID, R"("mask":{"id":"no uuid","isEnabled":true},)")));
  archive.add(ZipFixture::deflated(std::string("layers/") + layerID + ".mask.layerdata",
                                   layerdata(LayerdataHeader::of(PixelFormat::r16Float, 3, 2), 12)));
  const QTemporaryDir place;
  const auto check = checkDocument(written(archive, place), MetalContext::shared());
  ASSERT_TRUE(check.has_value());
  EXPECT_FALSE(check->isWhole());
  ASSERT_EQ(check->dropped.size(), 1U);
  EXPECT_EQ(check->dropped[0].name, QStringLiteral("L"));
  EXPECT_EQ(check->dropped[0].reason, QStringLiteral("The id of its mask is not valid."));
}

TEST(DocumentReader, theNilUuidIsValid) {
  const std::string zeros = "00000000-0000-0000-0000-000000000000";
  const std::string folder = R"({"blendMode":0,"id":")" + zeros +
                             R"(","isLocked":false,"isVisible":true,"name":"F","opacity":1,"type":"folder",)"
                             R"("children":[)" +
                             layerNode(layerID, R"("mask":{"id":")" + zeros + R"(","isEnabled":true},)") +
                             "]}";
  const std::string canvas = R"("canvasWidth":3,"canvasHeight":2)";
  ZipFixture archive = fixture(manifest(folder, canvas, 2, R"(,"selectedNodeID":")" + zeros + "\""));
  archive.add(ZipFixture::deflated(std::string("layers/") + layerID + ".mask.layerdata",
                                   layerdata(LayerdataHeader::of(PixelFormat::r16Float, 3, 2), 12)));
  const auto document = load(archive);
  ASSERT_TRUE(document.has_value()) << document.error().toStdString();
  ASSERT_EQ((*document)->rootNodes.value().size(), 1U);
  const LayerNode root = (*document)->rootNodes.value()[0];
  EXPECT_EQ(uuidText(root.id()).toStdString(), zeros);
  ASSERT_EQ(root.folder()->children.value().size(), 1U);
  EXPECT_NE(root.folder()->children.value()[0].layer()->mask.value(), nullptr);
  EXPECT_EQ((*document)->activeNode(), root);
  EXPECT_NE(failureOf(fixture(manifest(layerNode(zeros) + "," + layerNode(zeros)))), "");
}

TEST(DocumentReader, missingEntriesGiveEmptyLayersAndNoMasks) {
  ZipFixture archive = fixture(
      manifest(layerNode(layerID, R"("mask":{"id":")" + std::string(layerID) + R"(","isEnabled":true},)")));
  archive.entries.pop_back();
  const auto document = load(archive);
  ASSERT_TRUE(document.has_value());
  const auto layer = (*document)->rootNodes.value()[0].layer();
  ASSERT_NE(layer->texture.value(), nullptr);
  EXPECT_EQ(layer->texture.value()->pixelAt(0, 0), 0U);
  EXPECT_EQ(layer->mask.value(), nullptr);
}

TEST(DocumentReader, layerWithoutPixelsKeepsItsMask) {
  const std::string node = layerNode(
      layerID, R"("hasPixelData":false,"mask":{"id":")" + std::string(layerID) + R"(","isEnabled":true},)");
  ZipFixture archive = fixture(manifest(node));
  archive.add(ZipFixture::deflated(std::string("layers/") + layerID + ".mask.layerdata",
                                   layerdata(LayerdataHeader::of(PixelFormat::r16Float, 3, 2), 12)));
  const auto document = load(archive);
  ASSERT_TRUE(document.has_value()) << document.error().toStdString();
  const auto layer = (*document)->rootNodes.value()[0].layer();
  EXPECT_EQ(layer->texture.value(), nullptr);
  ASSERT_NE(layer->mask.value(), nullptr);
  EXPECT_TRUE(layer->mask.value()->isEnabled.value());
}

TEST(DocumentReader, maskWithoutAUuidIsDropped) {
  ZipFixture archive = fixture(manifest(layerNode(layerID, R"("mask":{"id":"M","isEnabled":true},)")));
  archive.add(ZipFixture::deflated(std::string("layers/") + layerID + ".mask.layerdata",
                                   layerdata(LayerdataHeader::of(PixelFormat::r16Float, 3, 2), 12)));
  const auto document = load(archive);
  ASSERT_TRUE(document.has_value());
  EXPECT_EQ((*document)->rootNodes.value()[0].layer()->mask.value(), nullptr);
}

TEST(DocumentReader, selectionIsKept) {
  const std::string canvas = R"("canvasWidth":3,"canvasHeight":2)";
  const std::string strange = "99999999-2222-3333-4444-55555555AAAA";
  auto document = load(fixture(manifest(layerNode(), canvas, 2, R"(,"selectedNodeID":")" + strange + "\"")));
  EXPECT_EQ((*document)->selectedNodeID.value(), uuidFromText(QString::fromStdString(strange)));
  EXPECT_FALSE((*document)->activeNode().has_value());
  document = load(fixture(manifest(layerNode(), canvas, 2, R"(,"selectedNodeID":"nobody")")));
  EXPECT_FALSE((*document)->selectedNodeID.value().has_value());
}

TEST(DocumentReader, anEmptyTreeHasNothingSelectedAndNothingToFill) {
  ZipFixture archive;
  archive.add(ZipFixture::deflated("manifest.json", testing::bytesOf(manifest(""))));
  const Bytes bytes = archive.make();
  const auto opened = openDocument(std::span<const std::byte>(bytes), MetalContext::shared());
  ASSERT_TRUE(opened.has_value()) << opened.error().toStdString();
  EXPECT_TRUE(opened->requests.empty());
  const auto document = load(bytes);
  ASSERT_TRUE(document.has_value()) << document.error().toStdString();
  EXPECT_TRUE((*document)->rootNodes.value().empty());
  EXPECT_EQ((*document)->selectedNodeID.value(), std::nullopt);
}

TEST(DocumentReader, invalidColorsKeepTheDefault) {
  const std::string canvas = R"("canvasWidth":3,"canvasHeight":2)";
  const auto foreground = [&](const std::string& text) {
    const auto document =
        load(fixture(manifest(layerNode(), canvas, 2, R"(,"foregroundColor":")" + text + "\"")));
    return (*document)->foregroundColor.value().hexText();
  };
  EXPECT_EQ(foreground("12ab34"), QStringLiteral("12AB34"));
  EXPECT_EQ(foreground("+12345"), QStringLiteral("012345"));
  EXPECT_EQ(foreground("12345"), QStringLiteral("000000"));
  EXPECT_EQ(foreground("#12345"), QStringLiteral("000000"));
  EXPECT_EQ(foreground("gggggg"), QStringLiteral("000000"));
}

TEST(HostileDocument, noManifest) {
  ZipFixture archive = fixture(manifest(layerNode()));
  archive.entries.erase(archive.entries.begin());
  EXPECT_NE(failureOf(archive), "");
  archive.add(ZipFixture::stored("manifest.json", {}));
  EXPECT_NE(failureOf(archive), "");
}

TEST(HostileDocument, headerThatDisagreesWithTheDocument) {
  const auto with = [](auto&& change, std::size_t payload) {
    LayerdataHeader header = smallHeader;
    change(header);
    return failureOf(fixture(manifest(layerNode()), layerdata(header, payload)));
  };
  EXPECT_NE(with([](LayerdataHeader& header) { header.magic ^= 1; }, 24), "");
  EXPECT_NE(with([](LayerdataHeader& header) { header.width = 2; }, 16), "");
  EXPECT_NE(with([](LayerdataHeader& header) { header.height = 3; }, 36), "");
  EXPECT_NE(with([](LayerdataHeader& header) { header.pixelFormat = 3; }, 48), "");
  EXPECT_NE(with([](LayerdataHeader& header) { header.pixelFormat = 4; }, 12), "");
  EXPECT_NE(with([](LayerdataHeader& header) { header.width = header.height = 0xFFFFFFFF; }, 24), "");
  EXPECT_EQ(with([](LayerdataHeader& header) { header.flags = 9; }, 24), "");
}

TEST(HostileDocument, payloadOfAnotherLength) {
  for (const std::size_t length : {0U, 1U, 23U, 25U, 1000U}) {
    EXPECT_NE(failureOf(fixture(manifest(layerNode()), layerdata(smallHeader, length))), "") << length;
  }
  for (std::size_t length = 0; length < 24; ++length) {
    EXPECT_NE(failureOf(fixture(manifest(layerNode()), testing::noise(length, 2))), "") << length;
  }
}

TEST(HostileDocument, canvasOfAbsurdSize) {
  for (const char* canvas :
       {R"("canvasWidth":0,"canvasHeight":2)", R"("canvasWidth":-3,"canvasHeight":2)",
        R"("canvasWidth":16385,"canvasHeight":2)", R"("canvasWidth":3,"canvasHeight":4294967298)",
        R"("canvasWidth":1e15,"canvasHeight":1e15)"}) {
    EXPECT_NE(failureOf(fixture(manifest(layerNode(), canvas))), "") << canvas;
  }
}

TEST(HostileDocument, twoNodesWithTheSameId) {
  EXPECT_NE(failureOf(fixture(manifest(layerNode() + "," + layerNode()))), "");
  const std::string lower = "11111111-2222-3333-4444-55555555aaaa";
  EXPECT_NE(failureOf(fixture(manifest(layerNode() + "," + layerNode(lower)))), "");
}

TEST(HostileDocument, wrongCheckSumAnywhere) {
  for (const std::size_t index : {0U, 1U}) {
    ZipFixture archive = fixture(manifest(layerNode()));
    archive.entries[index].crc ^= 0x100;
    EXPECT_NE(failureOf(archive), "");
  }
  ZipFixture archive = fixture(manifest(layerNode()));
  archive.add(ZipFixture::stored("preview.png", testing::noise(100, 3)));
  EXPECT_EQ(failureOf(archive), "");
  archive.entries.back().crc ^= 1;
  EXPECT_NE(failureOf(archive), "");
}

TEST(HostileDocument, truncatedAnywhere) {
  const Bytes whole = fixture(manifest(layerNode())).make();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_FALSE(load(cut).has_value()) << length;
  }
}

TEST(HostileDocument, opacityThatIsNotANumber) {
  for (const char* opacity : {"NaN", "nan", "Infinity", "1e999", "\"1\"", "null"}) {
    std::string node = layerNode();
    node.replace(node.find("\"opacity\":1"), 11, std::string("\"opacity\":") + opacity);
    EXPECT_NE(failureOf(fixture(manifest(node))), "") << opacity;
  }
}

TEST(HostileDocument, opacityIsClamped) {
  std::string node = layerNode();
  node.replace(node.find("\"opacity\":1"), 11, "\"opacity\":7");
  EXPECT_EQ((*load(fixture(manifest(node))))->rootNodes.value()[0].opacity().value(), 1.0F);
}

TEST(HostileDocument, endlessNesting) {
  std::string nodes;
  for (int i = 0; i < 100'000; ++i) {
    nodes +=
        R"({"blendMode":0,"id":"x","isLocked":false,"isVisible":true,"name":"f","opacity":1,"type":"folder",)"
        R"("children":[)";
  }
  EXPECT_NE(failureOf(fixture(manifest(nodes))), "");
  EXPECT_NE(failureOf(fixture(std::string(100'000, '['))), "");
  EXPECT_NE(failureOf(fixture(manifest(
                layerNode(), R"("canvasWidth":3,"canvasHeight":2,"x":)" + std::string(100'000, '[')))),
            "");
}

TEST(HostileDocument, aDeepTreeIsLoadedCompletely) {
  auto folder = std::make_shared<LayerFolder>(QStringLiteral("Core"));
  for (int i = 1; i < 1000; ++i) {
    folder = std::make_shared<LayerFolder>(NodeValues{.name = QStringLiteral("F")}, LayerNodeList{folder});
  }
  const DocumentPtr document = Document::create({.name = QStringLiteral("Deep"),
                                                 .width = 4,
                                                 .height = 4,
                                                 .rootNodes = {folder},
                                                 .selectedNodeID = folder->id},
                                                MetalContext::shared());
  const QTemporaryDir directory;
  const QString path = directory.filePath(QStringLiteral("deep.tessel"));
  ASSERT_TRUE(DocumentIO::saveSynchronously(document, path, MetalContext::shared()).has_value());
  const auto loaded = DocumentIO::loadSynchronously(path, MetalContext::shared());
  ASSERT_TRUE(loaded.has_value()) << loaded.error().message.toStdString();
  EXPECT_EQ(testing::firstDifference(*document, **loaded), QString());
}

TEST(HostileDocument, manyEmptyLayersOnAHugeCanvasAreRejectedBeforeAllocation) {
  std::string nodes;
  for (int i = 0; i < 200'000; ++i) {
    const std::string number = std::to_string(1'000'000 + i);
    if (i > 0) nodes += ",";
    nodes += layerNode("1" + number + "-2222-3333-4444-555555555555");
  }
  EXPECT_NE(failureOf(fixture(manifest(nodes, R"("canvasWidth":16384,"canvasHeight":16384)"))), "");
}

std::string isolatingFolder(int number, const std::string& children) {
  return R"({"blendMode":1,"id":"1)" + std::to_string(1'000'000 + number) +
         R"(-2222-3333-4444-666666666666","isLocked":false,"isVisible":true,"name":"f","opacity":1,)" +
         R"("type":"folder","children":[)" + children + "]}";
}

TEST(HostileDocument, loadingManyLayersOnAHugeCanvasCanBeCancelled) {
  std::string nodes;
  for (int i = 0; i < 5000; ++i) {
    if (i > 0) nodes += ",";
    nodes += layerNode("1" + std::to_string(1'000'000 + i) + "-2222-3333-4444-555555555555");
  }
  const Bytes archive = fixture(manifest(nodes, R"("canvasWidth":16384,"canvasHeight":16384)")).make();
  const auto cancellation = std::make_shared<Cancellation>();
  cancellation->cancel();
  const auto opened =
      openDocument(std::span<const std::byte>(archive), MetalContext::shared(), Progress({}, cancellation));
  ASSERT_FALSE(opened.has_value());
  EXPECT_EQ(opened.error(), cancelled().value());
}

TEST(HostileDocument, failureToAllocateASurfaceFailsTheLoad) {
  const tileMemory::ScopedSurfaceFailure refusal(0);
  const Bytes archive = fixture(manifest(layerNode())).make();
  const auto opened = openDocument(std::span<const std::byte>(archive), MetalContext::shared());
  ASSERT_FALSE(opened.has_value());
  EXPECT_EQ(opened.error(), QStringLiteral("There is not enough memory for this document."));
}

TEST(HostileDocument, manyIsolatingFoldersOnAHugeCanvasAreRejectedBeforeAllocation) {
  std::string nodes;
  for (int i = 0; i < 100'000; ++i) {
    if (i > 0) nodes += ",";
    const std::string number = std::to_string(1'000'000 + i);
    nodes += isolatingFolder(
        i, layerNode("1" + number + "-2222-3333-4444-555555555555", R"("hasPixelData":false,)"));
  }
  EXPECT_NE(failureOf(fixture(manifest(nodes, R"("canvasWidth":16384,"canvasHeight":16384)"))), "");
}

TEST(HostileDocument, nestedFoldersAreLimitedByMemory) {
  std::string nodes = layerNode();
  for (int i = 0; i < 100; ++i) nodes = isolatingFolder(i, nodes);
  EXPECT_EQ(failureOf(fixture(manifest(nodes))), "");
  // A hundred surfaces of one tile each would be 6.4 MB.
  const ScopedMemoryLimit limit(2'000'000);
  EXPECT_EQ(failureOf(fixture(manifest(nodes))), "There is not enough memory for this document.");
}

TEST(HostileDocument, pixelsBeyondMemoryAreRejected) {
  const LayerdataHeader header = LayerdataHeader::of(PixelFormat::rgba8Unorm, 300, 300);
  const std::string text = manifest(layerNode(), R"("canvasWidth":300,"canvasHeight":300)");
  const ZipFixture archive = fixture(text, layerdata(header, 300 * 300 * 4));
  EXPECT_EQ(failureOf(archive), "");
  const ScopedMemoryLimit limit(200'000);
  EXPECT_EQ(failureOf(archive), "There is not enough memory for this document.");
}

TEST(HostileDocument, unusedEntriesAreLimitedInSize) {
  ZipFixture archive = fixture(manifest(layerNode()));
  archive.add(ZipFixture::deflated("layers/stray.layerdata", Bytes(70'000'000)));
  EXPECT_EQ(failureOf(archive), "The archive contains more data than its document can use.");
}

TEST(HostileDocument, zeroBombInflatesOnlyToTheDeclaredSize) {
  // 60 MB of zeros, compressed a thousand to one, as a layer of 3 x 2 pixels.
  const Bytes zeros(60'000'000);
  const auto start = smallHeader.encoded();
  Bytes bomb(start.begin(), start.end());
  bomb.insert(bomb.end(), zeros.begin(), zeros.end());
  EXPECT_NE(failureOf(fixture(manifest(layerNode()), bomb)), "");
  std::string text = manifest(layerNode());
  text.insert(1, std::string(70'000'000, ' '));
  EXPECT_NE(failureOf(fixture(text)), "");
}

TEST(HostileDocument, anyCorruptByteOfAnArchive) {
  const Bytes whole = fixture(manifest(layerNode())).make();
  for (std::size_t place = 0; place < whole.size(); ++place) {
    for (const unsigned flip : {0x01U, 0x40U, 0xFFU}) {
      Bytes archive = whole;
      archive[place] ^= static_cast<std::byte>(flip);
      // Not every field matters, but the pixels are either correct or there is no document.
      const auto document = load(archive);
      if (!document || (*document)->rootNodes.value().empty()) continue;
      const auto layer = (*document)->rootNodes.value()[0].layer();
      if (layer == nullptr || layer->texture.value()->pixelAt(0, 0) == 0) continue;
      Bytes read(24);
      layer->texture.value()->readRect({0, 0, 3, 2}, read.data(), 12);
      EXPECT_EQ(read, testing::noise(24, 1)) << place;
    }
  }
}

}  // namespace
}  // namespace orvanel
