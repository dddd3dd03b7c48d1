// The pixels of a canvas that a view samples: the crossings of some of its columns and rows. A plain value.
#pragma once

#include <cstdint>
#include <vector>

namespace orvanel {

struct CanvasViewUniforms;

struct SampleGrid {
  std::vector<std::int32_t> columns;  ///< ascending, each once
  std::vector<std::int32_t> rows;     ///< ascending, each once

  /// What the document's pass samples in this view.
  [[nodiscard]] static SampleGrid ofView(const CanvasViewUniforms& view);

  [[nodiscard]] bool isEmpty() const { return columns.empty() || rows.empty(); }
  friend bool operator==(const SampleGrid&, const SampleGrid&) = default;
};

}  // namespace orvanel
