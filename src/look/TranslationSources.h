// The names and sentences of the engine, where the translators' tools find them: the engine itself has no
// translations. Constant tables, any thread.
#pragma once

#include <span>

namespace orvanel::look {

/// Context "names": everything that `translatedName` is asked for.
[[nodiscard]] std::span<const char* const> translatableNames();
/// Context "sentences": why something failed, with %1 and %2 for what the engine fills in.
[[nodiscard]] std::span<const char* const> translatableSentences();

}  // namespace orvanel::look
