// The files of one journal in the store. Whoever writes or restores the journal holds a lock on it, which
// goes with the process, however that ends. Any thread.
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/files/FileError.h"
#include "recovery/FileLock.h"

namespace orvanel {

struct JournalFiles {
  std::string folder;
  /// A UUID in upper case.
  std::string id;

  [[nodiscard]] static JournalFiles createIn(const QString& folder);
  /// Nothing if the text isn't an id.
  [[nodiscard]] static std::optional<JournalFiles> named(const QString& folder, const QString& id);

  [[nodiscard]] std::string journal() const { return path(".journal"); }
  /// A journal that is about to take the place of the other.
  [[nodiscard]] std::string part() const { return path(".part"); }
  /// Empty; stands from the moment in which the user was first told of the journal.
  [[nodiscard]] std::string offered() const { return path(".offered"); }
  /// Empty; says that the document was restored, and that what it has become is in another journal once that
  /// stands.
  [[nodiscard]] std::string successor(const std::string& newID) const { return path("." + newID + ".next"); }
  /// A copy of the document's file.
  [[nodiscard]] std::string copy(std::uint32_t number) const {
    return path("." + std::to_string(number) + ".base");
  }
  [[nodiscard]] bool hasJournal() const;
  /// The id in the name of such a file; empty for any other.
  [[nodiscard]] static QString idInName(const QString& fileName);
  /// The id of the other journal in the name of a `successor`; empty for any other file.
  [[nodiscard]] static QString successorInName(const QString& fileName);

  /// Of work that was under way; nothing else in the store needs them.
  [[nodiscard]] QStringList parts() const { return namesLike(QStringLiteral("*part")); }
  void removeParts() const { removeEach(parts()); }
  /// Removes the journal and everything that belongs to it. Before, so that they don't come to light again,
  /// removes the journals from which its document was restored. Fails with a sentence for the user.
  [[nodiscard]] Described<void> removeAll() const;

 private:
  [[nodiscard]] std::string path(std::string_view suffix) const {
    return folder + "/" + id + std::string(suffix);
  }
  /// The names in the store that begin with the id and a point, and go on like this.
  [[nodiscard]] QStringList namesLike(const QString& rest) const;
  /// Whose documents this journal has taken over, if it stands.
  [[nodiscard]] std::vector<JournalFiles> predecessors() const;
  void removeEach(const QStringList& names) const;
};

/// Syncs a folder, so that its changes survive a power cut.
void syncFolder(const std::string& folder);

}  // namespace orvanel
