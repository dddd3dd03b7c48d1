#include <QBuffer>
#include <QClipboard>
#include <QMimeData>

#include "AppFixture.h"
#include "app/PixelMimeData.h"
#include "app/PixelPasteboard.h"
#include "raster/MemoryBudget.h"
#include "tools/selection/SelectionGesture.h"

namespace orvanel {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint64_t red = 0xFF0000FFU;

QClipboard& desktop() {
  return *QGuiApplication::clipboard();
}

QByteArray encoded(const QImage& image, const char* format = "PNG") {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format));
  return buffer.data();
}

void offerBytes(const QString& type, const QByteArray& bytes) {
  auto data = std::make_unique<QMimeData>();
  data->setData(type, bytes);
  desktop().setMimeData(data.release());
}

QImage filled(int width, int height, QColor color) {
  QImage image(width, height, QImage::Format_ARGB32);
  image.fill(color);
  return image;
}

class PasteboardTest : public AppFixture {
 protected:
  PasteboardTest() { desktop().clear(); }

  DocumentPtr open(int width, int height, ColorMode mode = ColorMode::rgb8) {
    DocumentPtr document =
        Document::create(QStringLiteral("Untitled"), width, height, mode, state.metalContext);
    state.windowState.addDocument(document);
    return document;
  }
  static void selectRect(const DocumentPtr& document, const PixelRect& rect) {
    SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
    gesture.selectShape(SelectionMode::replace,
                        [&](Selection& selection) { selection.setRect(rect, 0.0F, document->context()); });
    gesture.close();
  }
  static std::uint64_t pixel(const DocumentPtr& document, int x, int y) {
    return document->activeLayer()->texture.value()->pixelAt(x, y);
  }

  PixelPasteboard pasteboard{state, dialogs};
};

TEST_F(PasteboardTest, CopyWithoutASelectionLeavesTheClipboardsAsTheyAre) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  const auto before = state.pixelClipboard.value();
  ASSERT_TRUE(before.has_value());
  document->deselect();
  pasteboard.copy(document);
  pasteboard.cut(document);
  EXPECT_EQ(state.pixelClipboard.value(), before);
  pasteboard.paste(document, {});
  EXPECT_EQ(document->layerCount(), 2);
  EXPECT_EQ(pixel(document, 10, 5), 0xFFFFFFFFU);
  EXPECT_EQ(pixel(document, 9, 5), 0U);
}

TEST_F(PasteboardTest, OurPixelsKeepTheirPlaceInAnotherDocument) {
  const DocumentPtr source = open(40, 30);
  source->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  selectRect(source, {10, 5, 8, 6});
  pasteboard.copy(source);
  for (const ColorMode mode : {ColorMode::rgb8, ColorMode::rgb16, ColorMode::grayscale8}) {
    const DocumentPtr target = open(50, 50, mode);
    pasteboard.paste(target, {25.0, 25.0});
    EXPECT_EQ(target->activeNode()->name().value(), "Pasted Layer");
    EXPECT_EQ(pixel(target, 9, 5), 0U);
    EXPECT_NE(pixel(target, 10, 5), 0U);
    EXPECT_NE(pixel(target, 17, 10), 0U);
    EXPECT_EQ(pixel(target, 18, 10), 0U);
  }
}

TEST_F(PasteboardTest, TheClipboardSurvivesTheClosingOfItsDocument) {
  DocumentPtr source = open(40, 30);
  selectRect(source, {10, 5, 8, 6});
  pasteboard.copy(source);
  source->setDirty(false);
  state.windowState.closeDocument(source->id);
  source.reset();
  const DocumentPtr target = open(40, 30);
  pasteboard.paste(target, {});
  EXPECT_NE(pixel(target, 10, 5), 0U);
  EXPECT_FALSE(desktop().mimeData()->data(QStringLiteral("image/png")).isEmpty());
}

TEST_F(PasteboardTest, PixelsBesideASmallerCanvasMakeAnEmptyLayer) {
  const DocumentPtr source = open(40, 30);
  selectRect(source, {30, 20, 8, 6});
  pasteboard.copy(source);
  const DocumentPtr target = open(10, 10);
  pasteboard.paste(target, {});
  EXPECT_EQ(target->layerCount(), 2);
  EXPECT_EQ(pixel(target, 9, 9), 0U);
}

TEST_F(PasteboardTest, CutTakesThePixelsUnderTheNameFill) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.cut(document);
  EXPECT_EQ(pixel(document, 10, 5), 0U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Fill");
  EXPECT_NE(document->activeSelection(), nullptr);
  document->undo();
  EXPECT_EQ(pixel(document, 10, 5), 0xFFFFFFFFU);
}

TEST_F(PasteboardTest, OtherProgramsGetAPngOfWhatWasCopied) {
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr document = open(40, 30, mode);
    selectRect(document, {10, 5, 8, 6});
    pasteboard.copy(document);
    const QMimeData* data = desktop().mimeData();
    EXPECT_TRUE(data->hasFormat(QStringLiteral("image/png")));
    const QImage image = QImage::fromData(data->data(QStringLiteral("image/png")));
    EXPECT_EQ(image.size(), QSize(8, 6));
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::white));
  }
}

TEST(PixelMimeDataTest, TheImageIsMadeWhenSomebodyAsksAndOnlyOnce) {
  int made = 0;
  const PixelMimeData data("identity", [&made] {
    ++made;
    return QByteArray("image");
  });
  EXPECT_TRUE(data.hasFormat(QStringLiteral("image/png")));
  EXPECT_EQ(data.data(QLatin1String(PixelMimeData::pixelType)), "identity");
  EXPECT_EQ(made, 0);
  EXPECT_EQ(data.data(QStringLiteral("image/png")), "image");
  EXPECT_EQ(data.data(QStringLiteral("image/png")), "image");
  EXPECT_EQ(made, 1);
  EXPECT_TRUE(data.data(QStringLiteral("text/plain")).isEmpty());
}

TEST_F(PasteboardTest, AnImageOfAnotherProgramGoesToTheCentreOfTheView) {
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr document = open(40, 30, mode);
    offerBytes(QStringLiteral("image/png"), encoded(filled(6, 4, Qt::red)));
    pasteboard.paste(document, {20.0, 15.0});
    EXPECT_EQ(document->layerCount(), 2);
    EXPECT_EQ(document->undoStack.undoActionName(), "Add Layer");
    EXPECT_NE(pixel(document, 17, 13), 0U);
    EXPECT_NE(pixel(document, 22, 16), 0U);
    EXPECT_EQ(pixel(document, 16, 13), 0U);
    EXPECT_EQ(pixel(document, 23, 16), 0U);
    EXPECT_EQ(pixel(document, 17, 12), 0U);
    EXPECT_EQ(pixel(document, 17, 17), 0U);
  }
}

TEST_F(PasteboardTest, AnImageStaysOnTheCanvasIfItFits) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/png"), encoded(filled(6, 4, Qt::red)));
  pasteboard.paste(document, {-100.0, 300.0});
  EXPECT_EQ(pixel(document, 0, 26), red);
  EXPECT_EQ(pixel(document, 5, 29), red);
}

TEST_F(PasteboardTest, AnImageLargerThanTheCanvasCoversIt) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/png"), encoded(filled(100, 100, Qt::red)));
  pasteboard.paste(document, {300.0, -300.0});
  EXPECT_EQ(pixel(document, 0, 0), red);
  EXPECT_EQ(pixel(document, 39, 29), red);
}

TEST_F(PasteboardTest, ThePixelsKeepTheirTransparency) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/png"), encoded(filled(40, 30, QColor(10, 20, 30, 40))));
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 3, 3), 0x281E140AU);
}

TEST_F(PasteboardTest, WhicheverWasCopiedLastIsPasted) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  offerBytes(QStringLiteral("image/png"), encoded(filled(40, 30, Qt::red)));
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 1, 1), red);
  document->undo();
  pasteboard.copy(document);
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 1, 1), 0U);
  EXPECT_EQ(pixel(document, 10, 5), 0xFFFFFFFFU);
}

TEST_F(PasteboardTest, CopiedTextLeavesOurPixelsToPaste) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  desktop().setText(QStringLiteral("text"));
  EXPECT_TRUE(pasteboard.canPaste());
  pasteboard.paste(document, {});
  EXPECT_EQ(pixel(document, 10, 5), 0xFFFFFFFFU);
}

TEST_F(PasteboardTest, PixelsOfAnotherInstanceArriveAsAnImage) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  auto data = std::make_unique<QMimeData>();
  data->setData(QLatin1String(PixelMimeData::pixelType), "somebody else's");
  data->setData(QStringLiteral("image/png"), encoded(filled(40, 30, Qt::red)));
  desktop().setMimeData(data.release());
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 1, 1), red);
}

TEST_F(PasteboardTest, OtherKindsOfImagesArePastedToo) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/bmp"),
             encoded(filled(40, 30, Qt::red).convertToFormat(QImage::Format_RGB32), "BMP"));
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 1, 1), red);
  desktop().setImage(filled(40, 30, Qt::blue));
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(pixel(document, 1, 1), 0xFFFF0000U);
}

TEST_F(PasteboardTest, ABrokenImageIsReportedAndNothingIsLost) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  const auto before = state.pixelClipboard.value();
  const auto records = document->undoStack.operations().size();
  for (const QByteArray& bytes :
       {QByteArray(), QByteArray("no image"), encoded(filled(40, 30, Qt::red)).left(30)}) {
    dialogs.warnings.clear();
    offerBytes(QStringLiteral("image/png"), bytes);
    pasteboard.paste(document, {});
    ASSERT_THAT(dialogs.warnings, SizeIs(1));
    EXPECT_EQ(dialogs.warnings[0].first, "Failed to Paste");
    EXPECT_FALSE(dialogs.warnings[0].second.empty());
  }
  EXPECT_EQ(document->undoStack.operations().size(), records);
  EXPECT_EQ(state.pixelClipboard.value(), before);
}

TEST_F(PasteboardTest, AnImageThatCannotBeReadGivesWayToTheNext) {
  const DocumentPtr document = open(40, 30);
  auto data = std::make_unique<QMimeData>();
  data->setData(QStringLiteral("image/x-unheard-of"), "no image");
  data->setData(QStringLiteral("image/png"), "no image");
  data->setData(QStringLiteral("image/bmp"),
                encoded(filled(40, 30, Qt::red).convertToFormat(QImage::Format_RGB32), "BMP"));
  desktop().setMimeData(data.release());
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_THAT(dialogs.warnings, IsEmpty());
  EXPECT_EQ(pixel(document, 1, 1), red);

  data = std::make_unique<QMimeData>();
  data->setData(QStringLiteral("image/x-unheard-of"), "no image");
  data->setImageData(filled(40, 30, Qt::blue));
  desktop().setMimeData(data.release());
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_THAT(dialogs.warnings, IsEmpty());
  EXPECT_EQ(pixel(document, 1, 1), 0xFFFF0000U);
}

TEST_F(PasteboardTest, WhatCanBePastedIsWhatIsPasted) {
  offerBytes(QStringLiteral("image/x-unheard-of"), "no image");
  pasteboard.look();
  EXPECT_TRUE(pasteboard.canPaste());
  pasteboard.paste(open(40, 30), {});
  EXPECT_THAT(dialogs.warnings, SizeIs(1)) << "an image, if one that can't be read";
}

TEST_F(PasteboardTest, AnImageWithoutMemoryForItChangesNothing) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/png"), encoded(filled(40, 30, Qt::red)));
  const ScopedMemoryLimit limit(0);
  pasteboard.paste(document, {20.0, 15.0});
  EXPECT_EQ(document->layerCount(), 1);
  EXPECT_THAT(dialogs.warnings, SizeIs(1));
}

TEST_F(PasteboardTest, APartOfAnImageIsReportedOnceItIsPasted) {
  const DocumentPtr document = open(40, 30);
  QImage noise(400, 300, QImage::Format_RGB32);
  for (int i = 0; i < 400 * 300; ++i) noise.setPixel(i % 400, i / 400, static_cast<uint>(i) * 2654435761U);
  const QByteArray whole = encoded(noise, "JPG");
  offerBytes(QStringLiteral("image/jpeg"), whole.left(whole.size() / 2));
  int layersAtWarning = 0;
  dialogs.duringWarning = [&] { layersAtWarning = document->layerCount(); };
  pasteboard.paste(document, {20.0, 15.0});
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Pasted in Part");
  EXPECT_EQ(layersAtWarning, 2);
}

TEST_F(PasteboardTest, OurPixelsWithoutMemoryForThemChangeNothing) {
  const DocumentPtr document = open(40, 30);
  selectRect(document, {10, 5, 8, 6});
  pasteboard.copy(document);
  {
    const ScopedMemoryLimit limit(0);
    EXPECT_TRUE(desktop().mimeData()->data(QStringLiteral("image/png")).isEmpty());
    pasteboard.paste(document, {});
  }
  EXPECT_EQ(document->layerCount(), 1);
  EXPECT_FALSE(desktop().mimeData()->data(QStringLiteral("image/png")).isEmpty()) << "asked for again";
  pasteboard.paste(document, {});
  EXPECT_EQ(document->layerCount(), 2);
}

TEST_F(PasteboardTest, AnImageBeyondTheLimitsIsReported) {
  const DocumentPtr document = open(40, 30);
  offerBytes(QStringLiteral("image/png"), encoded(QImage(16385, 1, QImage::Format_Grayscale8)));
  pasteboard.paste(document, {});
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].second, "The image is larger than 16384 pixels on a side.");
  EXPECT_EQ(document->layerCount(), 1);
}

TEST_F(PasteboardTest, PasteIsPossibleOnlyWithPixelsOrAnImage) {
  const DocumentPtr document = open(40, 30);
  desktop().setText(QStringLiteral("text"));
  EXPECT_TRUE(pasteboard.canPaste()) << "nobody has looked yet";
  pasteboard.look();
  EXPECT_FALSE(pasteboard.canPaste());
  pasteboard.paste(document, {});
  EXPECT_EQ(document->layerCount(), 1);
  EXPECT_THAT(dialogs.warnings, IsEmpty());

  int changes = 0;
  pasteboard.onChanged = [&changes] { ++changes; };
  desktop().setImage(filled(4, 4, Qt::red));
  EXPECT_EQ(changes, 1);
  pasteboard.look();
  EXPECT_TRUE(pasteboard.canPaste());
}

TEST_F(PasteboardTest, TheEditMenuCopiesAndPastesBetweenTabs) {
  showWindow();
  const DocumentPtr source = open(40, 30);
  QApplication::processEvents();
  selectRect(source, {10, 5, 8, 6});
  item("Edit", "Copy")->trigger();
  const DocumentPtr target = open(40, 30);
  QApplication::processEvents();
  item("Edit", "Paste")->trigger();
  EXPECT_EQ(pixel(target, 10, 5), 0xFFFFFFFFU);
  EXPECT_EQ(pixel(target, 9, 5), 0U);

  desktop().setImage(filled(4, 4, Qt::red));
  item("Edit", "Paste")->trigger();
  EXPECT_EQ(pixel(target, 19, 14), red) << "the view's centre";
  EXPECT_EQ(pixel(target, 22, 17), 0U);
}

TEST_F(PasteboardTest, ThePasteItemIsDisabledOnceItIsSeenThatThereIsNothing) {
  showWindow();
  open(40, 30);
  desktop().clear();
  QApplication::processEvents();
  Q_EMIT menu("Edit")->aboutToShow();
  EXPECT_FALSE(item("Edit", "Paste")->isEnabled());
  desktop().setImage(filled(4, 4, Qt::red));
  EXPECT_TRUE(item("Edit", "Paste")->isEnabled());
}

}  // namespace
}  // namespace orvanel
