// Little-endian numbers and texts to bytes and back. The reader never reads beyond its end: after the first
// attempt it has failed, and returns zeros. Plain values, any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

namespace orvanel {

class ByteWriter {
 public:
  template <std::integral Number>
  void number(Number value) {
    const auto bits = static_cast<std::make_unsigned_t<Number>>(value);
    for (std::size_t byte = 0; byte < sizeof value; ++byte)
      bytes_.append(static_cast<char>(static_cast<std::uint64_t>(bits) >> (8 * byte) & 0xFFU));
  }
  void flag(bool value) { number<std::uint8_t>(value ? 1 : 0); }
  void bytes(const QByteArray& value) {
    number(static_cast<std::uint32_t>(value.size()));
    bytes_.append(value);
  }
  void text(const QString& value) { bytes(value.toUtf8()); }
  void text(const std::string& value) { bytes(QByteArray::fromStdString(value)); }
  /// The number of items that follow.
  void count(std::size_t value) { number(static_cast<std::uint32_t>(value)); }

  [[nodiscard]] const QByteArray& written() const { return bytes_; }

 private:
  QByteArray bytes_;
};

class ByteReader {
 public:
  /// `bytes` must outlive the reader.
  explicit ByteReader(std::span<const std::byte> bytes) : rest_(bytes) {}

  template <std::integral Number>
  [[nodiscard]] Number number() {
    const std::span<const std::byte> taken = take(sizeof(Number));
    std::uint64_t bits = 0;
    for (std::size_t byte = 0; byte < taken.size(); ++byte)
      bits |= std::to_integer<std::uint64_t>(taken[byte]) << (8 * byte);
    return static_cast<Number>(bits);
  }
  /// Fails for anything but 0 and 1.
  [[nodiscard]] bool flag() {
    const auto value = number<std::uint8_t>();
    if (value > 1) fail();
    return value == 1;
  }
  [[nodiscard]] QByteArray bytes(std::uint32_t limit) {
    const auto size = number<std::uint32_t>();
    if (size > limit) fail();
    const std::span<const std::byte> taken = take(size);
    return {reinterpret_cast<const char*>(taken.data()), static_cast<qsizetype>(taken.size())};
  }
  [[nodiscard]] QString text(std::uint32_t limit) { return QString::fromUtf8(bytes(limit)); }
  [[nodiscard]] std::string plainText(std::uint32_t limit) { return bytes(limit).toStdString(); }
  /// The number of items that follow. Fails if the rest is too short for them.
  [[nodiscard]] std::size_t count(std::size_t fewestBytesEach) {
    const std::size_t value = number<std::uint32_t>();
    if (value > rest_.size() / fewestBytesEach) fail();
    return hasFailed_ ? 0 : value;
  }

  void fail() {
    hasFailed_ = true;
    rest_ = {};
  }
  [[nodiscard]] bool hasFailed() const { return hasFailed_; }
  [[nodiscard]] bool isAtEnd() const { return !hasFailed_ && rest_.empty(); }

 private:
  std::span<const std::byte> take(std::size_t count) {
    if (count > rest_.size()) fail();
    if (hasFailed_) return {};
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  std::span<const std::byte> rest_;
  bool hasFailed_ = false;
};

}  // namespace orvanel
