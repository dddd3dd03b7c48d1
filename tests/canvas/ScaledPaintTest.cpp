// At a device pixel ratio of 1.25, every frame pixel maps to exactly one screen pixel, wherever the view lies
// in its window.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <cmath>
#include <random>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"

namespace orvanel {
namespace {

DocumentPtr makeNoise(int width, int height) {
  DocumentPtr document = test::makeDocument(width, height);
  test::keepInitialZoom(*document);
  std::mt19937 random(11);
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width * height));
  for (std::uint32_t& pixel : pixels) pixel = static_cast<std::uint32_t>(random()) | 0xFF000000U;
  Surface& texture = test::writable(document->rootNodes.value().front().layer()->texture.value());
  texture.writeRect(texture.bounds(), reinterpret_cast<const std::byte*>(pixels.data()),
                    static_cast<std::size_t>(width) * 4);
  return document;
}

TEST(ScaledPaint, ShowsEveryFramePixelAsOneScreenPixel) {
  // The canvas fits the view, so no scroll indicator covers it.
  const DocumentPtr document = makeNoise(280, 190);
  ToolState tools;
  for (const QPoint position : {QPoint(0, 0), QPoint(8, 4), QPoint(3, 5), QPoint(1, 2)}) {
    for (const int zoomLevelIndex : {12, 13, 14}) {
      SCOPED_TRACE(testing::Message() << position.x() << ", " << position.y() << " at " << zoomLevelIndex);
      test::zoomToIndex(*document, zoomLevelIndex);
      QWidget window;
      window.resize(360, 240);
      CanvasPaneView pane(MetalContext::shared(), tools, &window);
      pane.setGeometry(position.x(), position.y(), 301, 203);
      pane.setDocument(document);
      window.show();
      ASSERT_EQ(window.devicePixelRatioF(), 1.25);
      const QImage shown = window.grab().toImage().convertToFormat(QImage::Format_RGB32);

      const int width = static_cast<int>(std::lround(301 * 1.25));
      const int height = static_cast<int>(std::lround(203 * 1.25));
      test::PlainView plain(width, height);
      plain.scale = 1.25;
      CanvasRenderer renderer(MetalContext::shared());
      renderer.document = document;
      ASSERT_EQ(renderer.drawInMTKView(plain), FrameResult::drawn);

      const int left = static_cast<int>(std::lround(position.x() * 1.25));
      const int top = static_cast<int>(std::lround(position.y() * 1.25));
      // The outermost pixels may be blended with neighbouring widgets.
      int differing = 0;
      for (int y = 1; y + 1 < height; ++y) {
        for (int x = 1; x + 1 < width; ++x) {
          if (shown.pixel(left + x, top + y) != (plain.at(x, y) | 0xFF000000U)) ++differing;
        }
      }
      EXPECT_EQ(differing, 0);
    }
  }
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", "1.25");
  QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
