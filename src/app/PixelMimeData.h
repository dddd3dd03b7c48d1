// Copied pixels as the desktop's clipboard offers them: under our own type, and to other programs as a PNG
// image that is made when somebody asks for it. Owned by the clipboard; main thread only.
#pragma once

#include <QMimeData>
#include <functional>

namespace orvanel {

class PixelMimeData : public QMimeData {
  Q_OBJECT

 public:
  static constexpr const char* pixelType = "com.fennimoor.orvanel.pixels";
  static constexpr const char* imageType = "image/png";

  /// `identity` tells this copy from all others; `encode` makes the image.
  PixelMimeData(QByteArray identity, std::function<QByteArray()> encode)
      : identity_(std::move(identity)), encode_(std::move(encode)) {}

  [[nodiscard]] QStringList formats() const override;

 protected:
  [[nodiscard]] QVariant retrieveData(const QString& mimeType, QMetaType preferredType) const override;

 private:
  QByteArray identity_;
  std::function<QByteArray()> encode_;
  mutable QByteArray image_;
};

}  // namespace orvanel
