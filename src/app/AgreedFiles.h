// What stood where the user has chosen to save, by document and path: until a save has written there, that
// and nothing else may be replaced. Owned by the file commands; main thread only.
#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "io/files/KnownFile.h"
#include "model/Document.h"

namespace orvanel {

class AgreedFiles {
 public:
  /// That this and nothing else may be replaced.
  void add(const DocumentPtr& document, KnownFilePtr file);
  /// Null if the user hasn't been asked, or the document has been written there since.
  [[nodiscard]] KnownFilePtr at(const DocumentPtr& document, const QString& path) const;
  void remove(const DocumentPtr& document, const QString& path);

 private:
  struct Agreement {
    std::weak_ptr<Document> document;
    KnownFilePtr file;

    [[nodiscard]] bool isAbout(const DocumentPtr& other, const QString& path) const {
      return document.lock() == other && file->documentPath == path;
    }
  };
  std::vector<Agreement> agreements_;
};

}  // namespace orvanel
