// Reads numbers of a TIFF in its byte order, and nothing beyond the end of the file. Any thread; the bytes
// are not trusted.
#pragma once

#include <QIODevice>
#include <QtEndian>
#include <array>
#include <cstdint>
#include <optional>

namespace orvanel {

class TiffNumbers {
 public:
  /// Of an entry of a directory (TIFF 6.0, section 2).
  static constexpr std::uint64_t entryBytes = 12;

  TiffNumbers(QIODevice& file, bool isLittleEndian) : file_(file), isLittle_(isLittleEndian) {}

  [[nodiscard]] std::optional<std::uint16_t> word(std::uint64_t offset) const {
    return number<std::uint16_t>(offset);
  }
  [[nodiscard]] std::optional<std::uint32_t> longWord(std::uint64_t offset) const {
    return number<std::uint32_t>(offset);
  }

 private:
  template <typename Number>
  [[nodiscard]] std::optional<Number> number(std::uint64_t offset) const {
    std::array<char, sizeof(Number)> bytes{};
    if (!file_.seek(static_cast<qint64>(offset)) ||
        file_.read(bytes.data(), sizeof(Number)) != qint64{sizeof(Number)}) {
      return std::nullopt;
    }
    return isLittle_ ? qFromLittleEndian<Number>(bytes.data()) : qFromBigEndian<Number>(bytes.data());
  }

  QIODevice& file_;
  bool isLittle_;
};

}  // namespace orvanel
