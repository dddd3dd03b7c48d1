// The document on which saving and loading are measured: 20 photographs of 4096 x 4096, 2.5 GiB of half
// floats.
#pragma once

#include <benchmark/benchmark.h>

#include <QString>
#include <QTemporaryDir>
#include <cstdint>

#include "PhotoLayers.h"
#include "model/Document.h"

namespace orvanel::bench {

/// What the benchmark's first argument asks for.
[[nodiscard]] Depth depthOf(const benchmark::State& state);

/// With the file it is saved to. Only one exists at a time.
class PhotoDocument {
 public:
  static constexpr int side = 4096;
  static constexpr int layerCount = 20;

  explicit PhotoDocument(Depth depth);
  [[nodiscard]] static PhotoDocument& of(Depth depth);

  [[nodiscard]] const DocumentPtr& document() const { return document_; }
  [[nodiscard]] QString path() const { return directory_.filePath(QStringLiteral("photos.tessel")); }
  [[nodiscard]] static std::int64_t rawBytes() { return std::int64_t{side} * side * 8 * layerCount; }
  void saveOnce() const;

 private:
  DocumentPtr document_;
  QTemporaryDir directory_;
};

/// Raw pixels for each second.
void reportRaw(benchmark::State& state);

}  // namespace orvanel::bench
