#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

/// The piece of an edge within a slab of a row: where it enters and where it leaves.
struct Crossing {
  double enter;
  double leave;
  [[nodiscard]] double middle() const { return enter + leave; }
};

/// Collects one row's coverage as differences from each column to the next.
class RowAccumulator {
 public:
  explicit RowAccumulator(int width)
      : width_(width),
        differences_(static_cast<std::size_t>(width) + 2),
        touched_(differences_.size() / 64 + 1) {}

  /// Adds `sign` times all that lies to the right of a piece of an edge, over a height of `height`.
  void add(Crossing piece, double height, double sign) {
    double left = std::min(piece.enter, piece.leave);
    const double right = std::max(piece.enter, piece.leave);
    const double span = right - left;
    if (left >= width_) return;
    if (right <= 0.0) return addAt(0, sign * height, 0.0);
    if (span < 1e-12) {
      const int column = static_cast<int>(left);
      return addAt(column, sign * height, left - column);
    }
    const double perColumn = sign * height / span;
    if (left < 0.0) {
      addAt(0, -left * perColumn, 0.0);
      left = 0.0;
    }
    for (int column = static_cast<int>(left); column < width_ && left < right; ++column) {
      const double end = std::min(right, column + 1.0);
      addAt(column, (end - left) * perColumn, (left + end) / 2.0 - column);
      left = end;
    }
  }

  /// Takes the row's runs out and is empty again.
  void finish(RowCoverage& row) {
    double sum = 0.0;
    for (int begin = nextTouched(0); begin < width_;) {
      sum += std::exchange(differences_[static_cast<std::size_t>(begin)], 0.0);
      const int end = nextTouched(begin + 1);
      // Sums of many pieces miss 0 and 1 by a little; such pixels lie wholly outside or inside.
      const double value = sum > 1.0 - 1e-9 ? 1.0 : sum;
      if (value > 1e-9) row.push_back({begin, end, static_cast<float>(value)});
      begin = end;
    }
    std::fill(touched_.begin(), touched_.end(), 0);
  }

 private:
  /// `offset`: how far right of the column's left side the piece lies on average.
  void addAt(int column, double amount, double offset) {
    const auto at = static_cast<std::size_t>(column);
    differences_[at] += amount * (1.0 - offset);
    differences_[at + 1] += amount * offset;
    touch(at);
    touch(at + 1);
  }

  void touch(std::size_t column) { touched_[column / 64] |= std::uint64_t{1} << (column % 64); }

  /// The first touched column from `from` on; the width when none is left.
  [[nodiscard]] int nextTouched(int from) const {
    auto word = static_cast<std::size_t>(from) / 64;
    std::uint64_t bits = touched_[word] & (~std::uint64_t{0} << (from % 64));
    while (bits == 0 && ++word < touched_.size()) bits = touched_[word];
    if (bits == 0) return width_;
    return std::min(static_cast<int>(word * 64) + std::countr_zero(bits), width_);
  }

  int width_;
  std::vector<double> differences_;
  std::vector<std::uint64_t> touched_;  ///< a bit for each column whose difference was set
};

/// Which of the pieces to the left of a place are an odd number decides what they enclose.
double signOf(std::size_t index) {
  return index % 2 == 0 ? 1.0 : -1.0;
}

void addSlab(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row);

/// Adds pieces that cross each other, with `before` others to their left: halves the slab at a crossing.
void addTangle(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row) {
  for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
    const double above = pieces[i + 1].enter - pieces[i].enter;
    const double below = pieces[i + 1].leave - pieces[i].leave;
    // Edges that run closer than this together enclose nothing that shows, wherever they cross.
    if (above * below >= 0.0 || std::max(std::abs(above), std::abs(below)) < 1e-9) continue;
    const double at = above / (above - below);
    // A crossing at the slab's very rim moves no area worth splitting for.
    if (at * height < 1e-7 || (1.0 - at) * height < 1e-7) continue;
    std::vector<Crossing> rest(pieces.begin(), pieces.end());
    for (std::size_t j = 0; j < pieces.size(); ++j) {
      const double split = pieces[j].enter + (pieces[j].leave - pieces[j].enter) * at;
      pieces[j].leave = split;
      rest[j].enter = split;
    }
    addSlab(pieces, before, height * at, row);
    addSlab(rest, before, height * (1.0 - at), row);
    return;
  }
  std::sort(pieces.begin(), pieces.end(),
            [](const Crossing& a, const Crossing& b) { return a.middle() < b.middle(); });
  for (std::size_t i = 0; i < pieces.size(); ++i) row.add(pieces[i], height, signOf(before + i));
}

/// Adds a slab that every piece crosses from top to bottom. Most pieces keep their place among the others
/// and are added as they are; those that change places are handled together.
void addSlab(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row) {
  std::sort(pieces.begin(), pieces.end(), [](const Crossing& a, const Crossing& b) {
    return a.enter < b.enter || (a.enter == b.enter && a.leave < b.leave);
  });
  std::vector<double> lowestAfter(pieces.size() + 1, std::numeric_limits<double>::infinity());
  for (std::size_t i = pieces.size(); i-- > 0;)
    lowestAfter[i] = std::min(lowestAfter[i + 1], pieces[i].leave);
  std::size_t first = 0;
  double highest = -std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    highest = std::max(highest, pieces[i].leave);
    if (highest > lowestAfter[i + 1]) continue;
    if (i == first) {
      row.add(pieces[i], height, signOf(before + i));
    } else {
      addTangle(pieces.subspan(first, i + 1 - first), before + first, height, row);
    }
    first = i + 1;
  }
}

}  // namespace

double PolygonShape::Edge::xAt(double y) const {
  const double t = (y - upper.y) / (lower.y - upper.y);
  return upper.x + (lower.x - upper.x) * std::clamp(t, 0.0, 1.0);
}

PolygonShape::PolygonShape(std::span<const ShapePoint> points, int canvasWidth, int canvasHeight)
    : canvasWidth_(canvasWidth),
      edgesOfBand_(static_cast<std::size_t>((canvasHeight + tileSide - 1) / tileSide)) {
  std::vector<ShapePoint> sound;
  for (const ShapePoint& point : points) {
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) continue;
    // Far enough out for any canvas, near enough for double precision to tell pixels apart.
    constexpr double farthest = 1e7;
    sound.push_back({std::clamp(point.x, -farthest, farthest), std::clamp(point.y, -farthest, farthest)});
  }
  for (std::size_t i = 0; i < sound.size(); ++i) {
    const ShapePoint& a = sound[i];
    const ShapePoint& b = sound[(i + 1) % sound.size()];
    if (a.y == b.y) continue;
    const Edge edge = a.y < b.y ? Edge{a, b} : Edge{b, a};
    if (edge.lower.y <= 0.0 || edge.upper.y >= canvasHeight) continue;
    const auto first = static_cast<std::size_t>(std::max(edge.upper.y, 0.0)) / tileSide;
    const auto last = static_cast<std::size_t>(std::min(edge.lower.y, canvasHeight - 1.0)) / tileSide;
    for (std::size_t band = first; band <= last; ++band) {
      edgesOfBand_[band].push_back(static_cast<int>(edges_.size()));
    }
    edges_.push_back(edge);
  }
}

void PolygonShape::cover(int firstRow, std::span<RowCoverage> rows) const {
  const std::vector<int>& band = edgesOfBand_[static_cast<std::size_t>(firstRow / tileSide)];
  if (band.empty()) return;
  RowAccumulator accumulator(canvasWidth_);
  std::vector<const Edge*> active;
  std::vector<double> levels;
  std::vector<Crossing> pieces;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const double top = firstRow + static_cast<double>(i);
    const double bottom = top + 1.0;
    active.clear();
    levels.assign({top, bottom});
    for (const int index : band) {
      const Edge& edge = edges_[static_cast<std::size_t>(index)];
      if (edge.lower.y <= top || edge.upper.y >= bottom) continue;
      active.push_back(&edge);
      if (edge.upper.y > top) levels.push_back(edge.upper.y);
      if (edge.lower.y < bottom) levels.push_back(edge.lower.y);
    }
    std::sort(levels.begin(), levels.end());
    for (std::size_t level = 0; level + 1 < levels.size(); ++level) {
      const double upper = levels[level];
      const double lower = levels[level + 1];
      if (lower <= upper) continue;
      pieces.clear();
      for (const Edge* edge : active) {
        if (edge->upper.y <= upper && edge->lower.y >= lower) {
          pieces.push_back({edge->xAt(upper), edge->xAt(lower)});
        }
      }
      addSlab(pieces, 0, lower - upper, accumulator);
    }
    accumulator.finish(rows[i]);
  }
}

}  // namespace orvanel::kernels
