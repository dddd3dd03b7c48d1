// A running 64-bit hash in which order matters. For identity of inputs within one run, never stored.
#pragma once

#include <bit>
#include <cstdint>

namespace orvanel {

class Hasher {
 public:
  /// A bijection of the state for every value, so no earlier input is lost.
  void fold(std::uint64_t word) {
    state_ = (std::rotl(state_, 23) ^ word) * 0x9E3779B97F4A7C15ULL;
    state_ ^= state_ >> 29U;
  }
  [[nodiscard]] std::uint64_t value() const { return state_; }

 private:
  std::uint64_t state_ = 0xA0761D6478BD642FULL;
};

}  // namespace orvanel
