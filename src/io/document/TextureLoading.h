// The last step of loading a document: the pixels of an opened archive go into its surfaces, on all cores,
// while nobody else looks at these surfaces. Any thread.
#pragma once

#include "io/document/DocumentReader.h"

namespace orvanel {

/// Reads every entry, fills the surfaces that wait for one and checks the rest.
[[nodiscard]] Described<void> fillTextures(const OpenedDocument& opened, const Progress& progress);

/// Whether the composite and the folders' surfaces fit in memory beside the pixels read.
[[nodiscard]] Described<void> judgeShownMemory(const OpenedDocument& opened);

}  // namespace orvanel
