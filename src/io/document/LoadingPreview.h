// What can be shown of a file while it is being read: the size of its canvas, and a small picture where the
// file has one that is quickly read. Trusts nothing in the file. Any thread.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include "io/files/Progress.h"

namespace orvanel {

struct LoadingPreview {
  /// In document pixels; empty if the file doesn't quickly tell it, or is no image at all.
  QSize canvasSize;
  /// The whole canvas in few pixels; may be null.
  QImage picture;
};

/// Images are reduced to about `side` pixels; the preview of a document has the size it was written with.
[[nodiscard]] LoadingPreview readLoadingPreview(const QString& path, int side, const Progress& progress = {});

}  // namespace orvanel
