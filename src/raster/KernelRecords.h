// The argument records of the kernels, byte for byte as callers pack them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace orvanel {

/// Four channels as 32-bit floats, straight alpha, 0 to 1.
using Color4 = std::array<float, 4>;

struct CompositeParams {
  std::uint32_t blendMode = 0;
  float opacity = 1.0F;
  std::uint32_t visible = 1;
  std::uint32_t colorMode = 0;
  std::uint32_t hasMask = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(CompositeParams) == 24 && offsetof(CompositeParams, hasMask) == 16);

struct ClearParams {
  Color4 color{};
  std::uint32_t colorMode = 0;
  std::array<std::uint32_t, 7> reserved{};
};
static_assert(sizeof(ClearParams) == 48 && offsetof(ClearParams, colorMode) == 16);

struct ConvertParams {
  std::uint32_t sourceMode = 0;
  std::uint32_t destinationMode = 0;
};
static_assert(sizeof(ConvertParams) == 8);

struct ShapeRectParams {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  float feather = 0.0F;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(ShapeRectParams) == 24 && offsetof(ShapeRectParams, feather) == 16);

struct ShapeEllipseParams {
  float centerX = 0.0F;
  float centerY = 0.0F;
  float radiusX = 0.0F;
  float radiusY = 0.0F;
  float feather = 0.0F;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(ShapeEllipseParams) == 24 && offsetof(ShapeEllipseParams, feather) == 16);

struct PolygonParams {
  std::uint32_t pointCount = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(PolygonParams) == 8);

struct OffsetParams {
  std::int32_t dx = 0;
  std::int32_t dy = 0;
};
static_assert(sizeof(OffsetParams) == 8);

struct WandParams {
  Color4 seed{};
  float tolerance = 0.0F;
  std::array<std::uint32_t, 3> reserved{};
};
static_assert(sizeof(WandParams) == 32 && offsetof(WandParams, tolerance) == 16);

struct InvertParams {
  std::uint32_t colorMode = 0;
  std::uint32_t hasSelection = 0;
  std::array<std::uint32_t, 2> reserved{};
};
static_assert(sizeof(InvertParams) == 16);

struct FillParams {
  Color4 color{};
  std::uint32_t colorMode = 0;
  std::array<std::uint32_t, 3> reserved{};
};
static_assert(sizeof(FillParams) == 32 && offsetof(FillParams, colorMode) == 16);

struct LevelsParams {
  std::uint32_t colorMode = 0;
  std::uint32_t hasSelection = 0;
  float black = 0.0F;
  float white = 1.0F;
  float gamma = 1.0F;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(LevelsParams) == 24 && offsetof(LevelsParams, gamma) == 16);

struct ExtractParams {
  std::int32_t originX = 0;
  std::int32_t originY = 0;
  std::uint32_t colorMode = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(ExtractParams) == 16);

struct ScaleParams {
  std::array<float, 4> source{};       ///< x, y, width, height
  std::array<float, 4> destination{};  ///< x, y, width, height
  std::uint32_t colorMode = 0;
  std::array<std::uint32_t, 3> reserved{};
};
static_assert(sizeof(ScaleParams) == 48 && offsetof(ScaleParams, colorMode) == 32);

struct RotateParams {
  float centerX = 0.0F;
  float centerY = 0.0F;
  float angle = 0.0F;
  std::uint32_t colorMode = 0;
  std::array<std::uint32_t, 2> reserved{};
};
static_assert(sizeof(RotateParams) == 24 && offsetof(RotateParams, colorMode) == 12);

struct AffineParams {
  std::array<float, 6> matrix{};  ///< a, b, c, d, tx, ty of the inverse transform, row vectors
  std::uint32_t colorMode = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(AffineParams) == 32 && offsetof(AffineParams, colorMode) == 24);

/// How `resampleTexture` finds a pixel: Catmull-Rom, triangle or the nearest pixel centre.
enum class ResampleMethod : std::int32_t { bicubic = 0, bilinear = 1, nearestNeighbor = 2 };

struct ResampleParams {
  std::uint32_t sourceWidth = 0;
  std::uint32_t sourceHeight = 0;
  std::int32_t method = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(ResampleParams) == 16);

/// One dab of the brush.
struct BrushParams {
  float centerX = 0.0F;   ///< canvas pixels
  float centerY = 0.0F;   ///< canvas pixels
  float radius = 0.0F;    ///< canvas pixels
  float hardness = 1.0F;  ///< 0 to 1, the part of the radius that is fully covered
  float flow = 1.0F;      ///< 0 to 1
  std::uint32_t colorMode = 0;
  std::array<std::uint32_t, 2> reserved{};
  Color4 color{};
};
static_assert(sizeof(BrushParams) == 48 && offsetof(BrushParams, color) == 32);

/// What the bounding kernels accumulate: starts empty, largest minimum and smallest maximum.
struct BoundsRecord {
  std::uint32_t minX = 0xFFFFFFFFU;
  std::uint32_t minY = 0xFFFFFFFFU;
  std::uint32_t maxX = 0;
  std::uint32_t maxY = 0;
};
static_assert(sizeof(BoundsRecord) == 16);

}  // namespace orvanel
