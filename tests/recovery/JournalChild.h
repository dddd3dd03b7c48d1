// A process that runs random commands with a journal until it is killed.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

#include "model/Document.h"

namespace orvanel::testing {

inline constexpr const char* runUntilKilledArgument = "--run-until-killed";
inline constexpr int journalIntervalMs = 50;

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

[[noreturn]] void runUntilKilled(const QString& folder, unsigned seed);

}  // namespace orvanel::testing
