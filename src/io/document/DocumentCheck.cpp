#include "io/document/DocumentCheck.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <limits>

#include "io/document/DocumentReader.h"
#include "io/document/LayerData.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/StoredPreview.h"
#include "io/document/TextureLoading.h"
#include "io/files/Parallel.h"

namespace orvanel {
namespace {

/// Reads an entry to its end, as the pixels of a surface if it is to have some.
Described<void> judgeEntry(const ZipReader& archive, std::size_t index, const Surface* surface,
                           const Progress& progress) {
  auto stream = archive.stream(index);
  if (!stream) return because(stream.error());
  if (surface != nullptr) {
    std::array<std::byte, LayerdataHeader::byteSize> start{};
    if (auto read = stream->read(start); !read) return read;
    const auto header = LayerdataHeader::decode(start);
    if (!header) return because(header.error());
    if (auto judged = judgeHeader(*header, archive.entries()[index], *surface); !judged) return judged;
  }
  return stream->finish(progress);
}

/// Reads an entry as opening does, which trusts what the archive says of its parts.
Described<void> judgeParts(const ZipReader& archive, std::size_t index, const Progress& progress) {
  const std::size_t count = archive.parts(index).size();
  auto stream = archive.streamOfParts(index, 0, count);
  if (!stream) return because(stream.error());
  ByteBuffer piece;
  for (const EntryPart& part : archive.parts(index)) {
    if (progress.isCancelled()) return cancelled();
    piece.resizeDiscarding(part.size);
    if (auto read = stream->read(piece.span()); !read) return read;
  }
  if (stream->crc() == archive.entries()[index].crc) return {};
  return because(QStringLiteral("Its checksum is wrong."));
}

/// Entries that the tree asks for and the archive hasn't got.
std::vector<EntryCheck> missingEntries(const OpenedDocument& opened) {
  std::vector<EntryCheck> missing;
  const auto require = [&](const QString& path) {
    if (opened.archive.find(path.toStdString())) return;
    missing.push_back({path, 0, QStringLiteral("The entry is missing.")});
  };
  for (const PlannedNode& node : opened.nodes) {
    const NodeManifest& manifest = opened.manifest.nodes[node.manifest];
    if (manifest.type != u"layer") continue;
    if (manifest.hasPixelData.value_or(true)) require(layerEntryPath(manifest.id));
    if (manifest.mask) require(maskEntryPath(manifest.id));
  }
  return missing;
}

QString reasonToDrop(const NodeManifest& node, bool isInside) {
  if (isInside) return QStringLiteral("It is inside a layer, or inside a node that is left out.");
  if (node.type != u"layer" && node.type != u"folder") return QStringLiteral("Its type is unknown.");
  return QStringLiteral("Its id is not valid.");
}

/// The nodes and masks of the manifest that aren't planned. No node below a layer or a dropped one is.
std::vector<DroppedNode> droppedNodes(const OpenedDocument& plan) {
  const auto lacksItsMask = [&](const PlannedNode& node, const NodeManifest& manifest) {
    // An entry that is missing is told as such.
    return manifest.type == u"layer" && manifest.mask && node.mask == nullptr &&
           plan.archive.find(maskEntryPath(manifest.id).toStdString());
  };
  constexpr int none = std::numeric_limits<int>::max();
  std::vector<DroppedNode> dropped;
  auto planned = plan.nodes.begin();
  int childless = none;  // the depth of the node around those that follow
  for (std::size_t index = 0; index < plan.manifest.nodes.size(); ++index) {
    const NodeManifest& node = plan.manifest.nodes[index];
    if (planned != plan.nodes.end() && planned->manifest == index) {
      if (lacksItsMask(*planned, node))
        dropped.push_back({node.name, QStringLiteral("The id of its mask is not valid.")});
      ++planned;
      childless = node.type == u"layer" ? node.depth : none;
      continue;
    }
    const bool isInside = node.depth > childless;
    if (!isInside) childless = node.depth;
    dropped.push_back({node.name, reasonToDrop(node, isInside)});
  }
  return dropped;
}

}  // namespace

bool DocumentCheck::isWhole() const {
  return reason.isEmpty() && dropped.empty() &&
         std::ranges::all_of(entries, [](const EntryCheck& entry) { return entry.reason.isEmpty(); });
}

Described<DocumentCheck> checkDocument(const QString& path, const MetalContext& context,
                                       const Progress& progress) {
  const auto alone = ZipReader::open(QFile::encodeName(path).toStdString());
  if (!alone) return because(alone.error());
  const auto opened = openDocument(path, context, progress);
  // The file may have been replaced in between.
  const ZipReader& archive = opened ? opened->archive : *alone;
  std::vector<const Surface*> surfaces(archive.entries().size(), nullptr);
  DocumentCheck check;
  if (opened) {
    for (const TextureLoadRequest& request : opened->requests)
      surfaces.at(request.entry) = request.destination.get();
    if (const auto judged = judgeSizes(*opened); !judged) check.reason = judged.error();
  } else {
    check.reason = opened.error();
  }
  check.entries.resize(archive.entries().size());
  const auto read = forEachInBackground(check.entries.size(), [&](std::size_t index) -> Described<void> {
    const ArchiveEntryInfo& entry = archive.entries()[index];
    auto judged = judgeEntry(archive, index, surfaces[index], progress);
    if (judged && !archive.parts(index).empty()) judged = judgeParts(archive, index, progress);
    check.entries[index] = {QString::fromStdString(entry.path), entry.size,
                            judged ? QString() : judged.error()};
    return {};
  });
  if (!read || progress.isCancelled()) return cancelled();
  if (const auto preview = archive.find(previewEntryPath); preview) {
    EntryCheck& entry = check.entries[*preview];
    if (const auto picture = readStoredPreview(archive); entry.reason.isEmpty() && !picture) {
      entry.reason = picture.error();
    }
  }
  if (opened) {
    check.dropped = droppedNodes(*opened);
    const auto missing = missingEntries(*opened);
    check.entries.insert(check.entries.end(), missing.begin(), missing.end());
  }
  return check;
}

}  // namespace orvanel
