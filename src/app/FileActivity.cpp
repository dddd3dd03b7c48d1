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

void FileActivity::publish() {
  if (running_.empty()) {
    fraction = std::nullopt;
    return;
  }
  double sum = 0.0;
  for (const auto& [work, workFraction] : running_) sum += workFraction;
  fraction = sum / static_cast<double>(running_.size());
}

}  // namespace orvanel
