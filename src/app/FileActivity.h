// The overall progress of all files being read and written in the background. Owned by the file commands;
// main thread only.
#pragma once

#include <QProperty>
#include <map>
#include <optional>

namespace orvanel {

class FileActivity {
 public:
  using Work = int;

  /// From 0 to 1, averaged over all running work; nothing while there is none.
  QProperty<std::optional<double>> fraction;
  /// Counts what begins, advances and ends, also where that leaves the average as it is.
  QProperty<int> changes;

  [[nodiscard]] Work begin();
  void advance(Work work, double workFraction);
  void end(Work work);

  /// Of one running work.
  [[nodiscard]] double fractionOf(Work work) const;
  /// Averaged over all running work but this one; nothing while there is no other.
  [[nodiscard]] std::optional<double> fractionWithout(std::optional<Work> work) const;

 private:
  void publish();

  std::map<Work, double> running_;
  Work nextWork_ = 1;
};

}  // namespace orvanel
