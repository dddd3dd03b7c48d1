#include "model/ReferenceFlattener.h"

#include <algorithm>
#include <cmath>

namespace orvanel::test {
namespace {

double rounded(double value, PixelFormat format) {
  if (format == PixelFormat::rgba8Unorm) return std::round(value * 255.0) / 255.0;
  return static_cast<double>(halfToFloat(floatToHalf(static_cast<float>(value))));
}

void roundTo(Picture& picture, PixelFormat format) {
  for (twin::Pixel& pixel : picture) {
    for (double& channel : pixel.color) channel = rounded(channel, format);
    pixel.alpha = rounded(pixel.alpha, format);
  }
}

class Flattener {
 public:
  explicit Flattener(const Document& document)
      : width_(document.canvasWidth.value()),
        height_(document.canvasHeight.value()),
        temporaryFormat_(compositePixelFormat(document.colorMode.value())) {}

  void compositeNodes(const LayerNodeList& nodes, Picture& target) const {
    for (const LayerNode& node : nodes) {
      if (!node.isVisible().value()) continue;
      if (const std::shared_ptr<Layer> layer = node.layer()) {
        compositeLayer(*layer, target);
      } else {
        compositeFolder(*node.folder(), target);
      }
    }
  }

  [[nodiscard]] Picture emptyPicture() const {
    return Picture(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
  }

 private:
  void compositeLayer(const Layer& layer, Picture& target) const {
    const ConstTexture& texture = layer.texture.value();
    if (texture == nullptr) return;
    const std::shared_ptr<LayerMask>& mask = layer.mask.value();
    const bool hasMask = mask != nullptr && mask->isEnabled.value();
    const double opacity = static_cast<double>(layer.opacity.value());
    std::size_t i = 0;
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x, ++i) {
        const double shown = hasMask ? twin::half(mask->maskTexture->texture->pixelAt(x, y)) : 1.0;
        target[i] = twin::over(twin::decode(texture->pixelAt(x, y), texture->format()), target[i],
                               layer.blendMode.value(), opacity * shown);
      }
    }
  }

  void compositeFolder(const LayerFolder& folder, Picture& target) const {
    if (folder.opacity.value() >= 1.0F && folder.blendMode.value() == BlendMode::normal) {
      compositeNodes(folder.children.value(), target);
      return;
    }
    Picture temporary = emptyPicture();
    compositeNodes(folder.children.value(), temporary);
    roundTo(temporary, temporaryFormat_);
    for (std::size_t i = 0; i < target.size(); ++i) {
      target[i] = twin::over(temporary[i], target[i], folder.blendMode.value(),
                             static_cast<double>(folder.opacity.value()));
    }
  }

  int width_;
  int height_;
  PixelFormat temporaryFormat_;
};

}  // namespace

Picture flattenReference(const Document& document) {
  const Flattener flattener(document);
  Picture picture = flattener.emptyPicture();
  flattener.compositeNodes(document.rootNodes.value(), picture);
  return picture;
}

double largestExcess(const Surface& composite, const Picture& truth, double slack) {
  double excess = -1.0;
  std::size_t i = 0;
  for (int y = 0; y < composite.height(); ++y) {
    for (int x = 0; x < composite.width(); ++x, ++i) {
      const twin::Pixel made = twin::decode(composite.pixelAt(x, y), composite.format());
      const twin::Pixel& wanted = truth[i];
      const auto allowed = [&](double value) { return twin::tolerance(composite.format(), value) * slack; };
      excess = std::max(excess, std::abs(made.alpha - wanted.alpha) - allowed(wanted.alpha));
      if (made.alpha <= 0.0 || wanted.alpha <= 0.0) continue;
      // Errors made under a folder are weighted by coverage, because low coverage amplifies them.
      const double weight = slack > 1.0 ? std::min(made.alpha, wanted.alpha) : 1.0;
      for (std::size_t c = 0; c < wanted.color.size(); ++c) {
        const double difference = std::abs(made.color[c] - wanted.color[c]) * weight;
        excess = std::max(excess, difference - allowed(wanted.color[c]));
      }
    }
  }
  return excess;
}

}  // namespace orvanel::test
