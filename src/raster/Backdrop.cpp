#include "raster/Backdrop.h"

#include <algorithm>
#include <cstddef>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {
namespace {

/// Where a band's rows begin among packed rows.
std::ptrdiff_t offsetOf(const FragmentBand& band, int row) {
  return (std::ptrdiff_t{band.y} + row) * band.width;
}

}  // namespace

Backdrop::Use Backdrop::begin(std::uint64_t fingerprint, int width, int height) {
  if (fingerprint_ != fingerprint) {
    fingerprint_ = fingerprint;
    isKept_ = false;
    return Use::pass;
  }
  if (isKept_) return Use::restore;
  pixels_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  isKept_ = true;
  return Use::keep;
}

void Backdrop::keep(const FragmentBand& band) {
  for (int row = 0; row < band.rows; ++row) {
    std::copy_n(bandRow(band, row), band.width, pixels_.begin() + offsetOf(band, row));
  }
}

void Backdrop::restore(const FragmentBand& band) const {
  for (int row = 0; row < band.rows; ++row) {
    std::copy_n(pixels_.begin() + offsetOf(band, row), band.width, bandRow(band, row));
  }
}

void Backdrop::forget() {
  *this = Backdrop();
}

}  // namespace orvanel
