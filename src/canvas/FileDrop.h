// Files dragged onto a view. Main thread only.
#pragma once

#include <QDropEvent>
#include <QMimeData>
#include <QStringList>

namespace orvanel::fileDrop {

/// The local files a drag carries, in its order; other addresses are left out.
[[nodiscard]] QStringList localFiles(const QMimeData& data);
/// Takes the files as copies, whatever the source proposes: after a move it would delete its own.
void acceptAsCopy(QDropEvent& event);

}  // namespace orvanel::fileDrop
