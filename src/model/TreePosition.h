// A node's position in a document's tree, as a plain value that outlives the folder it names.
#pragma once

#include <QUuid>
#include <cstdint>
#include <optional>

namespace orvanel {

struct TreePosition {
  /// The parent folder; none at root level.
  std::optional<QUuid> parentID;
  /// Counted from the bottom.
  std::int64_t index = 0;
  friend bool operator==(const TreePosition&, const TreePosition&) = default;
};

}  // namespace orvanel
