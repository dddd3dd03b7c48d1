// A byte vector that doesn't zero its memory, for bytes that are overwritten anyway. Owned by one thread at a
// time.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace orvanel {

class ByteBuffer {
 public:
  ByteBuffer() = default;
  explicit ByteBuffer(std::size_t size) { resizeDiscarding(size); }

  /// Resizes the buffer; its contents become undefined.
  void resizeDiscarding(std::size_t size) {
    if (size > capacity_) {
      bytes_ = std::make_unique_for_overwrite<std::byte[]>(size);
      capacity_ = size;
    }
    size_ = size;
  }
  /// Keeps the first `size` bytes.
  void truncate(std::size_t size) { size_ = size < size_ ? size : size_; }

  [[nodiscard]] std::byte* data() { return bytes_.get(); }
  [[nodiscard]] const std::byte* data() const { return bytes_.get(); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool isEmpty() const { return size_ == 0; }
  [[nodiscard]] std::span<std::byte> span() { return {bytes_.get(), size_}; }
  [[nodiscard]] std::span<const std::byte> span() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<std::byte[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace orvanel
