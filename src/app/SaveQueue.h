// Runs the requested saves one at a time, in the order of the requests. Each writes the document as it is
// when its turn comes. Owned by the file commands; main thread only.
#pragma once

#include <QString>
#include <QUuid>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

#include "io/files/FileError.h"
#include "model/Document.h"

namespace orvanel {

/// A document to be written to a file.
struct SaveRequest {
  DocumentPtr document;
  QString path;
  /// The flat format to write; nothing for the layered document format.
  std::optional<Document::ImageFileFormat> flatFormat;

  friend bool operator==(const SaveRequest&, const SaveRequest&) = default;
};

/// Carries out the saves and learns how they ended.
class SaveQueueClient {
 public:
  using Done = std::function<void(const FileResult<void>&)>;

  SaveQueueClient() = default;
  SaveQueueClient(const SaveQueueClient&) = delete;
  SaveQueueClient& operator=(const SaveQueueClient&) = delete;
  virtual ~SaveQueueClient() = default;

  /// Starts writing the document as it is now. Must call `done` once, on the main thread, after returning.
  virtual void beginSave(const SaveRequest& request, Done done) = 0;
  /// Called before the next save begins, which may be of the same document.
  virtual void saveEnded(const SaveRequest& request, const FileResult<void>& result) = 0;
  /// May block in an alert, so it is called after the next save has begun, and never while another report is
  /// open. Not called for cancelled saves.
  virtual void reportFailedSave(const SaveRequest& request, const FileError& error) = 0;
};

class SaveQueue {
 public:
  /// `client` must outlive the queue.
  explicit SaveQueue(SaveQueueClient& client) : client_(client) {}

  /// Starts the save, or queues it behind earlier ones. A request equal to a queued one is dropped; one equal
  /// to the running save is queued, because the document may have changed since that began.
  void add(SaveRequest request);

  /// Ends all queued saves as cancelled. The running save continues.
  void cancelWaiting();

  /// Ends the running save as cancelled for all who wait for it. The client has cancelled the writing, which
  /// may still take any time to stop; the next save begins only then.
  void abandonRunning();

  // An abandoned save does not count.
  [[nodiscard]] bool isEmpty() const { return (!running_ || isAbandoned_) && waiting_.empty(); }
  /// Whether a save of this document is running or queued.
  [[nodiscard]] bool contains(const QUuid& documentID) const;

  /// Processes events, but no user input other than cancelling, until all saves of this document have ended.
  void settle(const QUuid& documentID) const;

 private:
  void beginNext();
  void end(const FileResult<void>& result);
  void reportFailures();

  SaveQueueClient& client_;
  std::optional<SaveRequest> running_;
  /// Whether the running save has been abandoned.
  bool isAbandoned_ = false;
  std::deque<SaveRequest> waiting_;
  /// Failures still to be reported.
  std::deque<std::pair<SaveRequest, FileError>> failures_;
  bool isReporting_ = false;
};

}  // namespace orvanel
