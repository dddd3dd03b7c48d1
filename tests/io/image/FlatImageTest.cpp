#include "io/image/FlatImage.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QTemporaryDir>
#include <algorithm>
#include <thread>
#include <vector>

#include "io/image/ImageHeader.h"
#include "model/DocumentCompositor.h"
#include "model/TestDoor.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using Format = Document::ImageFileFormat;

class FlatImages : public testing::Test {
 protected:
  QString saved(const QImage& image, const QString& name, const char* format, int quality = -1) {
    const QString path = folder.filePath(name);
    QImageWriter writer(path, format);
    writer.setQuality(quality);
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return path;
  }

  DocumentPtr opened(const QString& path) {
    FileResult<DocumentPtr> document = openImage(path, context);
    EXPECT_TRUE(document.has_value()) << (document ? "" : document.error().message.toStdString());
    return document ? *document : nullptr;
  }

  std::optional<QByteArray> exported(const DocumentPtr& document, Format format) {
    return exportImage(*document->composite(), document->colorMode.value(), format, context);
  }

  static const Surface& pixelsOf(const DocumentPtr& document) {
    return *document->rootNodes.value().front().layer()->texture.value();
  }

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

TEST_F(FlatImages, TheExtensionSelectsTheFormatInEitherCase) {
  EXPECT_EQ(imageFileFormat(QStringLiteral("/a/b.JPEG")), Format::jpeg);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.jpg")), Format::jpeg);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.tif")), Format::tiff);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.tiff")), Format::tiff);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.gif")), Format::gif);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.bmp")), Format::bmp);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.tar.png")), Format::png);
  EXPECT_EQ(imageFileFormat(QStringLiteral("b.webp")), std::nullopt);
  EXPECT_EQ(imageFileFormat(QStringLiteral("png")), std::nullopt);
}

TEST_F(FlatImages, TheModeFollowsColorSpaceAndDepth) {
  EXPECT_EQ(colorMode({true, 8, 8}), ColorMode::grayscale8);
  EXPECT_EQ(colorMode({true, 16, 16}), ColorMode::grayscale16);
  EXPECT_EQ(colorMode({true, 16, 32}), ColorMode::grayscale16);
  EXPECT_EQ(colorMode({false, 8, 32}), ColorMode::rgb8);
  EXPECT_EQ(colorMode({false, 16, 64}), ColorMode::rgb16);
  // A pixel size of 8 or 16 bits makes an image grey.
  EXPECT_EQ(colorMode({false, 8, 8}), ColorMode::grayscale8);
  EXPECT_EQ(colorMode({false, 5, 16}), ColorMode::grayscale8);
}

TEST_F(FlatImages, AColourPngOpensAsOneLayerNamedAfterTheFileWithItsExactPixels) {
  QImage image(300, 200, QImage::Format_ARGB32);
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 300; ++x) image.setPixel(x, y, qRgba(x & 255, y, (x + y) & 255, (x * y) & 255));
  }
  const DocumentPtr document = opened(saved(image, QStringLiteral("My Picture.v2.png"), "png"));
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->name.value(), QStringLiteral("My Picture.v2"));
  EXPECT_EQ(document->colorMode.value(), ColorMode::rgb8);
  EXPECT_EQ(document->canvasWidth.value(), 300);
  EXPECT_EQ(document->canvasHeight.value(), 200);
  EXPECT_EQ(document->sourceFileFormat.value(), Format::png);
  EXPECT_FALSE(document->isDirty.value());
  ASSERT_EQ(document->rootNodes.value().size(), 1U);
  const std::shared_ptr<Layer> layer = document->rootNodes.value().front().layer();
  EXPECT_EQ(layer->name.value(), document->name.value());
  EXPECT_EQ(document->selectedNodeID.value(), layer->id);
  EXPECT_TRUE(document->canSaveAsFlatImage());
  for (const auto& [x, y] : {std::pair{0, 0}, std::pair{17, 99}, std::pair{299, 199}, std::pair{130, 131}}) {
    const QRgb expected = image.pixel(x, y);
    const std::uint64_t got = pixelsOf(document).pixelAt(x, y);
    EXPECT_EQ(got & 0xFFU, static_cast<unsigned>(qRed(expected)));
    EXPECT_EQ(got >> 8U & 0xFFU, static_cast<unsigned>(qGreen(expected)));
    EXPECT_EQ(got >> 16U & 0xFFU, static_cast<unsigned>(qBlue(expected)));
    EXPECT_EQ(got >> 24U, static_cast<unsigned>(qAlpha(expected)));
  }
}

TEST_F(FlatImages, ADeepRgbPngOpensAsRgb16AndAGreyJpegAsGrayscale8) {
  QImage deep(20, 10, QImage::Format_RGBA64);
  deep.fill(QColor(200, 100, 50));
  EXPECT_EQ(opened(saved(deep, QStringLiteral("deep.png"), "png"))->colorMode.value(), ColorMode::rgb16);
  QImage grey(20, 10, QImage::Format_Grayscale8);
  grey.fill(77);
  const DocumentPtr photo = opened(saved(grey, QStringLiteral("grey.jpg"), "jpeg"));
  EXPECT_EQ(photo->colorMode.value(), ColorMode::grayscale8);
  EXPECT_EQ(pixelsOf(photo).pixelAt(3, 3), 77U | 0xFF00U);
  QImage deepGrey(20, 10, QImage::Format_Grayscale16);
  deepGrey.fill(Qt::gray);
  EXPECT_EQ(opened(saved(deepGrey, QStringLiteral("deepgrey.png"), "png"))->colorMode.value(),
            ColorMode::grayscale16);
}

TEST_F(FlatImages, APaletteIsColourAndOrientationIsApplied) {
  QImage palette(16, 16, QImage::Format_Indexed8);
  palette.setColorTable({qRgb(255, 0, 0), qRgb(0, 0, 255)});
  palette.fill(1);
  const DocumentPtr document = opened(saved(palette, QStringLiteral("palette.png"), "png"));
  EXPECT_EQ(document->colorMode.value(), ColorMode::rgb8);
  EXPECT_EQ(pixelsOf(document).pixelAt(1, 1), 0xFFFF0000U);

  QImage wide(40, 20, QImage::Format_RGB32);
  wide.fill(Qt::green);
  const QString path = folder.filePath(QStringLiteral("turned.jpg"));
  QImageWriter writer(path, "jpeg");
  writer.setTransformation(QImageIOHandler::TransformationRotate90);
  ASSERT_TRUE(writer.write(wide));
  const DocumentPtr turned = opened(path);
  EXPECT_EQ(turned->canvasWidth.value(), 20);
  EXPECT_EQ(turned->canvasHeight.value(), 40);
}

TEST_F(FlatImages, AnEmbeddedProfileIsConvertedToSrgb) {
  QImage image(8, 8, QImage::Format_RGB32);
  image.fill(qRgb(100, 150, 200));
  image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
  const DocumentPtr document = opened(saved(image, QStringLiteral("wide.png"), "png"));
  image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
  const QRgb expected = image.pixel(2, 2);
  const std::uint64_t got = pixelsOf(document).pixelAt(2, 2);
  EXPECT_NEAR(static_cast<int>(got & 0xFFU), qRed(expected), 1);
  EXPECT_NE(got & 0xFFU, 100U);
}

TEST_F(FlatImages, GreyStaysGreyEvenIfTheReaderExpandsIt) {
  QImage grey(20, 10, QImage::Format_Grayscale8);
  grey.fill(90);
  EXPECT_EQ(opened(saved(grey, QStringLiteral("grey.tiff"), "tiff"))->colorMode.value(),
            ColorMode::grayscale8);
  EXPECT_EQ(opened(saved(grey, QStringLiteral("grey.png"), "png"))->colorMode.value(), ColorMode::grayscale8);
  QImage colour(20, 10, QImage::Format_RGB32);
  colour.fill(Qt::gray);
  EXPECT_EQ(opened(saved(colour, QStringLiteral("colour.tiff"), "tiff"))->colorMode.value(), ColorMode::rgb8);
}

TEST_F(FlatImages, GreyWithAlphaIsReadFromTheHeaderAndDamagedHeadersAreReadWithinBounds) {
  QByteArray greyAlpha("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x10\x04", 26);
  ASSERT_TRUE(traitsOfPng(greyAlpha).has_value());
  EXPECT_TRUE(traitsOfPng(greyAlpha)->isMonochrome);
  EXPECT_EQ(colorMode(*traitsOfPng(greyAlpha)), ColorMode::grayscale16);
  EXPECT_FALSE(traitsOfPng(greyAlpha.first(25)).has_value());

  QByteArray tiff("II*\0\x08\0\0\0\xff\xff\x06\x01\x03\0\x01\0\0\0\x01\0\0\0", 22);
  for (qsizetype length = 0; length <= tiff.size(); ++length) {
    QByteArray cut = tiff.first(length);
    QBuffer buffer(&cut);
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    EXPECT_FALSE(traitsOfTiff(buffer).has_value()) << "the directory promises more entries than there are";
  }
}

TEST_F(FlatImages, AProfileAppliesEvenIfAllPixelsOfAColorImageAreGrey) {
  QImage image(8, 8, QImage::Format_RGB32);
  image.fill(qRgb(100, 100, 100));
  image.setColorSpace(QColorSpace(QColorSpace::Primaries::SRgb, 1.0F));
  const DocumentPtr document = opened(saved(image, QStringLiteral("linear.png"), "png"));
  EXPECT_GT(pixelsOf(document).pixelAt(2, 2) & 0xFFU, 150U);
}

TEST_F(FlatImages, AnImageTooLargeForMemoryIsRejected) {
  QImage image(500, 400, QImage::Format_RGB32);
  image.fill(Qt::red);
  const QString path = saved(image, QStringLiteral("big.png"), "png");
  const ScopedMemoryLimit limit(100000);
  const FileResult<FlatImage> result = readFlatImage(path, context);
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().message, QStringLiteral("There is not enough memory for this image."));
}

TEST_F(FlatImages, AFileTooLargeForMemoryIsRejectedInEveryFormat) {
  for (const char* extension : {"heic", "png", "tiff", "svg"}) {
    QFile file(folder.filePath(QStringLiteral("sparse.") + QLatin1String(extension)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(qint64{1} << 40U));
    const FileResult<FlatImage> result = readFlatImage(file.fileName(), context);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error().message, QStringLiteral("There is not enough memory for this image."));
  }
}

TEST_F(FlatImages, ExportFailsWithoutMemory) {
  const DocumentPtr document = Document::create(QStringLiteral("Deep"), 50, 40, ColorMode::rgb16, context);
  const ConstTexture composite = document->composite();
  const tileMemory::ScopedSurfaceFailure refusal(0);
  EXPECT_FALSE(exportImage(*composite, ColorMode::rgb16, Format::png, context));
}

TEST_F(FlatImages, AnImageIsNotFlattenedWithoutTheMemoryForItAndItsFolders) {
  constexpr int side = 2 * tileSide;
  const DocumentPtr document =
      Document::create(QStringLiteral("Deep"), side, side, ColorMode::rgb16, context);
  const QUuid layer = document->rootNodes.value().front().id();
  QUuid inner = layer;
  for (const char* name : {"Inner", "Outer"}) {
    document->selectNode(std::nullopt);
    document->addFolder(QLatin1String(name));
    const QUuid outer = *document->selectedNodeID.value();
    document->setOpacity(outer, 0.5F);
    document->moveNode(inner, outer);
    inner = outer;
  }
  static_cast<void>(document->composite());
  // One tile of data, in the image and in both folders.
  Surface& pixels = const_cast<Surface&>(*document->findNode(layer)->layer()->texture.value());
  const std::uint64_t pixel = 0x3C003C0000000000U;
  pixels.writeRect({5, 5, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), sizeof(pixel));
  document->setOpacity(layer, 0.75F);
  const auto composite = document->freezeComposite();
  const std::uint64_t missing = composite->bytesToFinish();
  EXPECT_EQ(missing, 3U * tilePixels * 8U);
  const QString path = folder.filePath(QStringLiteral("deep.png"));
  {
    const ScopedMemoryLimit limit(missing - 1);
    const auto written = writeFlatImage(composite.get(), ColorMode::rgb16, Format::png, path, context);
    ASSERT_FALSE(written.has_value());
    EXPECT_EQ(written.error().code, DocumentIOError::exportFailed);
    EXPECT_EQ(written.error().message, QStringLiteral("There is not enough memory to write this image."));
  }
  EXPECT_EQ(composite->bytesToFinish(), missing);
  EXPECT_TRUE(writeFlatImage(composite.get(), ColorMode::rgb16, Format::png, path, context).has_value());
  EXPECT_EQ(composite->bytesToFinish(), 0U);
}

TEST_F(FlatImages, OtherDecodableFormatsHaveNoSourceFormat) {
  QImage image(5, 5, QImage::Format_RGB32);
  image.fill(Qt::red);
  const DocumentPtr document = opened(saved(image, QStringLiteral("picture.ppm"), "ppm"));
  EXPECT_EQ(document->sourceFileFormat.value(), std::nullopt);
}

TEST_F(FlatImages, AFileThatIsNotAnImageFailsToLoadWithAReason) {
  const QString path = folder.filePath(QStringLiteral("text.png"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("This is not an image.");
  file.close();
  for (const QString& wrong : {path, folder.filePath(QStringLiteral("missing.png"))}) {
    const FileResult<DocumentPtr> result = openImage(wrong, context);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error().code, DocumentIOError::loadFailed);
    EXPECT_FALSE(result.error().message.isEmpty());
  }
}

TEST_F(FlatImages, ATruncatedImageNeitherCrashesNorHangs) {
  QImage image(64, 48, QImage::Format_RGB32);
  image.fill(Qt::cyan);
  for (const char* format : {"png", "jpeg", "bmp", "tiff"}) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    ASSERT_TRUE(image.save(&buffer, format));
    for (qsizetype length = 0; length < bytes.size(); length += 1 + bytes.size() / 97) {
      QFile file(folder.filePath(QStringLiteral("cut")));
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
      file.write(bytes.first(length));
      file.close();
      const FileResult<FlatImage> result = readFlatImage(file.fileName(), context);
      if (result) {
        EXPECT_EQ(result->pixels->width(), 64);
      }
    }
  }
}

TEST_F(FlatImages, ATooLargeImageIsRefusedBeforeItIsDecoded) {
  QFile file(folder.filePath(QStringLiteral("huge.ppm")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("P6 100000 100000 255\n");
  file.close();
  EXPECT_FALSE(readFlatImage(file.fileName(), context).has_value());
}

TEST_F(FlatImages, EveryFormatIsWrittenAndReadsBack) {
  QImage image(90, 70, QImage::Format_RGB32);
  image.fill(qRgb(200, 40, 90));
  const DocumentPtr document = opened(saved(image, QStringLiteral("plain.png"), "png"));
  for (const Format format : {Format::png, Format::jpeg, Format::tiff, Format::gif, Format::bmp}) {
    const std::optional<QByteArray> bytes = exported(document, format);
    ASSERT_TRUE(bytes.has_value()) << static_cast<int>(format);
    const QImage back = QImage::fromData(*bytes);
    ASSERT_EQ(back.size(), image.size()) << static_cast<int>(format);
    const QRgb pixel = back.pixel(40, 40);
    EXPECT_NEAR(qRed(pixel), 200, 3) << static_cast<int>(format);
    EXPECT_NEAR(qGreen(pixel), 40, 3) << static_cast<int>(format);
    EXPECT_NEAR(qBlue(pixel), 90, 3) << static_cast<int>(format);
  }
}

/// Records progress; only the working thread may report it.
struct ToldProgress {
  std::vector<double> steps;

  Progress listener() {
    return Progress([this, worker = std::this_thread::get_id()](double done) {
      EXPECT_EQ(std::this_thread::get_id(), worker);
      steps.push_back(done);
    });
  }
  void expectWhole(std::size_t atLeast) const {
    ASSERT_GE(steps.size(), atLeast);
    EXPECT_TRUE(std::ranges::is_sorted(steps));
    EXPECT_GT(steps.front(), 0.0);
    EXPECT_LT(steps.front(), 1.0);
    EXPECT_EQ(steps.back(), 1.0);
  }
};

TEST_F(FlatImages, OpeningReportsHeaderPixelsAndTiles) {
  QImage color(90, 70, QImage::Format_RGB32);
  color.fill(qRgb(200, 40, 90));
  for (const QImage& image : {color, color.convertToFormat(QImage::Format_Grayscale8)}) {
    ToldProgress told;
    ASSERT_TRUE(openImage(saved(image, QStringLiteral("told.png"), "png"), context, told.listener()));
    told.expectWhole(4);
  }
  ToldProgress told;
  EXPECT_FALSE(openImage(folder.filePath(QStringLiteral("missing.png")), context, told.listener()));
  EXPECT_TRUE(told.steps.empty() || told.steps.back() < 1.0);
}

TEST_F(FlatImages, WritingReplacesTheFileAndReportsEveryStep) {
  Surface composite(PixelFormat::rgba8Unorm, 90, 70);
  composite.fill(0xFF5A28C8U);
  for (const Format format : {Format::png, Format::jpeg, Format::tiff, Format::gif, Format::bmp}) {
    const QString path = folder.filePath(QStringLiteral("written"));
    ToldProgress told;
    ASSERT_TRUE(writeFlatImage(composite, ColorMode::rgb8, format, path, context, told.listener()));
    told.expectWhole(3);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), exportImage(composite, ColorMode::rgb8, format, context));
  }
}

TEST_F(FlatImages, ALargePngReportsItsBands) {
  const Surface composite(PixelFormat::rgba8Unorm, 2000, 1000);
  ToldProgress told;
  ASSERT_TRUE(exportImage(composite, ColorMode::rgb8, Format::png, context, told.listener()));
  told.expectWhole(8);
}

TEST_F(FlatImages, CancelledWorkLeavesNoImageAndNoFile) {
  QImage picture(300, 200, QImage::Format_RGB32);
  picture.fill(qRgb(200, 40, 90));
  Surface composite(PixelFormat::rgba8Unorm, 300, 200);
  composite.fill(0xFF5A28C8U);
  for (const double cancelledAt : {0.0, 0.3, 0.75}) {
    const auto cancellation = std::make_shared<Cancellation>();
    const Progress progress(
        [&](double done) {
          if (done >= cancelledAt) cancellation->cancel();
        },
        cancellation);
    const auto opened = readFlatImage(saved(picture, QStringLiteral("a.png"), "png"), context, progress);
    ASSERT_FALSE(opened.has_value()) << cancelledAt;
    EXPECT_TRUE(opened.error().isCancelled);
  }
  for (const Format format : {Format::png, Format::jpeg, Format::tiff, Format::gif, Format::bmp}) {
    const auto cancellation = std::make_shared<Cancellation>();
    const Progress progress([&](double) { cancellation->cancel(); }, cancellation);
    const QString path = folder.filePath(QStringLiteral("cancelled"));
    const auto written = writeFlatImage(composite, ColorMode::rgb8, format, path, context, progress);
    ASSERT_FALSE(written.has_value());
    EXPECT_TRUE(written.error().isCancelled);
    EXPECT_FALSE(QFile::exists(path));
  }
}

TEST_F(FlatImages, AnUnwritableDestinationFailsTheExport) {
  const Surface composite(PixelFormat::rgba8Unorm, 9, 7);
  ToldProgress told;
  const auto result =
      writeFlatImage(composite, ColorMode::rgb8, Format::png,
                     folder.filePath(QStringLiteral("no such folder/image.png")), context, told.listener());
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().code, DocumentIOError::exportFailed);
  EXPECT_FALSE(result.error().message.isEmpty());
  EXPECT_LT(told.steps.back(), 1.0);
}

TEST_F(FlatImages, APngKeepsStraightAlphaAndCarriesTheSrgbTag) {
  QImage image(40, 30, QImage::Format_ARGB32);
  image.fill(qRgba(250, 120, 10, 3));
  const std::optional<QByteArray> bytes =
      exported(opened(saved(image, QStringLiteral("faint.png"), "png")), Format::png);
  ASSERT_TRUE(bytes.has_value());
  EXPECT_TRUE(bytes->first(64).contains("sRGB"));
  const QImage back = QImage::fromData(*bytes);
  EXPECT_EQ(back.pixel(5, 5), qRgba(250, 120, 10, 3));
}

TEST_F(FlatImages, FormatsWithoutAlphaAreWrittenOverWhite) {
  QImage image(32, 32, QImage::Format_ARGB32);
  image.fill(qRgba(0, 0, 0, 0));
  const DocumentPtr document = opened(saved(image, QStringLiteral("clear.png"), "png"));
  for (const Format format : {Format::jpeg, Format::bmp}) {
    EXPECT_EQ(QImage::fromData(*exported(document, format)).pixel(3, 3), qRgb(255, 255, 255));
  }
  const std::optional<QByteArray> gif = exported(document, Format::gif);
  EXPECT_EQ(qAlpha(QImage::fromData(*gif).pixel(3, 3)), 0);
  EXPECT_TRUE(gif->startsWith("GIF89a"));
}

TEST_F(FlatImages, SixteenBitDocumentsAreWrittenAtEightBitsAndClamped) {
  const DocumentPtr document = Document::create(QStringLiteral("Deep"), 50, 40, ColorMode::rgb16, context);
  Surface& pixels = test::writable(document->rootNodes.value().front().layer()->texture.value());
  pixels.fill(0x3C00000038004000ULL);  // red 2.0, green 0.5, blue 0, opaque
  for (const Format format : {Format::png, Format::tiff, Format::bmp}) {
    const QImage back = QImage::fromData(*exported(document, format));
    EXPECT_LE(back.depth(), 32) << static_cast<int>(format);
    EXPECT_EQ(back.pixel(10, 10), qRgb(255, 128, 0)) << static_cast<int>(format);
  }
}

TEST_F(FlatImages, ADocumentWithASecondLayerIsNotFlat) {
  QImage image(10, 10, QImage::Format_RGB32);
  image.fill(Qt::blue);
  const DocumentPtr document = opened(saved(image, QStringLiteral("flat.png"), "png"));
  EXPECT_TRUE(document->canSaveAsFlatImage());
  document->addLayer(QStringLiteral("Layer"));
  EXPECT_FALSE(document->canSaveAsFlatImage());
}

}  // namespace
}  // namespace orvanel
