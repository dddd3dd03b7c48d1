// Collects the textures and argument data of one kernel call by binding index.
// Borrows everything for the call.
#pragma once

#include <span>

#include "raster/ShaderLibrary.h"

namespace orvanel {

class DispatchBuilder {
 public:
  DispatchBuilder& write(std::size_t index, Surface& texture) {
    dispatch_.textures[index] = &texture;
    return *this;
  }
  /// The kernel's contract says that it only reads this one.
  DispatchBuilder& read(std::size_t index, const Surface& texture) {
    dispatch_.textures[index] = const_cast<Surface*>(&texture);
    return *this;
  }
  /// `record` must outlive the call of the kernel.
  template <typename Record>
  DispatchBuilder& bytes(std::size_t index, const Record& record) {
    dispatch_.bytes[index] = std::as_bytes(std::span(&record, 1));
    return *this;
  }
  DispatchBuilder& bytes(std::size_t index, std::span<const std::byte> data) {
    dispatch_.bytes[index] = data;
    return *this;
  }
  DispatchBuilder& buffer(std::size_t index, std::span<std::byte> memory) {
    dispatch_.buffers[index] = memory;
    return *this;
  }
  [[nodiscard]] const Dispatch& dispatch() const { return dispatch_; }

 private:
  Dispatch dispatch_;
};

}  // namespace orvanel
