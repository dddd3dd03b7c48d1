// Seeded random documents and edits, for tests that hold for any tree.
#pragma once

#include <random>

#include "model/Document.h"
#include "model/TestDoor.h"

namespace orvanel::test {

enum class FolderKinds { passThroughOnly, all };

/// Folders, masks, invisible nodes and all blend modes over several tiles with ragged edges.
[[nodiscard]] DocumentPtr randomDocument(ColorMode mode, FolderKinds folders, std::mt19937& random);

/// One change of a property, of pixels, of a mask, of the tree, or a step in the history.
void editRandomly(Document& document, std::mt19937& random);

}  // namespace orvanel::test
