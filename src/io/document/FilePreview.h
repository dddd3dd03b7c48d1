// Small pictures of files, for panels and lists: the preview that a document carries, or an image decoded no
// larger than necessary. Bounded in time and memory, because nobody asked to open the file. Any thread.
#pragma once

#include <QImage>
#include <QString>

#include "io/files/Progress.h"

namespace orvanel {

/// At most `side` pixels wide and high; null for a file that has no picture, or none that is cheap to make.
[[nodiscard]] QImage filePreview(const QString& path, int side, const Progress& progress = {});

}  // namespace orvanel
