#include "model/edit/FlatteningCost.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

#include "model/DocumentCompositor.h"
#include "model/edit/FlattenedTiles.h"

namespace orvanel::editCost {
namespace {

std::uint64_t bytesOf(const Document& document, int tiles) {
  return static_cast<std::uint64_t>(tiles) * document.compositedTexture.value()->tileBytes();
}

ChangedTiles allTiles(const Document& document) {
  std::vector<int> all(static_cast<std::size_t>(document.compositedTexture.value()->tileCount()));
  std::iota(all.begin(), all.end(), 0);
  return {.data = std::move(all), .uniform = {}};
}

}  // namespace

std::uint64_t ofFlattening(const Document& document, const PixelChange& change) {
  const std::vector<int> growth = FlattenedTiles(document, change, {}).growth();
  std::vector<bool> isFlattened(growth.size());
  for (const std::vector<int>& tiles :
       {change.tiles.data, change.tiles.uniform, DocumentCompositor::staleTiles(document)}) {
    for (const int tile : tiles) isFlattened[static_cast<std::size_t>(tile)] = true;
  }
  int tiles = 0;
  for (std::size_t i = 0; i < growth.size(); ++i) tiles += isFlattened[i] ? growth[i] : 0;
  return bytesOf(document, tiles);
}

std::uint64_t ofFlatteningTree(const Document& document, const TreeChange& change) {
  const std::vector<int> growth = FlattenedTiles(document, {}, change).growth();
  return bytesOf(document, std::accumulate(growth.begin(), growth.end(), 0));
}

FlatteningOfMoves::FlatteningOfMoves(const Document& document, const QUuid& layerID,
                                     const std::vector<int>& left)
    : tileBytes_(document.compositedTexture.value()->tileBytes()) {
  const PixelChange anywhere{.tiles = allTiles(document), .layerID = layerID};
  elsewhere_ = FlattenedTiles(document, anywhere, {}).growth();
  const std::vector<int> stale = DocumentCompositor::staleTiles(document);
  const std::vector<int> standing = stale.empty() ? elsewhere_ : FlattenedTiles(document, {}, {}).growth();
  const auto settle = [&](int tile, int tiles) {
    elsewhere_[static_cast<std::size_t>(tile)] -= tiles;
    certain_ += static_cast<std::uint64_t>(tiles);
  };
  for (const int tile : stale) settle(tile, standing[static_cast<std::size_t>(tile)]);
  for (const int tile : left) settle(tile, elsewhere_[static_cast<std::size_t>(tile)]);
  std::ranges::sort(elsewhere_, std::greater{});
}

std::uint64_t FlatteningOfMoves::bytesFor(std::uint64_t tiles) const {
  const auto count = std::min<std::uint64_t>(tiles, elsewhere_.size());
  const auto end = elsewhere_.begin() + static_cast<std::ptrdiff_t>(count);
  const auto more = std::accumulate(elsewhere_.begin(), end, std::uint64_t{0});
  return (certain_ + more) * tileBytes_;
}

}  // namespace orvanel::editCost
