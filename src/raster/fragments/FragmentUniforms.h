// What the passes bind as fragment bytes at index 0, byte for byte, and how fragment functions read it.
// Values only; any thread.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "raster/fragments/Fragments.h"

namespace orvanel {

struct BackgroundUniforms {
  CanvasViewUniforms view;
  std::array<float, 4> color{};
};
static_assert(sizeof(BackgroundUniforms) == 48 && offsetof(BackgroundUniforms, color) == 32);

struct DocumentUniforms {
  CanvasViewUniforms view;
  std::array<float, 3> channelVisibility{1.0F, 1.0F, 1.0F};
  /// 0: the texture is the canvas's image. 1: it has only the pixels of the view's `SampleGrid`.
  float isSampled = 0.0F;
};
static_assert(sizeof(DocumentUniforms) == 48 && offsetof(DocumentUniforms, channelVisibility) == 32);

/// A point as the passes bind it.
struct FragmentPoint {
  float x = 0.0F;
  float y = 0.0F;
};
static_assert(sizeof(FragmentPoint) == 8);

struct SelectionOverlayUniforms {
  CanvasViewUniforms view;
  float selectionAnimationOffset = 0.0F;  ///< the pattern repeats every 8
  std::array<float, 3> reserved{};
};
static_assert(sizeof(SelectionOverlayUniforms) == 48);

struct DragPathUniforms {
  static constexpr std::uint32_t noShape = 0;
  static constexpr std::uint32_t rect = 1;
  static constexpr std::uint32_t ellipse = 2;
  static constexpr std::uint32_t polyline = 3;

  CanvasViewUniforms view;
  std::uint32_t shapeMode = noShape;
  std::uint32_t pointCount = 0;
  std::array<std::uint32_t, 2> reserved{};
  /// A rectangle's origin and size, or an ellipse's centre and radii, in document pixels.
  std::array<float, 4> shape{};
};
static_assert(sizeof(DragPathUniforms) == 64 && offsetof(DragPathUniforms, shape) == 48);

struct MoveToolUniforms {
  CanvasViewUniforms view;
  float rotation = 0.0F;  ///< radians about the centre
  std::array<float, 3> reserved{};
  std::array<float, 2> origin{};  ///< document pixels
  std::array<float, 2> size{};    ///< document pixels
};
static_assert(sizeof(MoveToolUniforms) == 64 && offsetof(MoveToolUniforms, origin) == 48);

struct FreeTransformUniforms {
  CanvasViewUniforms view;
  std::array<FragmentPoint, 4> corners{};  ///< document pixels, in order around the outline
  std::array<FragmentPoint, 8> handles{};  ///< document pixels
};
static_assert(sizeof(FreeTransformUniforms) == 128 && offsetof(FreeTransformUniforms, handles) == 64);

/// The record a pass bound; the pass packs exactly this record.
template <typename Uniforms>
[[nodiscard]] Uniforms fragmentUniforms(const FragmentInvocation& invocation) {
  assert(invocation.uniforms.size() >= sizeof(Uniforms));
  Uniforms uniforms;
  std::memcpy(&uniforms, invocation.uniforms.data(), sizeof(Uniforms));
  return uniforms;
}

/// Row `row` of the band, counted from its first.
[[nodiscard]] inline std::uint32_t* bandRow(const FragmentBand& band, int row) {
  return band.pixels + static_cast<std::size_t>(row) * band.pixelsPerRow;
}

}  // namespace orvanel
