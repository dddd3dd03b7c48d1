#include "io/document/Manifest.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <string>

#include "model/Document.h"

namespace orvanel {
namespace {

/// A manifest with one layer and, optionally, one replacement in its text.
std::string manifestText(std::string_view from = "", std::string_view to = "") {
  std::string text = R"({
  "document" : {"backgroundColor" : "FFFFFF", "canvasHeight" : 20, "canvasWidth" : 30, "colorMode" : 2,
    "foregroundColor" : "0A0B0C", "name" : "Sea", "selectedNodeID" : "11111111-2222-3333-4444-555555555555"},
  "formatVersion" : 3, "generator" : "Test", "metadata" : {"createdAt" : "then", "modifiedAt" : "now"},
  "nodes" : [{"blendMode" : 1, "hasPixelData" : true, "id" : "11111111-2222-3333-4444-555555555555",
    "isLocked" : true, "isVisible" : false, "mask" : {"id" : "M", "isEnabled" : false}, "name" : "Waves",
    "opacity" : 0.25, "type" : "layer"}]
})";
  if (!from.empty()) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string failureOf(const std::string& text) {
  const auto manifest = decodeManifest(text);
  return manifest.has_value() ? std::string() : manifest.error().toStdString();
}

TEST(Manifest, readsEveryKey) {
  const auto manifest = decodeManifest(manifestText());
  ASSERT_TRUE(manifest.has_value()) << manifest.error().toStdString();
  EXPECT_EQ(manifest->formatVersion, 3);
  EXPECT_EQ(manifest->generator, QStringLiteral("Test"));
  EXPECT_EQ(manifest->metadata.createdAt, QStringLiteral("then"));
  EXPECT_EQ(manifest->metadata.modifiedAt, QStringLiteral("now"));
  EXPECT_EQ(manifest->document.name, QStringLiteral("Sea"));
  EXPECT_EQ(manifest->document.canvasWidth, 30);
  EXPECT_EQ(manifest->document.canvasHeight, 20);
  EXPECT_EQ(manifest->document.colorMode, 2);
  EXPECT_EQ(manifest->document.foregroundColor, QStringLiteral("0A0B0C"));
  EXPECT_EQ(manifest->document.backgroundColor, QStringLiteral("FFFFFF"));
  EXPECT_EQ(manifest->document.selectedNodeID, QStringLiteral("11111111-2222-3333-4444-555555555555"));
  ASSERT_EQ(manifest->nodes.size(), 1U);
  const NodeManifest& node = manifest->nodes.front();
  EXPECT_EQ(node.type, QStringLiteral("layer"));
  EXPECT_EQ(node.name, QStringLiteral("Waves"));
  EXPECT_EQ(node.opacity, 0.25F);
  EXPECT_EQ(node.blendMode, 1);
  EXPECT_FALSE(node.isVisible);
  EXPECT_TRUE(node.isLocked);
  EXPECT_EQ(node.hasPixelData, true);
  ASSERT_TRUE(node.mask.has_value());
  EXPECT_FALSE(node.mask->isEnabled);
  EXPECT_FALSE(node.isExpanded.has_value());
  EXPECT_FALSE(node.hasChildren);
}

TEST(Manifest, unknownKeysAreIgnored) {
  EXPECT_EQ(
      failureOf(manifestText("\"name\" : \"Sea\"", R"("name" : "Sea", "later" : [{"a" : [1, {}]}, null])")),
      "");
  EXPECT_EQ(failureOf(manifestText("\"type\" : \"layer\"", R"("type" : "layer", "later" : {"id" : 7})")), "");
}

TEST(Manifest, everyRequiredKeyIsChecked) {
  for (const char* key : {"canvasHeight", "canvasWidth", "colorMode", "name", "formatVersion", "generator",
                          "metadata", "createdAt", "modifiedAt", "nodes", "document", "blendMode", "isLocked",
                          "isVisible", "opacity", "type", "isEnabled"}) {
    const std::string name = std::string("\"") + key + "\"";
    EXPECT_NE(failureOf(manifestText(name, "\"other\"")), "") << key;
  }
}

TEST(Manifest, optionalKeysMayBeMissingOrNull) {
  for (const char* key : {"backgroundColor", "foregroundColor", "selectedNodeID", "hasPixelData", "mask"}) {
    const std::string name = std::string("\"") + key + "\"";
    EXPECT_EQ(failureOf(manifestText(name, "\"other\"")), "") << key;
  }
  const auto manifest = decodeManifest(manifestText("\"0A0B0C\"", "null"));
  ASSERT_TRUE(manifest.has_value());
  EXPECT_FALSE(manifest->document.foregroundColor.has_value());
}

TEST(Manifest, valuesOfTheWrongTypeAreRejected) {
  EXPECT_NE(failureOf(manifestText("\"canvasWidth\" : 30", "\"canvasWidth\" : \"30\"")), "");
  EXPECT_NE(failureOf(manifestText("\"canvasWidth\" : 30", "\"canvasWidth\" : 30.5")), "");
  EXPECT_NE(failureOf(manifestText("\"canvasWidth\" : 30", "\"canvasWidth\" : 1e300")), "");
  EXPECT_NE(failureOf(manifestText("\"canvasWidth\" : 30", "\"canvasWidth\" : 99999999999999999999")), "");
  EXPECT_NE(failureOf(manifestText("\"isLocked\" : true", "\"isLocked\" : 1")), "");
  EXPECT_NE(failureOf(manifestText("\"name\" : \"Sea\"", "\"name\" : null")), "");
  EXPECT_NE(failureOf(manifestText("\"opacity\" : 0.25", "\"opacity\" : NaN")), "");
  EXPECT_NE(failureOf(manifestText("\"opacity\" : 0.25", "\"opacity\" : 1e39")), "");
  EXPECT_NE(failureOf(manifestText("\"opacity\" : 0.25", "\"opacity\" : \"0.25\"")), "");
  EXPECT_NE(failureOf(manifestText("\"mask\" : {", "\"mask\" : [{")), "");
}

TEST(Manifest, otherVersionsAreRejectedFirst) {
  for (const char* version : {"2", "4", "0", "-3"}) {
    const std::string text = std::string(R"({"formatVersion" : )") + version + R"(, "nodes" : "not nodes"})";
    EXPECT_TRUE(QString::fromStdString(failureOf(text)).contains(QStringLiteral("format version")))
        << version;
  }
  EXPECT_FALSE(
      QString::fromStdString(failureOf(R"({"formatVersion" : 3})")).contains(QStringLiteral("version")));
}

TEST(Manifest, invalidJsonIsRejected) {
  const std::string whole = manifestText();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(failureOf(whole.substr(0, length)), "") << length;
  }
  EXPECT_NE(failureOf(whole + "x"), "");
  EXPECT_NE(failureOf(manifestText("Sea", "S\xC3\x28")), "");
}

std::string nestedFolders(int depth) {
  const std::string open =
      R"({"blendMode":0,"id":"x","isLocked":false,"isVisible":true,"name":"f","opacity":1,"type":"folder","children":[)";
  std::string nodes;
  for (int i = 0; i < depth; ++i) nodes += open;
  for (int i = 0; i < depth; ++i) nodes += "]}";
  const std::string whole = manifestText();
  const std::string start = "\"nodes\" : [";
  return whole.substr(0, whole.find(start) + start.size()) + nodes + "]}";
}

TEST(Manifest, foldersNestToAnyDepth) {
  constexpr int depth = 100'000;
  const auto manifest = decodeManifest(nestedFolders(depth));
  ASSERT_TRUE(manifest.has_value()) << manifest.error().toStdString();
  ASSERT_EQ(manifest->nodes.size(), static_cast<std::size_t>(depth));
  EXPECT_EQ(manifest->nodes.back().depth, depth - 1);
  const QByteArray text = encodeManifest(*manifest);
  const auto again = decodeManifest({text.constData(), static_cast<std::size_t>(text.size())});
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(again->nodes.size(), manifest->nodes.size());
  EXPECT_EQ(again->nodes.back().depth, depth - 1);
}

TEST(Manifest, unterminatedFoldersAreRejected) {
  const std::string whole = nestedFolders(1000);
  EXPECT_NE(failureOf(whole.substr(0, whole.size() / 2)), "");
  EXPECT_NE(failureOf(whole.substr(0, whole.size() - 3) + "}"), "");
}

TEST(Manifest, aNodeHasOnlyOneListOfChildren) {
  EXPECT_NE(failureOf(manifestText("\"type\" : \"layer\"",
                                   R"("children" : [], "type" : "folder", "children" : [])")),
            "");
}

DocumentPtr smallDocument(float opacity = 0.3F) {
  constexpr int width = 30;
  constexpr int height = 20;
  constexpr ColorMode mode = ColorMode::grayscale16;
  MetalContext& context = MetalContext::shared();
  const auto mask =
      std::make_shared<LayerMask>(QUuid::createUuid(), MaskTexture::create(width, height, context), false);
  const auto layer = std::make_shared<Layer>(
      NodeValues{.name = QStringLiteral("Waves"), .opacity = opacity, .blendMode = BlendMode::screen},
      context.makeTexture(layerPixelFormat(mode), width, height), mask);
  const auto bare = std::make_shared<Layer>(QStringLiteral("Bare"));
  const auto folder = std::make_shared<LayerFolder>(
      NodeValues{.name = QStringLiteral("Group"), .isLocked = true}, LayerNodeList{bare}, false);
  const auto empty =
      std::make_shared<LayerFolder>(NodeValues{.name = QStringLiteral("Empty"), .isVisible = false});
  return Document::create({.name = QString::fromUtf8("Ça \"va\""),
                           .width = width,
                           .height = height,
                           .colorMode = mode,
                           .rootNodes = {layer, folder, empty},
                           .selectedNodeID = folder->id,
                           .foregroundColor = {1.0F, 0.5F, 0.0F, 1.0F}},
                          context);
}

TEST(Manifest, describesADocument) {
  const DocumentPtr document = smallDocument();
  const auto manifest = describeDocument(*document);
  ASSERT_TRUE(manifest.has_value());
  EXPECT_EQ(manifest->generator, QStringLiteral("Orvanel 0.1"));
  EXPECT_EQ(manifest->metadata.createdAt, manifest->metadata.modifiedAt);
  EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$"))
                  .match(manifest->metadata.createdAt)
                  .hasMatch());
  EXPECT_EQ(manifest->document.colorMode, 1);
  EXPECT_EQ(manifest->document.foregroundColor, QStringLiteral("FF8000"));
  EXPECT_EQ(manifest->document.backgroundColor, QStringLiteral("FFFFFF"));
  ASSERT_EQ(manifest->nodes.size(), 4U);
  EXPECT_EQ(manifest->nodes[0].hasPixelData, true);
  EXPECT_TRUE(manifest->nodes[0].mask.has_value());
  EXPECT_FALSE(manifest->nodes[0].isExpanded.has_value());
  EXPECT_FALSE(manifest->nodes[0].hasChildren);
  EXPECT_EQ(manifest->nodes[1].hasPixelData, false);
  EXPECT_EQ(manifest->nodes[1].isExpanded, false);
  EXPECT_TRUE(manifest->nodes[1].hasChildren);
  EXPECT_EQ(manifest->nodes[2].depth, 1);
  EXPECT_EQ(manifest->nodes[2].hasPixelData, false);
  EXPECT_EQ(manifest->nodes[3].depth, 0);
  EXPECT_TRUE(manifest->nodes[3].hasChildren);
  EXPECT_EQ(manifest->document.selectedNodeID, manifest->nodes[1].id);
  EXPECT_EQ(manifest->nodes[1].id, manifest->nodes[1].id.toUpper());
  EXPECT_EQ(manifest->nodes[1].id.size(), 36);
}

TEST(Manifest, writesSortedKeysAndNoNulls) {
  const DocumentPtr document = smallDocument();
  document->selectNode(std::nullopt);
  const QByteArray text = encodeManifest(*describeDocument(*document));
  EXPECT_FALSE(text.contains("null"));
  EXPECT_FALSE(text.contains("selectedNodeID"));
  EXPECT_TRUE(text.contains("\"children\" : []"));
  EXPECT_TRUE(text.contains("\"opacity\" : 0.3,"));
  // Another parser accepts the text, and a writer with sorted keys gives the same order.
  QJsonParseError error;
  const QJsonDocument parsed = QJsonDocument::fromJson(text, &error);
  ASSERT_EQ(error.error, QJsonParseError::NoError);
  const auto keys = [](const QByteArray& json) {
    QStringList found;
    const QRegularExpression key(QStringLiteral("\"(\\w+)\" ?:"));
    for (auto match = key.globalMatch(QString::fromUtf8(json)); match.hasNext();)
      found << match.next().captured(1);
    return found;
  };
  EXPECT_EQ(keys(text), keys(parsed.toJson()));
  EXPECT_EQ(parsed.object()["document"].toObject()["name"].toString(), QString::fromUtf8("Ça \"va\""));
}

TEST(Manifest, readsWhatItWrote) {
  const DocumentPtr document = smallDocument();
  const auto manifest = describeDocument(*document);
  const QByteArray text = encodeManifest(*manifest);
  const auto decoded = decodeManifest({text.constData(), static_cast<std::size_t>(text.size())});
  ASSERT_TRUE(decoded.has_value()) << decoded.error().toStdString();
  EXPECT_EQ(encodeManifest(*decoded), text);
}

TEST(Manifest, anEmptyTreeIsWrittenAsAnEmptyArray) {
  const DocumentPtr document = Document::create({.name = QStringLiteral("Empty")}, MetalContext::shared());
  EXPECT_TRUE(encodeManifest(*describeDocument(*document)).contains("\"nodes\" : []"));
}

TEST(Manifest, anOpacityThatIsNotANumberIsNotWritten) {
  const DocumentPtr document = smallDocument(std::numeric_limits<float>::quiet_NaN());
  EXPECT_FALSE(describeDocument(*document).has_value());
}

}  // namespace
}  // namespace orvanel
