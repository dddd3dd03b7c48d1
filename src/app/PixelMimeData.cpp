#include "app/PixelMimeData.h"

namespace orvanel {

QStringList PixelMimeData::formats() const {
  return {QLatin1String(pixelType), QLatin1String(imageType)};
}

QVariant PixelMimeData::retrieveData(const QString& mimeType, QMetaType /*preferredType*/) const {
  if (mimeType == QLatin1String(pixelType)) return identity_;
  if (mimeType != QLatin1String(imageType)) return {};
  if (image_.isEmpty()) image_ = encode_();
  return image_;
}

}  // namespace orvanel
