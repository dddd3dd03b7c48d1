// The table of kernels and shader functions by name: what a device's compiled library would be.
// Immutable; a test can take a copy with an entry left out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "raster/Surface.h"

namespace orvanel {

/// One run of a compute kernel: bindings by index, as the kernel's contract numbers them.
struct Dispatch {
  std::array<Surface*, 3> textures{};
  std::array<std::span<const std::byte>, 3> bytes{};  ///< inline argument data
  std::array<std::span<std::byte>, 2> buffers{};      ///< memory the kernel writes
};

/// A kernel is complete when it returns.
using KernelFunction = void (*)(const Dispatch&);

/// One draw of a full-view pass: uniforms begin with `CanvasViewUniforms`.
struct FragmentInvocation {
  std::span<const std::byte> uniforms;
  std::array<const Surface*, 1> textures{};
  std::span<const std::byte> points;
};

/// Rows [y, y + rows) of the drawable: premultiplied 8-bit BGRA (0xAARRGGBB as a native integer).
struct FragmentBand {
  std::uint32_t* pixels = nullptr;
  std::size_t pixelsPerRow = 0;
  int y = 0;
  int rows = 0;
  int width = 0;
};

/// Draws its pass over the rows of a band. Bands of one frame run in parallel.
using FragmentFunction = void (*)(const FragmentInvocation&, const FragmentBand&);

class ShaderLibrary {
 public:
  /// Every function this program has.
  static ShaderLibrary standard();

  [[nodiscard]] KernelFunction kernel(std::string_view name) const;
  [[nodiscard]] FragmentFunction fragment(std::string_view name) const;
  [[nodiscard]] bool hasVertex(std::string_view name) const;

  void remove(std::string_view name);

 private:
  std::map<std::string, KernelFunction, std::less<>> kernels_;
  std::map<std::string, FragmentFunction, std::less<>> fragments_;
  std::set<std::string, std::less<>> vertices_;
};

}  // namespace orvanel
