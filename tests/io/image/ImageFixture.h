// Image files for colour tests, with profiles and chunks that the available encoders do not write.
#pragma once

#include <zlib.h>

#include <QBuffer>
#include <QByteArray>
#include <QColorSpace>
#include <QImage>
#include <cstdint>

namespace orvanel::testing {

inline void appendBigEndian(QByteArray& bytes, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.append(static_cast<char>(value >> shift & 0xFFU));
}

/// A grey ICC profile with this gamma; 1.0 is linear light.
inline QColorSpace greyProfile(double gamma) {
  constexpr std::uint32_t headerBytes = 128;
  constexpr std::uint32_t whiteAt = headerBytes + 4 + 2 * 12;
  QByteArray d50;
  for (const std::uint32_t part : {0xF6D6U, 0x10000U, 0xD32DU}) appendBigEndian(d50, part);
  const QByteArray white = QByteArray("XYZ \0\0\0\0", 8) + d50;
  QByteArray curve("curv\0\0\0\0", 8);
  appendBigEndian(curve, 1);
  appendBigEndian(curve, static_cast<std::uint32_t>(gamma * 256) << 16U);

  QByteArray profile;
  appendBigEndian(profile, whiteAt + static_cast<std::uint32_t>(white.size() + curve.size()));
  profile += QByteArray("none\x02\x40\0\0mntrGRAYXYZ ", 20) + QByteArray(12, '\0') + "acsp";
  profile += QByteArray(28, '\0') + d50;
  profile += QByteArray(headerBytes - profile.size(), '\0');
  appendBigEndian(profile, 2);
  profile += "wtpt";
  appendBigEndian(profile, whiteAt);
  appendBigEndian(profile, static_cast<std::uint32_t>(white.size()));
  profile += "kTRC";
  appendBigEndian(profile, whiteAt + static_cast<std::uint32_t>(white.size()));
  appendBigEndian(profile, static_cast<std::uint32_t>(curve.size()));
  return QColorSpace::fromIccProfile(profile + white + curve);
}

inline QByteArray pngOf(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "png");
  return bytes;
}

/// A PNG with a `gAMA` chunk right after its header.
inline QByteArray pngWithGamma(const QImage& image, std::uint32_t hundredThousandths) {
  constexpr qsizetype behindHeader = 33;
  QByteArray chunk("gAMA");
  appendBigEndian(chunk, hundredThousandths);
  QByteArray whole;
  appendBigEndian(whole, 4);
  whole += chunk;
  appendBigEndian(whole,
                  static_cast<std::uint32_t>(::crc32(0, reinterpret_cast<const Bytef*>(chunk.constData()),
                                                     static_cast<uInt>(chunk.size()))));
  return pngOf(image).insert(behindHeader, whole);
}

/// A JPEG with an ICC profile in a segment of its own.
inline QByteArray jpegWithProfile(const QImage& image, const QColorSpace& space) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "jpeg", 100);
  const QByteArray content = QByteArray("ICC_PROFILE\0\1\1", 14) + space.iccProfile();
  const auto length = static_cast<std::uint32_t>(content.size() + 2);
  QByteArray segment("\xFF\xE2", 2);
  segment.append(static_cast<char>(length >> 8U)).append(static_cast<char>(length & 0xFFU));
  return bytes.insert(2, segment + content);
}

}  // namespace orvanel::testing
