// The constants of the magic wand, shared by its kernels and the match that it keeps for a gesture.
#pragma once

#include <cstdint>

namespace orvanel::kernels {

/// Added to every tolerance: far below a step of any format, and above what rounding adds to a difference.
inline constexpr float wandMargin = 1e-6F;

// What an unselected pixel becomes between two selected neighbours, and between more.
inline constexpr std::uint16_t halfHalf = 0x3800;
inline constexpr std::uint16_t halfThreeQuarters = 0x3A00;

}  // namespace orvanel::kernels
