// Fills the empty window's list of recent files with names and pictures; files that are gone are left out.
// Owned by the root view; main thread only.
#pragma once

#include "app/FilePreviews.h"
#include "app/RecentDocuments.h"
#include "canvas/NoDocumentView.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

class RecentFilePictures {
 public:
  /// Both must outlive this object.
  RecentFilePictures(const RecentDocuments& recentDocuments, NoDocumentView& view);
  ~RecentFilePictures();

 private:
  void refresh();
  void add(const QString& path, const FilePreview& preview);

  const RecentDocuments& recentDocuments_;
  NoDocumentView& view_;
  FilePreviews previews_;
  /// What the list shows so far, newest first.
  std::vector<RecentEntry> entries_;
  NotificationCenter::Subscription subscription_;
};

}  // namespace orvanel
