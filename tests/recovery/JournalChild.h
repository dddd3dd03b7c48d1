// A process that runs random commands with a journal until it is killed.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

#include "model/Document.h"

namespace orvanel::testing {

inline constexpr const char* runUntilKilledArgument = "--run-until-killed";
#ifdef __SANITIZE_ADDRESS__
inline constexpr int journalIntervalMs = 250;
#else
inline constexpr int journalIntervalMs = 100;
#endif

/// Of everything that a save would keep.
[[nodiscard]] QByteArray fingerprintOf(const Document& document);

inline constexpr int fingerprintBytes = 20;
/// What the process tells of each state, on standard output: since when it stands, and its fingerprint.
struct StateReport {
  std::int64_t time = 0;
  /// That the journal has gone through so far.
  std::int64_t compactions = 0;
  char fingerprint[fingerprintBytes] = {};
};

/// Nanoseconds of a clock that all processes share.
[[nodiscard]] std::int64_t sharedClock();

/// Whether a process with this seed saves now and then. One that doesn't comes to compact its journal.
[[nodiscard]] constexpr bool savesWith(unsigned seed) {
  return seed % 5 != 0;
}

/// Keeps its journal in `recovery` within the folder, and may save to `saved.tessel` there. With an
/// odd seed the store can't link to that file, as if it stood on another disk.
[[noreturn]] void runUntilKilled(const QString& folder, unsigned seed);

inline constexpr const char* dieInSaveArgument = "--die-in-save";
/// With this seed the document is edited once more while the save runs.
[[nodiscard]] constexpr bool editsDuringSave(unsigned seed) {
  return seed >= 8;
}

/// Edits a saved document, and dies in the moment in which the next save has replaced the file. With the
/// seeds 4 to 7 there is no room for a copy of that file.
[[noreturn]] void dieInSave(const QString& folder, unsigned seed);

}  // namespace orvanel::testing
