// overlay_pictures FOLDER [all]: writes pictures of everything that is drawn over the image, on light, grey,
// dark and noisy grounds, at the scales 1, 1.25 and 2; with "all" also at other zooms.
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

#include "CanvasSupport.h"
#include "canvas/CanvasRenderer.h"
#include "canvas/CursorImages.h"
#include "tools/overlays/DragPathOverlayLayer.h"
#include "tools/overlays/FreeTransformOverlayLayer.h"
#include "tools/overlays/MoveToolOverlayLayer.h"

namespace orvanel {
namespace {

constexpr int viewWidth = 440;
constexpr int viewHeight = 150;

/// A part of the image: its tone, and the steps by which pixels deviate from it.
struct Ground {
  int tone;
  int step;

  /// The grey of the next pixel; few levels keep the files small.
  [[nodiscard]] int next(std::mt19937& random) const {
    return tone + step * (static_cast<int>(random() % 8) - 4);
  }
};
constexpr std::array grounds{Ground{250, 0}, Ground{128, 0}, Ground{12, 0}, Ground{140, 32}};

/// A document of four columns with the four grounds.
DocumentPtr makeGrounds(int width, int height) {
  DocumentPtr document = test::makeDocument(width, height);
  test::keepInitialZoom(*document);
  std::mt19937 random(7);
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width * height));
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const std::size_t column =
        i % static_cast<std::size_t>(width) * grounds.size() / static_cast<std::size_t>(width);
    pixels[i] = 0xFF000000U | static_cast<std::uint32_t>(grounds[column].next(random)) * 0x010101U;
  }
  Surface& texture = test::writable(document->rootNodes.value().front().layer()->texture.value());
  texture.writeRect(texture.bounds(), reinterpret_cast<const std::byte*>(pixels.data()),
                    static_cast<std::size_t>(width) * 4);
  return document;
}

struct Picture {
  const char* name;
  /// View points for each pixel of the image at scale 1; the image covers the view.
  double zoom;
  /// Selects, or adds overlays. `width` and `height` are the image's.
  std::function<void(Document&, CanvasRenderer&, double width, double height)> prepare;
};

Selection& emptySelection(Document& document) {
  document.ensureSelection();
  return test::writableSelection(document);
}

template <typename Layer>
std::shared_ptr<Layer> addOverlay(CanvasRenderer& renderer) {
  auto layer = std::make_shared<Layer>(MetalContext::shared());
  renderer.toolOverlayLayers.push_back(layer);
  return layer;
}

void selectEllipse(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(renderer);
  emptySelection(document).setEllipse(static_cast<float>(width * 0.5), static_cast<float>(height * 0.5),
                                      static_cast<float>(width * 0.45), static_cast<float>(height * 0.4),
                                      0.0F, MetalContext::shared());
}

void selectStar(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(renderer);
  Selection& selection = emptySelection(document);
  std::vector<PolygonPoint> points;
  for (int i = 0; i < 14; ++i) {
    const double radius = i % 2 == 0 ? 0.45 : 0.25;
    const double angle = std::numbers::pi * i / 7.0;
    points.push_back({static_cast<float>(width * (0.5 + radius * std::cos(angle))),
                      static_cast<float>(height * (0.5 + radius * std::sin(angle)))});
  }
  selection.setPolygon(points, MetalContext::shared());
}

/// What similar colours of a photo leave: islands and holes of all sizes.
void selectIslands(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(renderer);
  Surface& mask = emptySelection(document).pixels();
  std::mt19937 random(3);
  std::vector<std::uint16_t> pixels(static_cast<std::size_t>(width * height));
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const std::size_t row = i / static_cast<std::size_t>(width);
    const auto x = static_cast<double>(i % static_cast<std::size_t>(width));
    const auto y = static_cast<double>(row);
    const double waves = std::sin(x * 0.06) * std::cos(y * 0.09) + std::sin(x * 0.02 + y * 0.031);
    const double value = waves + std::uniform_real_distribution(-0.5, 0.5)(random);
    pixels[i] = value > 0.2 ? 0x3C00 : 0;
  }
  mask.writeRect(mask.bounds(), reinterpret_cast<const std::byte*>(pixels.data()),
                 static_cast<std::size_t>(width) * 2);
  test::writableSelection(document).restoreFlags({true, false});
}

void dragRectangle(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  addOverlay<DragPathOverlayLayer>(renderer)->dragPath =
      SelectionPath::rect(width * 0.05, height * 0.15, width * 0.9, height * 0.7);
}

void dragEllipse(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  addOverlay<DragPathOverlayLayer>(renderer)->dragPath =
      SelectionPath::ellipse(width * 0.5, height * 0.5, width * 0.45, height * 0.4);
}

void dragLasso(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  static_cast<void>(width);
  static_cast<void>(height);
  std::vector<QPointF> points;
  for (int i = 0; i <= 150; ++i) {
    const double angle = 1.9 * std::numbers::pi * i / 150.0;
    const double wobble = 0.38 + 0.06 * std::sin(7.0 * angle);
    points.emplace_back(std::round(viewWidth * (0.5 + wobble * std::cos(angle))),
                        std::round(viewHeight * (0.5 + wobble * std::sin(angle))));
  }
  addOverlay<DragPathOverlayLayer>(renderer)->lassoScreenPoints = points;
}

/// Points that were clicked, and the line from the last of them to the pointer.
void drawPolygon(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  const auto layer = addOverlay<DragPathOverlayLayer>(renderer);
  layer->lassoPoints = {{width * 0.06, height * 0.7},
                        {width * 0.22, height * 0.2},
                        {width * 0.48, height * 0.6},
                        {width * 0.7, height * 0.15}};
  layer->lassoScreenPoints =
      std::vector{QPointF(std::round(viewWidth * 0.93), std::round(viewHeight * 0.75))};
}

std::shared_ptr<MoveToolOverlayLayer> addMoveBox(CanvasRenderer& renderer, double width, double height) {
  auto layer = addOverlay<MoveToolOverlayLayer>(renderer);
  layer->moveToolRect = {
      std::round(static_cast<float>(width * 0.06)), std::round(static_cast<float>(height * 0.2)),
      std::round(static_cast<float>(width * 0.88)), std::round(static_cast<float>(height * 0.6))};
  return layer;
}

void showMoveBox(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  addMoveBox(renderer, width, height);
}

void turnMoveBox(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  addMoveBox(renderer, width, height)->moveToolRotation = 0.14F;
}

void showQuad(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  const auto layer = addOverlay<FreeTransformOverlayLayer>(renderer);
  const auto at = [&](double x, double y) {
    return QPointF(width * (0.08 + 0.76 * x + 0.08 * y), height * (0.28 - 0.12 * x + 0.55 * y));
  };
  layer->corners = {at(0, 0), at(1, 0), at(1, 1), at(0, 1)};
  layer->handles = {at(0, 0), at(0.5, 0), at(1, 0), at(0, 0.5), at(1, 0.5), at(0, 1), at(0.5, 1), at(1, 1)};
}

void nothing(Document& document, CanvasRenderer& renderer, double width, double height) {
  static_cast<void>(document);
  static_cast<void>(renderer);
  static_cast<void>(width);
  static_cast<void>(height);
}

const std::array pictures{Picture{"selection-ellipse", 1.0, selectEllipse},
                          Picture{"selection-polygon", 1.0, selectStar},
                          Picture{"selection-wand", 1.0, selectIslands},
                          Picture{"drag-rectangle", 1.0, dragRectangle},
                          Picture{"drag-ellipse", 1.0, dragEllipse},
                          Picture{"drag-lasso", 1.0, dragLasso},
                          Picture{"drag-polygon", 1.0, drawPolygon},
                          Picture{"move-box", 1.0, showMoveBox},
                          Picture{"move-box-turned", 1.0, turnMoveBox},
                          Picture{"free-transform", 1.0, showQuad},
                          Picture{"pixel-grid", 40.0, nothing}};

QImage draw(const Picture& picture, double zoom, double scale) {
  const int width = static_cast<int>(std::lround(viewWidth * scale));
  const int height = static_cast<int>(std::lround(viewHeight * scale));
  const DocumentPtr document = makeGrounds(static_cast<int>(std::ceil(viewWidth / zoom)),
                                           static_cast<int>(std::ceil(viewHeight / zoom)));
  test::zoomTo(*document, zoom);
  CanvasRenderer renderer(MetalContext::shared());
  renderer.document = document;
  picture.prepare(*document, renderer, document->canvasWidth.value(), document->canvasHeight.value());
  test::PlainView view(width, height);
  view.scale = scale;
  renderer.drawInMTKView(view);
  return QImage(reinterpret_cast<const uchar*>(view.pixels.data()), width, height, width * 4,
                QImage::Format_RGB32)
      .copy();
}

QImage drawCursors(double scale) {
  constexpr std::array shapes{CursorShape::crosshair, CursorShape::add,        CursorShape::subtract,
                              CursorShape::intersect, CursorShape::move,       CursorShape::rotate,
                              CursorShape::openHand,  CursorShape::closedHand, CursorShape::zoomIn,
                              CursorShape::zoomOut};
  constexpr int cell = 40;
  QImage sheet(static_cast<int>(cell * scale) * static_cast<int>(shapes.size()),
               static_cast<int>(cell * scale) * static_cast<int>(grounds.size()), QImage::Format_RGB32);
  QPainter painter(&sheet);
  std::mt19937 random(5);
  const int step = static_cast<int>(cell * scale);
  for (std::size_t row = 0; row < grounds.size(); ++row) {
    for (int y = 0; y < step; ++y) {
      for (int x = 0; x < sheet.width(); ++x) {
        const int value = grounds[row].next(random);
        sheet.setPixel(x, y + step * static_cast<int>(row), qRgb(value, value, value));
      }
    }
    for (std::size_t column = 0; column < shapes.size(); ++column) {
      QPixmap image = cursorImage(shapes[column], scale).pixmap();
      image.setDevicePixelRatio(1.0);
      painter.drawPixmap(static_cast<int>(column) * step + (step - image.width()) / 2,
                         static_cast<int>(row) * step + (step - image.height()) / 2, image);
    }
  }
  return sheet;
}

bool write(const QImage& image, const QDir& folder, const QString& name) {
  if (image.save(folder.filePath(name + QStringLiteral(".png")))) return true;
  std::fprintf(stderr, "%s can't be written.\n", qPrintable(folder.filePath(name)));
  return false;
}

bool writeAll(const QDir& folder, bool isForReview) {
  bool isWritten = true;
  for (const double scale : {1.0, 1.25, 2.0}) {
    for (const Picture& picture : pictures) {
      std::vector<double> zooms{picture.zoom / (picture.zoom > 1.0 ? scale : 1.0)};
      if (isForReview && picture.zoom == 1.0) zooms = {0.37, 1.0, 12.5};
      for (const double zoom : zooms) {
        const QString name = isForReview ? QStringLiteral("%1-z%2-s%3").arg(picture.name).arg(zoom).arg(scale)
                                         : QStringLiteral("%1@%2x").arg(picture.name).arg(scale);
        isWritten = write(draw(picture, zoom, scale), folder, name) && isWritten;
      }
    }
    isWritten = write(drawCursors(scale), folder, QStringLiteral("cursors@%1x").arg(scale)) && isWritten;
  }
  return isWritten;
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() < 2) {
    std::fprintf(stderr, "usage: overlay_pictures FOLDER [all]\n");
    return 2;
  }
  const QDir folder(arguments.at(1));
  if (!folder.mkpath(QStringLiteral("."))) return 1;
  return orvanel::writeAll(folder, arguments.size() > 2) ? 0 : 1;
}
