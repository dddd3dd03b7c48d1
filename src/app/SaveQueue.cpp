#include "app/SaveQueue.h"

#include <algorithm>

#include "app/EventWait.h"

namespace orvanel {

namespace {

FileError cancellation() {
  return {DocumentIOError::saveFailed, QStringLiteral("The save was cancelled."), true};
}

}  // namespace

void SaveQueue::add(SaveRequest request) {
  if (std::ranges::find(waiting_, request) != waiting_.end()) return;
  waiting_.push_back(std::move(request));
  beginNext();
}

bool SaveQueue::contains(const QUuid& documentID) const {
  const auto concerns = [&](const SaveRequest& request) { return request.document->id == documentID; };
  return (running_ && !isAbandoned_ && concerns(*running_)) || std::ranges::any_of(waiting_, concerns);
}

void SaveQueue::beginNext() {
  if (running_ || waiting_.empty()) return;
  running_ = std::move(waiting_.front());
  waiting_.pop_front();
  client_.beginSave(*running_, [this](const FileResult<void>& result) { end(result); });
}

void SaveQueue::end(const FileResult<void>& result) {
  const SaveRequest request = *std::exchange(running_, std::nullopt);
  const bool isWanted = !std::exchange(isAbandoned_, false);
  client_.saveEnded(request, result);
  beginNext();
  if (result || result.error().isCancelled || !isWanted) return;
  failures_.emplace_back(request, result.error());
  reportFailures();
}

void SaveQueue::cancelWaiting() {
  for (const SaveRequest& request : std::exchange(waiting_, {})) {
    client_.saveEnded(request, tl::make_unexpected(cancellation()));
  }
}

void SaveQueue::abandonRunning() {
  if (!running_ || std::exchange(isAbandoned_, true)) return;
  client_.saveEnded(*running_, tl::make_unexpected(cancellation()));
}

void SaveQueue::reportFailures() {
  // A save that fails while an alert is open is reported once that alert has been dismissed.
  if (isReporting_) return;
  isReporting_ = true;
  while (!failures_.empty()) {
    const auto [request, error] = std::move(failures_.front());
    failures_.pop_front();
    client_.reportFailedSave(request, error);
  }
  isReporting_ = false;
}

void SaveQueue::settle(const QUuid& documentID) const {
  processEventsWhile([&] { return contains(documentID); });
}

}  // namespace orvanel
