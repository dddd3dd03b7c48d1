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
  float reserved = 0.0F;
};
static_assert(sizeof(DocumentUniforms) == 48 && offsetof(DocumentUniforms, channelVisibility) == 32);

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
