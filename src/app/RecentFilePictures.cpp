#include "app/RecentFilePictures.h"

#include "io/files/FileName.h"

namespace orvanel {

namespace {

/// Enough for a card on a screen of twice the usual resolution.
constexpr int pictureSide = 240;

}  // namespace

RecentFilePictures::RecentFilePictures(const RecentDocuments& recentDocuments, NoDocumentView& view)
    : recentDocuments_(recentDocuments),
      view_(view),
      previews_(pictureSide),
      subscription_(NotificationCenter::standard().observe(notification::recentDocumentsChanged,
                                                           [this](const std::any&) {
                                                             if (view_.isVisible()) refresh();
                                                           })) {
  view_.onShown = [this] { refresh(); };
}

RecentFilePictures::~RecentFilePictures() {
  view_.onShown = nullptr;
}

void RecentFilePictures::refresh() {
  previews_.cancel();
  entries_.clear();
  const QStringList paths = recentDocuments_.paths();
  if (paths.isEmpty()) view_.setRecentEntries({});
  for (const QString& path : paths) {
    previews_.request(path, [this, path](const FilePreview& preview) { add(path, preview); });
  }
}

void RecentFilePictures::add(const QString& path, const FilePreview& preview) {
  if (preview.exists) entries_.push_back({path, displayName(path), preview.picture});
  view_.setRecentEntries(entries_);
}

}  // namespace orvanel
