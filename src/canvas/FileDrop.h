// Files dragged onto a view. Main thread only.
#pragma once

#include <QDropEvent>
#include <QMimeData>
#include <QStringList>

namespace orvanel::fileDrop {

/// The local files of a drag, in its order; other URLs are omitted.
[[nodiscard]] QStringList localFiles(const QMimeData& data);
/// Accepts the drop as a copy whatever the source proposes, because after a move it would delete its files.
void acceptAsCopy(QDropEvent& event);

}  // namespace orvanel::fileDrop
