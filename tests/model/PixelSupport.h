// Helpers for tests of pixels: a document with random contents, and everything a command may change as one
// comparable value. Expected pixels are computed one by one in double precision.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "model/ModelSupport.h"
#include "raster/KernelReference.h"

namespace orvanel::test {

/// More than one tile each way, and not a multiple of the tile size.
inline constexpr int pixelWidth = 150;
inline constexpr int pixelHeight = 131;

inline Surface randomPixels(ColorMode mode, std::mt19937& random) {
  return randomSurface(layerPixelFormat(mode), pixelWidth, pixelHeight, random);
}

/// One layer "Background" of random pixels.
inline DocumentPtr makeRandomDocument(ColorMode mode, std::mt19937& random) {
  DocumentPtr document = makeDocument(pixelWidth, pixelHeight, mode);
  writable(document->allLayers().front()->texture.value()) = randomPixels(mode, random);
  return document;
}

/// An enabled mask with random contents.
inline std::shared_ptr<LayerMask> addRandomMask(Layer& layer, std::mt19937& random) {
  std::shared_ptr<LayerMask> mask = addMask(layer);
  Surface& contents = writable(mask->maskTexture->texture);
  contents = reference::randomMask(contents.width(), contents.height(), random);
  return mask;
}

/// A partial selection with random contents.
inline void select(Document& document, const Surface& mask) {
  document.ensureSelection();
  writable(document.selection.value()->maskTexture->texture) = mask;
  writableSelection(document).restoreFlags({.hasSelection = true, .isFullSelection = false});
}

inline void selectRandomly(Document& document, std::mt19937& random) {
  select(document,
         reference::randomMask(document.canvasWidth.value(), document.canvasHeight.value(), random));
}

inline void selectRect(Document& document, const PixelRect& rect) {
  document.ensureSelection();
  writableSelection(document).setRect(rect, 0.0F, document.context());
}

inline const Surface& selectionMask(const Document& document) {
  return *document.selection.value()->maskTexture->texture;
}

inline Surface pixelsOf(const Layer& layer) {
  return *layer.texture.value();
}

inline Surface maskPixelsOf(const Layer& layer) {
  return *layer.mask.value()->maskTexture->texture;
}

inline Surface filledMask(int width, int height, float value) {
  Surface mask(maskPixelFormat, width, height);
  mask.fill(floatToHalf(value));
  return mask;
}

/// Applies `rule` to every pixel of a surface; `weight` is the mask's value there. A pixel whose alpha
/// becomes 0 loses its colour, unless the weight leaves it unchanged.
inline reference::Image mapped(
    const Surface& surface, const Surface& mask, double idleWeight,
    const std::function<reference::Color(const reference::Color&, double weight)>& rule) {
  reference::Image image = reference::imageOf(surface);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const auto weight = static_cast<double>(reference::maskAt(mask, x, y));
      if (weight == idleWeight) continue;
      image.at(x, y) = reference::settled(rule(image.at(x, y), weight), surface.format());
    }
  }
  return image;
}

/// A surface of canvas size and one colour.
inline reference::Image plainImage(const reference::Color& color) {
  reference::Image image(pixelWidth, pixelHeight);
  for (reference::Color& pixel : image.pixels) pixel = color;
  return image;
}

/// Canvas, layers and masks: everything that undo and redo of pixel edits must restore.
struct PixelState {
  struct LayerPixels {
    QUuid id;
    std::optional<Surface> pixels;
    std::optional<Surface> mask;
    bool isMaskEnabled = false;
    bool isMaskSelected = false;
  };
  int width = 0;
  int height = 0;
  ColorMode mode = ColorMode::rgb8;
  PixelFormat compositeFormat = PixelFormat::rgba8Unorm;
  PixelRect compositeBounds;
  std::vector<LayerPixels> layers;
};

inline PixelState pixelState(const Document& document) {
  PixelState state{.width = document.canvasWidth.value(),
                   .height = document.canvasHeight.value(),
                   .mode = document.colorMode.value(),
                   .compositeFormat = document.compositedTexture.value()->format(),
                   .compositeBounds = document.compositedTexture.value()->bounds(),
                   .layers = {}};
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    PixelState::LayerPixels entry{.id = layer->id,
                                  .pixels = std::nullopt,
                                  .mask = std::nullopt,
                                  .isMaskSelected = layer->isMaskSelected.value()};
    if (const ConstTexture& pixels = layer->texture.value()) entry.pixels = *pixels;
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      entry.mask = *mask->maskTexture->texture;
      entry.isMaskEnabled = mask->isEnabled.value();
    }
    state.layers.push_back(std::move(entry));
  }
  return state;
}

inline bool areEqual(const std::optional<Surface>& a, const std::optional<Surface>& b) {
  return a.has_value() == b.has_value() && (!a || a->equals(*b));
}

/// Describes the first difference; empty if there is none.
inline std::string difference(const PixelState& a, const PixelState& b) {
  if (a.width != b.width || a.height != b.height) return "canvas size";
  if (a.mode != b.mode) return "colour mode";
  if (a.compositeFormat != b.compositeFormat || a.compositeBounds != b.compositeBounds) return "composite";
  if (a.layers.size() != b.layers.size()) return "number of layers";
  for (std::size_t i = 0; i < a.layers.size(); ++i) {
    const PixelState::LayerPixels& one = a.layers[i];
    const PixelState::LayerPixels& other = b.layers[i];
    const std::string place = " of layer " + std::to_string(i);
    if (one.id != other.id) return "identity" + place;
    if (!areEqual(one.pixels, other.pixels)) return "pixels" + place;
    if (!areEqual(one.mask, other.mask)) return "mask" + place;
    if (one.isMaskEnabled != other.isMaskEnabled) return "enabling of the mask" + place;
    if (one.isMaskSelected != other.isMaskSelected) return "target of edits" + place;
  }
  return {};
}

/// The selection's mask and flags; none when there is no selection.
struct SelectionState {
  std::optional<Surface> mask;
  Selection::Flags flags;
};

inline SelectionState selectionState(const Document& document) {
  const std::shared_ptr<const Selection>& selection = document.selection.value();
  if (selection == nullptr) return {};
  return {.mask = *selection->maskTexture->texture, .flags = selection->flags()};
}

inline std::string difference(const SelectionState& a, const SelectionState& b) {
  if (!areEqual(a.mask, b.mask)) return "mask";
  return a.flags == b.flags ? std::string() : "flags";
}

/// The number of applied records, excluding those to redo.
inline std::int64_t recordCount(const Document& document) {
  return document.undoStack.currentIndex.value() + 1;
}

/// Runs a command that leaves one record of this name, then undo, redo and undo. Each must restore pixels and
/// masks as they were on its side of the command, and leave the document dirty and in need of compositing.
inline void expectPixelCycle(Document& document, const QString& actionName,
                             const std::function<void()>& command) {
  const PixelState before = pixelState(document);
  const std::int64_t records = recordCount(document);
  command();
  ASSERT_EQ(recordCount(document), records + 1);
  EXPECT_EQ(document.undoStack.undoActionName(), actionName);
  const PixelState after = pixelState(document);
  const auto step = [&document](void (Document::*move)(), const PixelState& expected) {
    document.setDirty(false);
    put(document.needsCompositing, false);
    (document.*move)();
    EXPECT_EQ(difference(pixelState(document), expected), "");
    EXPECT_TRUE(document.isDirty.value());
    EXPECT_TRUE(document.needsCompositing.value());
  };
  step(&Document::undo, before);
  EXPECT_EQ(document.undoStack.redoActionName(), actionName);
  step(&Document::redo, after);
  step(&Document::undo, before);
}

/// Clears both flags, runs the command, and returns whether it set both.
inline bool marksEdited(Document& document, const std::function<void()>& command) {
  document.setDirty(false);
  put(document.needsCompositing, false);
  command();
  EXPECT_EQ(document.isDirty.value(), document.needsCompositing.value());
  return document.isDirty.value();
}

/// Cleans all thumbnails, runs the command, and returns whether all of them are stale.
inline bool marksThumbnails(Layer& layer, const std::function<void()>& command) {
  put(layer.thumbnailDirty, false);
  put(layer.maskThumbnailDirty, false);
  put(layer.channelThumbnailsDirty, false);
  command();
  return layer.thumbnailDirty.value() && layer.maskThumbnailDirty.value() &&
         layer.channelThumbnailsDirty.value();
}

/// Runs a command that doesn't apply and expects pixels, selection, records and flags to be unchanged.
inline void expectNothing(Document& document, const std::function<void()>& command) {
  const PixelState before = pixelState(document);
  const SelectionState selectionBefore = selectionState(document);
  const std::int64_t records = recordCount(document);
  EXPECT_FALSE(marksEdited(document, command));
  EXPECT_EQ(difference(pixelState(document), before), "");
  EXPECT_EQ(difference(selectionState(document), selectionBefore), "");
  EXPECT_EQ(recordCount(document), records);
}

inline std::string modeName(const testing::TestParamInfo<ColorMode>& tested) {
  constexpr std::array names{"grayscale8", "grayscale16", "rgb8", "rgb16"};
  return names[rawValue(tested.param)];
}

}  // namespace orvanel::test
