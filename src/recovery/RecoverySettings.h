// How unsaved documents are kept for recovery: where, how often and how much. Plain values, any thread.
#pragma once

#include <QString>
#include <chrono>
#include <cstdint>

namespace orvanel {

/// The store of this user: `orvanel/recovery` under the XDG directory for state.
[[nodiscard]] QString defaultRecoveryFolder();

struct RecoverySettings {
  QString folder = defaultRecoveryFolder();
  /// From a change to the record that holds it. Changes in between share the record.
  std::chrono::milliseconds interval{5'000};
  /// From a record that couldn't be written to the next attempt.
  std::chrono::milliseconds retryInterval{20'000};
  /// How long the end of the program or of the session waits for records at most. What isn't written by then
  /// is lost; the previous record remains.
  std::chrono::milliseconds patience{5'000};
  /// The most bytes that one journal takes, and that all journals of ended processes take together. Of these,
  /// the oldest that have been offered to the user go first; the newest one stays.
  std::int64_t maximumBytes = std::int64_t{16} << 30U;
  /// Less waste than this in a journal isn't worth the work of compacting it.
  std::int64_t toleratedWaste = std::int64_t{4} << 20U;
  /// Journals of ended processes are removed when they have been offered so long ago, and never before.
  std::chrono::hours maximumAge{30 * 24};
};

}  // namespace orvanel
