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
inline constexpr int journalIntervalMs = 50;
#endif

/// Names, tree, properties and pixels.
[[nodiscard]] QByteArray fingerprintOf(const Document& document);

inline constexpr int fingerprintBytes = 20;
/// What the process tells of each state, on standard output: since when it stands, and its fingerprint.
struct StateReport {
  std::int64_t time = 0;
  char fingerprint[fingerprintBytes] = {};
};

/// Nanoseconds of a clock that all processes share.
[[nodiscard]] std::int64_t sharedClock();

/// Keeps its journal in `recovery` within the folder, and now and then saves to `saved.tessel` there. With an
/// odd seed the store can't link to that file, as if it stood on another disk.
[[noreturn]] void runUntilKilled(const QString& folder, unsigned seed);

inline constexpr const char* dieInSaveArgument = "--die-in-save";
/// Edits a saved document, and dies in the moment in which the next save has replaced the file. From the seed
/// 4 on there is no room for a copy of that file.
[[noreturn]] void dieInSave(const QString& folder, unsigned seed);

}  // namespace orvanel::testing
