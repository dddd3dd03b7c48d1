// Reads a whole document without keeping it, and tells of each entry whether it can be read. Stricter than
// loading, which compares the preview's checksum without looking at the picture, and does without pixels that
// aren't there. Trusts nothing in the file.
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/Progress.h"

namespace orvanel {

class MetalContext;

struct EntryCheck {
  QString path;
  std::uint64_t size = 0;
  /// A sentence; empty for an entry that is whole.
  QString reason;
};

/// A node of the manifest that opening leaves out, or one whose mask it leaves out.
struct DroppedNode {
  QString name;
  /// A sentence.
  QString reason;
};

struct DocumentCheck {
  /// In the order of the archive, then those that are missing.
  std::vector<EntryCheck> entries;
  std::vector<DroppedNode> dropped;
  /// Why the document can't be opened whatever its entries hold; empty otherwise.
  QString reason;

  [[nodiscard]] bool isWhole() const;
};

/// Fails for what is no archive. Any thread; the work spreads over all cores.
[[nodiscard]] Described<DocumentCheck> checkDocument(const QString& path, const MetalContext& context,
                                                     const Progress& progress = {});

}  // namespace orvanel
