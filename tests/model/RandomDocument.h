// Seeded random documents and edits, for properties that hold for any tree.
#pragma once

#include <random>

#include "model/Document.h"
#include "model/TestDoor.h"

namespace orvanel::test {

enum class FolderKinds { passThroughOnly, all };

/// Folders, masks, invisible nodes and all blend modes, over several tiles including partial ones.
[[nodiscard]] DocumentPtr randomDocument(ColorMode mode, FolderKinds folders, std::mt19937& random);

/// Changes a property, pixels, a mask or the tree, or performs an undo or redo.
void editRandomly(Document& document, std::mt19937& random);

}  // namespace orvanel::test
