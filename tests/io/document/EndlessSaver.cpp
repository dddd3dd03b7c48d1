#include "io/document/EndlessSaver.h"

#include <unistd.h>

#include <cstdlib>

#include "io/document/DocumentFixture.h"

namespace orvanel::testing {

DocumentPtr versionToSave(int version) {
  const QString name = version == 0 ? QStringLiteral("First") : QStringLiteral("Second");
  DocumentContents contents{.name = name, .width = 200, .height = 150, .colorMode = ColorMode::rgb16};
  for (unsigned i = 0; i < 3; ++i) {
    const Texture pixels =
        scribbled(layerPixelFormat(contents.colorMode), 200, 150, static_cast<unsigned>(version) * 10 + i);
    contents.rootNodes.emplace_back(std::make_shared<Layer>(NodeValues{.name = name}, pixels));
  }
  return Document::create(std::move(contents), MetalContext::shared());
}

void saveForever(const QString& path) {
  const std::array versions{versionToSave(0), versionToSave(1)};
  for (std::size_t i = 0;; ++i) {
    if (!DocumentIO::saveSynchronously(versions[i % 2], path, MetalContext::shared())) std::_Exit(1);
    constexpr char saved = 's';
    if (::write(STDOUT_FILENO, &saved, 1) != 1) std::_Exit(2);
  }
}

}  // namespace orvanel::testing
