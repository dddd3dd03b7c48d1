// The store's own hold on a document's file, so that what a journal leaves to that file stays when another
// program replaces, changes or removes it: shared blocks where the file system can, a hard link where the
// store stands on the same file system, otherwise a copy that is made piece by piece. A link goes on when the
// file is replaced or removed, as nearly all programs do it; that it was written into is noticed. Nothing is
// ever written through it. Belongs to the thread that writes the journal.
#pragma once

#include <optional>
#include <string>

#include "io/document/SavedFile.h"
#include "io/files/Descriptor.h"

namespace orvanel {

class HeldBase {
 public:
  /// Holds at once what can be held for nothing. `place` is the name in the store.
  HeldBase(FileHandle source, const SavedFile& saved, std::string place);
  HeldBase(const HeldBase&) = delete;
  HeldBase& operator=(const HeldBase&) = delete;

  /// Whether the bytes are still readable, here or in the document's file.
  [[nodiscard]] bool isIntact() const;
  /// Whether writing into the document's file changes these bytes.
  [[nodiscard]] bool dependsOnFile() const { return kind_ != Kind::copy; }
  [[nodiscard]] bool needsCopying() const { return source_.has_value(); }
  /// Copies the next piece. Gives up, and leaves the bytes to the document's file, where there isn't enough
  /// room for a whole copy or the file changes meanwhile.
  void copyPiece(std::int64_t maximumBytes);
  /// From the store.
  void remove();

 private:
  enum class Kind {
    reference,  ///< only the document's file has the bytes
    link,
    copy,
  };

  [[nodiscard]] bool share();
  [[nodiscard]] bool takeOver(const std::string& copy) const;
  [[nodiscard]] bool link() const;
  [[nodiscard]] bool isSourceAsItWas() const;
  [[nodiscard]] std::string part() const { return place_ + ".part"; }
  [[nodiscard]] bool beginCopy();
  /// False if it fails.
  [[nodiscard]] bool copySome();
  [[nodiscard]] bool endCopy();

  /// Of the document; empty once nothing more is read from it.
  std::optional<FileHandle> source_;
  std::string path_;
  FileIdentity identity_;
  std::string place_;
  Kind kind_ = Kind::reference;
  Descriptor copy_;
  std::int64_t copied_ = 0;
  bool canCopyInKernel_ = true;
};

}  // namespace orvanel
