// The last step of loading a document: fills its surfaces from the archive, on all cores. Nobody else may use
// these surfaces meanwhile. Any thread.
#pragma once

#include "io/document/DocumentReader.h"
#include "io/document/LayerData.h"
#include "io/document/SavedFile.h"

namespace orvanel {

/// Fills the requested surfaces and verifies all other entries. Returns where the surfaces' pixels stand in
/// the archive, as far as it says where reading can start.
[[nodiscard]] Described<SavedSurfaces> fillTextures(const OpenedDocument& opened, const Progress& progress);

/// Whether the entry of a surface's pixels can be what it says it is.
[[nodiscard]] Described<void> judgeHeader(const LayerdataHeader& header, const ArchiveEntryInfo& entry,
                                          const Surface& surface);

/// Whether the entries have the sizes of the surfaces that they are for, and the others aren't too large.
[[nodiscard]] Described<void> judgeSizes(const OpenedDocument& opened);

/// Whether the surfaces needed to show the document still fit in memory: the composite, and those of folders.
[[nodiscard]] Described<void> judgeShownMemory(const DocumentPlan& plan);

}  // namespace orvanel
