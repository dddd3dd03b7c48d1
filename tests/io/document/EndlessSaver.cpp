#include "io/document/EndlessSaver.h"

#include <unistd.h>

#include <cstdlib>

#include "io/document/DocumentFixture.h"

namespace orvanel::testing {
namespace {

constexpr int width = 600;
constexpr int height = 550;

DocumentPtr documentOf(const QString& name, unsigned firstSeed) {
  DocumentContents contents{
      .name = QStringLiteral("Saved"), .width = width, .height = height, .colorMode = ColorMode::rgb16};
  for (unsigned i = 0; i < 3; ++i) {
    const Texture pixels = scribbled(layerPixelFormat(contents.colorMode), width, height, firstSeed + i);
    contents.rootNodes.emplace_back(std::make_shared<Layer>(NodeValues{.name = name}, pixels));
  }
  contents.selectedNodeID = contents.rootNodes.front().id();
  return Document::create(std::move(contents), MetalContext::shared());
}

/// One step of the history, which changes some of a layer's chunks.
void edit(Document& document) {
  const Texture mask = MetalContext::shared().makeTexture(maskPixelFormat, width, height);
  const std::vector<std::uint16_t> ones(40 * 40, 0x3C00);
  mask->writeRect({300, 280, 40, 40}, reinterpret_cast<const std::byte*>(ones.data()), 40 * 2);
  document.selectMask(LayerMask(QUuid::createUuid(), std::make_shared<MaskTexture>(mask), true));
  document.fillSelection({0.9F, 0.1F, 0.4F, 1.0F});
}

}  // namespace

DocumentPtr versionToSave(Versions kind, int version) {
  if (kind == Versions::separate) {
    return documentOf(version == 0 ? QStringLiteral("First") : QStringLiteral("Second"),
                      static_cast<unsigned>(version) * 10);
  }
  const DocumentPtr document = documentOf(QStringLiteral("Edited"), 0);
  if (version == 1) edit(*document);
  return document;
}

void saveForever(Versions kind, const QString& path) {
  const std::array versions{versionToSave(kind, 0), versionToSave(kind, 1)};
  for (std::size_t i = 0;; ++i) {
    const bool isEdited = kind == Versions::edited;
    if (isEdited && i % 2 == 1) edit(*versions[0]);
    if (isEdited && i % 2 == 0 && i > 0) versions[0]->undo();
    const DocumentPtr& document = isEdited ? versions[0] : versions[i % 2];
    if (!DocumentIO::saveSynchronously(document, path, MetalContext::shared())) std::_Exit(1);
    constexpr char saved = 's';
    if (::write(STDOUT_FILENO, &saved, 1) != 1) std::_Exit(2);
  }
}

}  // namespace orvanel::testing
