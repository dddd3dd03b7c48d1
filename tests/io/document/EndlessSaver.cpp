#include "io/document/EndlessSaver.h"

#include <unistd.h>

#include <cstdlib>

#include "io/document/DocumentFixture.h"

namespace orvanel::testing {

DocumentPtr versionToSave(int version) {
  const QString name = version == 0 ? QStringLiteral("First") : QStringLiteral("Second");
  DocumentPtr document = Document::createEmpty(name, 200, 150, ColorMode::rgb16, MetalContext::shared());
  LayerNodeList layers;
  for (unsigned i = 0; i < 3; ++i) {
    layers.emplace_back(scribbledLayer(*document, name, static_cast<unsigned>(version) * 10 + i));
  }
  put(document->rootNodes, layers);
  return document;
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
