// The magic wand in the plainest way, and samples to try it on.
#pragma once

#include <algorithm>
#include <cmath>
#include <deque>
#include <random>
#include <utility>
#include <vector>

#include "raster/KernelReference.h"
#include "raster/RandomSurface.h"

namespace orvanel::reference {

inline bool isWithin(const Color& pixel, const Color4& seed, float tolerance) {
  double distance = 0.0;
  for (std::size_t c = 0; c < 4; ++c) {
    distance = std::max(distance, std::abs(pixel[c] - static_cast<double>(seed[c])));
  }
  return distance <= static_cast<double>(tolerance) + 1e-6;
}

/// Breadth first with four neighbours, the seed always in.
inline std::vector<bool> flooded(const Image& image, int seedX, int seedY, const Color4& seed,
                                 float tolerance) {
  std::vector<bool> reached(image.pixels.size());
  std::deque<std::pair<int, int>> queue{{seedX, seedY}};
  reached[static_cast<std::size_t>(seedY * image.width + seedX)] = true;
  while (!queue.empty()) {
    const auto [x, y] = queue.front();
    queue.pop_front();
    for (const auto& [nextX, nextY] : {std::pair{x + 1, y}, {x - 1, y}, {x, y + 1}, {x, y - 1}}) {
      if (nextX < 0 || nextY < 0 || nextX >= image.width || nextY >= image.height) continue;
      const auto at = static_cast<std::size_t>(nextY * image.width + nextX);
      if (reached[at] || !isWithin(image.at(nextX, nextY), seed, tolerance)) continue;
      reached[at] = true;
      queue.push_back({nextX, nextY});
    }
  }
  return reached;
}

inline Color4 colorAt(const Surface& surface, int x, int y) {
  const Color color = imageOf(surface).at(x, y);
  return {static_cast<float>(color[0]), static_cast<float>(color[1]), static_cast<float>(color[2]),
          static_cast<float>(color[3])};
}

/// Two colours in a random pattern, `percent` of the first.
inline Surface speckled(PixelFormat format, int width, int height, unsigned percent, std::mt19937& random) {
  Surface surface(format, width, height);
  const std::uint64_t first = randomPixel(format, random);
  const std::uint64_t second = randomPixel(format, random);
  surface.fill(first);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (random() % 100 < percent) continue;
      surface.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(&second), 8);
    }
  }
  return surface;
}

}  // namespace orvanel::reference
