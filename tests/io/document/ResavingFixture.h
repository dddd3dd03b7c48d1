// A document that is saved again and again, on disks that count what they do.
#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <vector>

#include "io/document/DocumentFixture.h"
#include "io/files/FileOperations.h"

namespace orvanel::testing {

/// Counts the bytes that are written and those that are copied from another file.
class CountingDisk : public FileOperations {
 public:
  std::int64_t written = 0;
  std::int64_t copied = 0;

  ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset) override {
    written += static_cast<std::int64_t>(count);
    return FileOperations::writeAt(file, bytes, count, offset);
  }
  ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                    std::size_t count) override {
    copied += static_cast<std::int64_t>(count);
    return FileOperations::copyRange(from, fromOffset, to, toOffset, count);
  }
  int shareRange(int /*from*/, std::int64_t /*fromOffset*/, int /*to*/, std::int64_t /*toOffset*/,
                 std::size_t /*count*/) override {
    errno = EOPNOTSUPP;
    return -1;
  }

 protected:
  /// What sharing comes to for whoever reads. False if a part can't be copied.
  static bool copyInstead(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                          std::size_t count) {
    FileOperations disk;
    for (std::size_t done = 0; done < count;) {
      const ssize_t part = disk.copyRange(from, fromOffset + static_cast<std::int64_t>(done), to,
                                          toOffset + static_cast<std::int64_t>(done), count - done);
      if (part <= 0) return false;
      done += static_cast<std::size_t>(part);
    }
    return true;
  }
};

class ResavingTest : public ::testing::Test {
 protected:
  static constexpr int width = 1000;
  static constexpr int height = 900;

  ResavingTest() {
    DocumentContents contents{
        .name = QStringLiteral("Layers"), .width = width, .height = height, .colorMode = ColorMode::rgb16};
    for (unsigned i = 0; i < 3; ++i) {
      contents.rootNodes.emplace_back(
          std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Layer %1").arg(i)},
                                  scribbled(PixelFormat::rgba16Float, width, height, i),
                                  i == 1 ? scribbledMask(width, height, 7) : nullptr));
    }
    contents.selectedNodeID = contents.rootNodes.front().id();
    document_ = Document::create(std::move(contents), MetalContext::shared());
    static_cast<void>(document_->composite());
  }

  QString path() const { return directory_.filePath(QStringLiteral("layers.tessel")); }
  std::shared_ptr<Layer> layer(int index) const {
    return document_->rootNodes.value()[static_cast<std::size_t>(index)].layer();
  }

  /// Saves, and checks that the file holds the document.
  void save(const QString& to) {
    ASSERT_TRUE(DocumentIO::saveSynchronously(document_, to, MetalContext::shared()).has_value());
    const auto loaded = DocumentIO::loadSynchronously(to, MetalContext::shared());
    ASSERT_TRUE(loaded.has_value()) << loaded.error().message.toStdString();
    EXPECT_EQ(firstDifference(*document_, **loaded), QString());
  }
  void saveCounting(CountingDisk& disk) {
    const ScopedFileOperations counting(disk);
    save(path());
  }
  /// Fills a few pixels of a layer.
  void edit(int index, int x, int y) {
    document_->selectNode(layer(index)->id);
    const Texture mask = MetalContext::shared().makeTexture(maskPixelFormat, width, height);
    const std::vector<std::uint16_t> ones(30 * 30, 0x3C00);
    mask->writeRect({x, y, 30, 30}, reinterpret_cast<const std::byte*>(ones.data()), 30 * 2);
    document_->selectMask(LayerMask(QUuid::createUuid(), std::make_shared<MaskTexture>(mask), true));
    document_->fillSelection({0.3F, 0.6F, 0.9F, 1.0F});
    document_->deselect();
  }

  QTemporaryDir directory_;
  DocumentPtr document_;
};

}  // namespace orvanel::testing
