#include "app/AgreedFiles.h"

#include <algorithm>
#include <utility>

namespace orvanel {

void AgreedFiles::add(const DocumentPtr& document, KnownFilePtr file) {
  remove(document, file->documentPath);
  agreements_.push_back({document, std::move(file)});
}

KnownFilePtr AgreedFiles::at(const DocumentPtr& document, const QString& path) const {
  const auto found = std::ranges::find_if(
      agreements_, [&](const Agreement& agreement) { return agreement.isAbout(document, path); });
  return found != agreements_.end() ? found->file : nullptr;
}

void AgreedFiles::remove(const DocumentPtr& document, const QString& path) {
  std::erase_if(agreements_, [&](const Agreement& agreement) {
    return agreement.document.expired() || agreement.isAbout(document, path);
  });
}

}  // namespace orvanel
