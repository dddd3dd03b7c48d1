#include "app/FileActivity.h"

#include <algorithm>

namespace orvanel {

FileActivity::Work FileActivity::begin() {
  const Work work = nextWork_++;
  running_.emplace(work, 0.0);
  publish();
  return work;
}

void FileActivity::advance(Work work, double workFraction) {
  const auto found = running_.find(work);
  if (found == running_.end()) return;
  found->second = std::clamp(workFraction, found->second, 1.0);
  publish();
}

void FileActivity::end(Work work) {
  running_.erase(work);
  publish();
}

double FileActivity::fractionOf(Work work) const {
  const auto found = running_.find(work);
  return found == running_.end() ? 0.0 : found->second;
}

std::optional<double> FileActivity::fractionWithout(std::optional<Work> work) const {
  double sum = 0.0;
  int count = 0;
  for (const auto& [running, share] : running_) {
    if (running == work) continue;
    sum += share;
    ++count;
  }
  return count == 0 ? std::nullopt : std::optional(sum / count);
}

void FileActivity::publish() {
  fraction = fractionWithout(std::nullopt);
  changes = changes.value() + 1;
}

}  // namespace orvanel
