#include "io/document/DocumentReader.h"

#include <QFile>
#include <QSet>
#include <algorithm>

#include "io/document/SaveSnapshot.h"
#include "raster/MemoryBudget.h"
#include "raster/MetalContext.h"

namespace orvanel {
namespace {

QString tooMuchMemory() {
  return QStringLiteral("There is not enough memory for this document.");
}

/// Parses an id in canonical form; the nil UUID is valid too.
std::optional<QUuid> idOf(const QString& text) {
  const QUuid id = uuidFromText(text);
  if (id.isNull() && text != uuidText(id)) return std::nullopt;
  return id;
}

std::uint64_t surfacesOf(const NodeManifestList& nodes) {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const NodeManifest& node = nodes[i];
    const bool holdsNodes = i + 1 < nodes.size() && nodes[i + 1].depth > node.depth;
    count += (node.hasPixelData.value_or(true) ? 1U : 0U) + (node.mask.has_value() ? 1U : 0U) +
             (holdsNodes && isolates(node) ? 1U : 0U);
  }
  return count;
}

/// Even an empty surface has a grid of tiles, and a short manifest can request many surfaces.
bool gridsFitInMemory(const Manifest& manifest) {
  const auto tiles = [](std::int64_t side) { return static_cast<std::uint64_t>(side / tileSide + 1); };
  const std::uint64_t gridBytes = tiles(manifest.document.canvasWidth) *
                                  tiles(manifest.document.canvasHeight) *
                                  (sizeof(Tile) + sizeof(std::uint64_t));
  return pixelsFitInMemory(surfacesOf(manifest.nodes) * gridBytes * 4);
}

Described<void> judgeCanvas(const Manifest& manifest) {
  const auto isSide = [](std::int64_t side) { return side >= 1 && side <= maximumCanvasSide; };
  if (isSide(manifest.document.canvasWidth) && isSide(manifest.document.canvasHeight)) return {};
  return because(QStringLiteral("The document's canvas is not between 1 and 16384 pixels on a side."));
}

ColorMode colorModeOf(const Manifest& manifest) {
  return colorModeFromRaw(manifest.document.colorMode).value_or(ColorMode::rgb16);
}

/// Finds the valid nodes of a manifest and allocates their surfaces.
class Planner {
 public:
  using HasEntry = std::function<bool(const QString& path)>;
  Planner(DocumentPlan& plan, const MetalContext& context, const HasEntry& hasEntry)
      : plan_(plan), context_(context), hasEntry_(hasEntry) {}

  Described<void> plan(const Progress& progress) {
    const NodeManifestList& manifests = plan_.manifest.nodes;
    for (std::size_t index = 0; index < manifests.size();) {
      if (progress.isCancelled()) return cancelled();
      const NodeManifest& manifest = manifests[index];
      const std::optional<QUuid> id = idOf(manifest.id);
      const bool isLayer = manifest.type == u"layer";
      const bool isFolder = manifest.type == u"folder";
      if (id && (isLayer || isFolder)) {
        if (seen_.contains(*id))
          return because(QStringLiteral("The document has two nodes with the same id."));
        seen_.insert(*id);
        plan_.nodes.push_back({.manifest = index, .id = *id});
      }
      if (id && isLayer) {
        if (auto made = makeSurfaces(manifest, plan_.nodes.back()); !made) return made;
      }
      ++index;
      if (id && isFolder) continue;
      // Skip everything below a layer or an invalid node.
      while (index < manifests.size() && manifests[index].depth > manifest.depth) ++index;
    }
    return {};
  }

 private:
  Described<void> makeSurfaces(const NodeManifest& manifest, PlannedNode& node) {
    if (manifest.hasPixelData.value_or(true)) {
      node.pixels = makeTexture(layerPixelFormat(colorModeOf(plan_.manifest)));
      if (node.pixels == nullptr) return because(tooMuchMemory());
    }
    if (!manifest.mask.has_value()) return {};
    const std::optional<QUuid> maskID = idOf(manifest.mask->id);
    if (!maskID || !hasEntry_(maskEntryPath(manifest.id))) return {};
    node.mask = makeTexture(maskPixelFormat);
    if (node.mask == nullptr) return {};
    node.maskID = *maskID;
    return {};
  }

  [[nodiscard]] Texture makeTexture(PixelFormat format) const {
    const DocumentManifest& canvas = plan_.manifest.document;
    return context_.makeTexture(format, static_cast<int>(canvas.canvasWidth),
                                static_cast<int>(canvas.canvasHeight));
  }

  DocumentPlan& plan_;
  const MetalContext& context_;
  const HasEntry& hasEntry_;
  QSet<QUuid> seen_;
};

/// The surfaces for which the archive has entries.
std::vector<TextureLoadRequest> requestsOf(const DocumentPlan& plan, const ZipReader& archive) {
  std::vector<TextureLoadRequest> requests;
  const auto request = [&](const QString& path, const Texture& destination) {
    const auto entry = archive.find(path.toStdString());
    if (destination != nullptr && entry) requests.push_back({*entry, destination});
  };
  for (const PlannedNode& node : plan.nodes) {
    const QString& id = plan.manifest.nodes[node.manifest].id;
    request(layerEntryPath(id), node.pixels);
    request(maskEntryPath(id), node.mask);
  }
  return requests;
}

Described<OpenedDocument> planned(ZipReader archive, Manifest manifest, const MetalContext& context,
                                  const Progress& progress) {
  const auto hasEntry = [&](const QString& path) { return archive.find(path.toStdString()).has_value(); };
  auto plan = planDocument(std::move(manifest), context, hasEntry, progress);
  if (!plan) return because(plan.error());
  auto requests = requestsOf(*plan, archive);
  return OpenedDocument{std::move(*plan), std::move(archive), std::move(requests)};
}

Described<OpenedDocument> open(Described<ZipReader> archive, const MetalContext& context,
                               const Progress& progress) {
  if (!archive) return because(archive.error());
  if (progress.isCancelled()) return cancelled();
  auto manifest = readManifest(*archive, progress);
  if (!manifest) return because(manifest.error());
  return planned(std::move(*archive), std::move(*manifest), context, progress);
}

NodeValues valuesOf(const NodeManifest& manifest, const QUuid& id) {
  return {.id = id,
          .name = manifest.name,
          .opacity = std::clamp(manifest.opacity, 0.0F, 1.0F),
          .blendMode = blendModeOf(manifest),
          .isVisible = manifest.isVisible,
          .isLocked = manifest.isLocked};
}

std::shared_ptr<Layer> buildLayer(const NodeManifest& manifest, const PlannedNode& node) {
  std::shared_ptr<LayerMask> mask;
  if (node.mask != nullptr) {
    mask = std::make_shared<LayerMask>(node.maskID, std::make_shared<MaskTexture>(node.mask),
                                       manifest.mask->isEnabled);
  }
  return std::make_shared<Layer>(valuesOf(manifest, node.id), node.pixels, std::move(mask));
}

/// A folder that is made once its children are known.
struct OpenFolder {
  const NodeManifest* manifest = nullptr;
  QUuid id;
  LayerNodeList children;
};

/// Ends folders until `count` are open.
void closeFolders(std::vector<OpenFolder>& open, std::size_t count) {
  while (open.size() > count) {
    OpenFolder closed = std::move(open.back());
    open.pop_back();
    open.back().children.emplace_back(
        std::make_shared<LayerFolder>(valuesOf(*closed.manifest, closed.id), std::move(closed.children),
                                      closed.manifest->isExpanded.value_or(true)));
  }
}

LayerNodeList buildTree(const DocumentPlan& plan) {
  // The open folders, innermost last, with the children read so far. The first one stands for the root.
  std::vector<OpenFolder> open(1);
  for (const PlannedNode& node : plan.nodes) {
    const NodeManifest& manifest = plan.manifest.nodes[node.manifest];
    closeFolders(open, static_cast<std::size_t>(manifest.depth) + 1);
    if (manifest.type == u"folder") {
      open.push_back({&manifest, node.id, {}});
    } else {
      open.back().children.emplace_back(buildLayer(manifest, node));
    }
  }
  closeFolders(open, 1);
  return std::move(open.front().children);
}

}  // namespace

Described<Manifest> readManifest(const ZipReader& archive, const Progress& progress) {
  const auto entry = archive.find("manifest.json");
  if (!entry.has_value()) return because(QStringLiteral("The archive contains no document."));
  const auto text = archive.readAll(*entry, maximumManifestBytes);
  if (!text) return because(text.error());
  auto manifest = decodeManifest({reinterpret_cast<const char*>(text->data()), text->size()}, progress);
  if (!manifest) return because(manifest.error());
  if (auto judged = judgeCanvas(*manifest); !judged) return because(judged.error());
  return manifest;
}

Described<DocumentPlan> planDocument(Manifest manifest, const MetalContext& context,
                                     const std::function<bool(const QString& path)>& hasEntry,
                                     const Progress& progress) {
  if (auto judged = judgeCanvas(manifest); !judged) return because(judged.error());
  if (!gridsFitInMemory(manifest)) return because(tooMuchMemory());
  DocumentPlan plan{.manifest = std::move(manifest)};
  if (auto made = Planner(plan, context, hasEntry).plan(progress); !made) return because(made.error());
  return plan;
}

Described<OpenedDocument> openDocument(const QString& path, const MetalContext& context,
                                       const Progress& progress) {
  return open(ZipReader::openSettled(QFile::encodeName(path).toStdString()), context, progress);
}

Described<OpenedDocument> openDocument(std::span<const std::byte> bytes, const MetalContext& context,
                                       const Progress& progress) {
  return open(ZipReader::openBytes(bytes), context, progress);
}

DocumentPtr buildDocument(const DocumentPlan& plan, MetalContext& context) {
  const DocumentManifest& manifest = plan.manifest.document;
  DocumentContents contents{.name = manifest.name,
                            .width = static_cast<int>(manifest.canvasWidth),
                            .height = static_cast<int>(manifest.canvasHeight),
                            .colorMode = colorModeOf(plan.manifest),
                            .rootNodes = buildTree(plan)};
  const auto color = [](const std::optional<QString>& text) {
    return text.has_value() ? DisplayColor::fromHexText(*text) : std::nullopt;
  };
  contents.foregroundColor = color(manifest.foregroundColor).value_or(contents.foregroundColor);
  contents.backgroundColor = color(manifest.backgroundColor).value_or(contents.backgroundColor);
  if (manifest.selectedNodeID.has_value()) {
    contents.selectedNodeID = idOf(*manifest.selectedNodeID);
  } else if (!contents.rootNodes.empty()) {
    contents.selectedNodeID = contents.rootNodes.front().id();
  }
  return Document::create(std::move(contents), context);
}

}  // namespace orvanel
