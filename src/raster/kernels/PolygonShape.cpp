#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "raster/kernels/DensePolygon.h"
#include "raster/kernels/EdgePieces.h"
#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

using Edge = PolygonShape::Edge;

/// The part of an edge within a horizontal slab of a row: x at the slab's top and at its bottom.
struct Crossing {
  double enter;
  double leave;
};

/// Collects one row's coverage as changes from each column to the next.
class RowAccumulator {
 public:
  RowAccumulator(int width, int tilesAcross)
      : width_(width),
        changes_((static_cast<std::size_t>(tilesAcross) + 1) * tileSide),
        touched_(static_cast<std::size_t>(tilesAcross) + 1) {}

  /// Adds `amount`, a height with a sign, times all that lies to the right of a piece of an edge.
  void add(const Crossing& piece, double amount) {
    pieces_.enter[pieceCount_] = piece.enter;
    pieces_.leave[pieceCount_] = piece.leave;
    pieces_.amount[pieceCount_] = amount;
    if (++pieceCount_ == PieceBlock::capacity) addBlock();
  }

  /// Writes the row and clears the accumulator.
  void writeTo(MaskBand& band, int y) {
    addBlock();
    double sum = std::exchange(beforeCanvas_, 0.0);
    alignas(64) std::array<float, tileSide> values;
    for (int tileX = 0; tileX < band.tilesAcross(); ++tileX) {
      const auto tile = static_cast<std::size_t>(tileX);
      const bool isTouched = std::exchange(touched_[tile], std::uint8_t{0}) != 0;
      if (isTouched && sumChanges(&changes_[tile * tileSide], sum, values.data())) {
        band.write(tileX, y, values.data());
      } else {
        band.writeEven(tileX, y, static_cast<float>(std::clamp(sum - coverageMargin, 0.0, 1.0)));
      }
    }
  }

 private:
  void addBlock() {
    sharePieces(pieces_, pieceCount_, width_, shares_);
    for (std::size_t i = 0; i < pieceCount_; ++i) {
      const int column = shares_.columns[i];
      if (column < 0) {
        addWide(pieces_.enter[i], pieces_.leave[i], pieces_.amount[i]);
        continue;
      }
      const auto first = static_cast<std::size_t>(column);
      const std::size_t count = shares_.changes.size();
      for (std::size_t j = 0; j < count; ++j) changes_[first + j] += shares_.changes[j][i];
      touched_[first / tileSide] = touched_[(first + count - 1) / tileSide] = 1;
    }
    pieceCount_ = 0;
  }

  /// A piece across many columns, or one that begins beyond the canvas.
  void addWide(double enter, double leave, double amount) {
    double left = std::min(enter, leave);
    double right = std::max(enter, leave);
    if (left >= width_) return;
    if (right <= 0.0) {
      beforeCanvas_ += amount;
      return;
    }
    const double perColumn = amount / (right - left);
    if (left < 0.0) {
      beforeCanvas_ -= left * perColumn;
      left = 0.0;
    }
    right = std::min(right, static_cast<double>(width_));
    auto column = static_cast<std::size_t>(left);
    const auto lastColumn = static_cast<std::size_t>(right) + 1;
    for (std::size_t tile = column / tileSide; tile <= lastColumn / tileSide; ++tile) touched_[tile] = 1;
    double passed = 0.0;
    for (; left < right; ++column) {
      const auto columnBegin = static_cast<double>(column);
      const double end = std::min(right, columnBegin + 1.0);
      const double share = (end - left) * perColumn;
      const double offset = (left + end) / 2.0 - columnBegin;
      changes_[column] += passed + share * (1.0 - offset);
      passed = share * offset;
      left = end;
    }
    changes_[column] += passed;
  }

  int width_;
  double beforeCanvas_ = 0.0;          ///< what lies to the left of the first column
  std::vector<double> changes_;        ///< with room for what begins in the last column
  std::vector<std::uint8_t> touched_;  ///< for each tile, whether something may change in it
  PieceBlock pieces_;                  ///< not yet added
  std::size_t pieceCount_ = 0;
  PieceShares shares_;
};

/// By the even-odd rule, pieces alternate between entering and leaving the polygon.
double signOf(std::size_t index) {
  return index % 2 == 0 ? 1.0 : -1.0;
}

/// Orders pieces from left to right along the slab's top.
bool isLeftOf(const Crossing& a, const Crossing& b) {
  return a.enter < b.enter || (a.enter == b.enter && a.leave < b.leave);
}

double splitOf(const Crossing& piece, double at) {
  return piece.enter + (piece.leave - piece.enter) * at;
}

/// For each index, the least `leave` among the pieces from there on; infinity at the end.
template <typename LeaveOf>
void findLowestAfter(std::size_t count, const LeaveOf& leaveOf, std::vector<double>& lowestAfter) {
  lowestAfter.resize(count + 1);
  double lowest = std::numeric_limits<double>::infinity();
  lowestAfter[count] = lowest;
  for (std::size_t i = count; i-- > 0;) {
    lowest = std::min(lowest, leaveOf(i));
    lowestAfter[i] = lowest;
  }
}

/// Calls `visit(first, count)` for each group of pieces that change places among each other, which most
/// pieces do with none.
template <typename LeaveOf, typename Visit>
void forEachGroup(std::size_t count, const LeaveOf& leaveOf, const std::vector<double>& lowestAfter,
                  const Visit& visit) {
  std::size_t first = 0;
  double highest = -std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < count; ++i) {
    highest = std::max(highest, leaveOf(i));
    if (highest > lowestAfter[i + 1]) continue;
    visit(first, i + 1 - first);
    first = i + 1;
  }
}

void addTangle(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row);

/// Adds pieces in order, with `before` others to their left.
void addPieces(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row) {
  const auto leaveOf = [pieces](std::size_t i) { return pieces[i].leave; };
  std::vector<double> lowestAfter;
  findLowestAfter(pieces.size(), leaveOf, lowestAfter);
  forEachGroup(pieces.size(), leaveOf, lowestAfter, [&](std::size_t first, std::size_t count) {
    if (count == 1) return row.add(pieces[first], height * signOf(before + first));
    addTangle(pieces.subspan(first, count), before + first, height, row);
  });
}

/// Two pieces that change places; `at` is the share of the height above their crossing.
void addCross(std::span<const Crossing> pieces, std::size_t before, double height, double at,
              RowAccumulator& row) {
  const double split = splitOf(pieces[0], at);
  const double amount = signOf(before) * height;
  row.add({pieces[0].enter, split}, amount * at);
  row.add({pieces[1].enter, split}, -amount * at);
  row.add({split, pieces[1].leave}, amount * (1.0 - at));
  row.add({split, pieces[0].leave}, -amount * (1.0 - at));
}

/// Adds the two slabs above and below the place where a piece crosses the next one.
void divide(std::span<const Crossing> pieces, std::size_t crossing, std::size_t before, double height,
            double at, RowAccumulator& row) {
  std::vector<Crossing> above(pieces.begin(), pieces.end());
  std::vector<Crossing> below(pieces.begin(), pieces.end());
  for (std::size_t i = 0; i < pieces.size(); ++i) above[i].leave = below[i].enter = splitOf(pieces[i], at);
  // Both are at the very same place there, or rounding would leave them in the wrong order.
  above[crossing + 1].leave = below[crossing + 1].enter = below[crossing].enter;
  addPieces(above, before, height * at, row);
  std::sort(below.begin(), below.end(), isLeftOf);
  addPieces(below, before, height * (1.0 - at), row);
}

/// Adds pieces that cross each other: divides the slab at a crossing.
void addTangle(std::span<Crossing> pieces, std::size_t before, double height, RowAccumulator& row) {
  for (std::size_t i = 0; i + 1 < pieces.size();) {
    const double above = pieces[i + 1].enter - pieces[i].enter;
    const double below = pieces[i + 1].leave - pieces[i].leave;
    if (below >= 0.0) {
      ++i;
      continue;
    }
    const double at = above / (above - below);
    const bool isAtRim = at * height < 1e-7 || (1.0 - at) * height < 1e-7;
    if (!isAtRim && above - below > 1e-9) {
      return pieces.size() == 2 ? addCross(pieces, before, height, at, row)
                                : divide(pieces, i, before, height, at, row);
    }
    // What two edges enclose together is the same whether they cross or turn back where they meet. So close
    // to the slab's rim, or to each other, that is here.
    std::swap(pieces[i].leave, pieces[i + 1].leave);
    if (i > 0) --i;
  }
  for (std::size_t i = 0; i < pieces.size(); ++i) row.add(pieces[i], height * signOf(before + i));
}

/// Walks down a band of rows with the edges beneath its level at hand, from left to right. What it adds to
/// a row are slabs, which every edge at hand crosses from top to bottom.
class BandSweep {
 public:
  /// `band` are indexes of edges by the height of their upper ends.
  BandSweep(std::span<const Edge> edges, std::span<const int> band, RowAccumulator& row)
      : edges_(edges), waiting_(band), row_(row) {}

  /// Adds all that lies in the row at `y`.
  void addRow(int y) {
    const double bottom = y + 1.0;
    for (double level = y; level < bottom;) {
      enterEdges(level);
      const double next = nextLevel(bottom);
      descend(next);
      addSlab(next - level);
      std::swap(enter_, leave_);
      if (next >= firstEnd_) dropEdges(next);
      level = next;
    }
  }

 private:
  void enterEdges(double level) {
    for (; !waiting_.empty(); waiting_ = waiting_.subspan(1)) {
      const Edge& edge = edges_[static_cast<std::size_t>(waiting_.front())];
      if (edge.upper.y > level) return;
      if (edge.lower.y <= level) continue;
      enter_.push_back(edge.xAt(level));
      atHand_.push_back(&edge);
      firstEnd_ = std::min(firstEnd_, edge.lower.y);
      ++newcomers_;
    }
  }

  void dropEdges(double level) {
    std::size_t kept = 0;
    firstEnd_ = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < atHand_.size(); ++i) {
      if (atHand_[i]->lower.y <= level) continue;
      firstEnd_ = std::min(firstEnd_, atHand_[i]->lower.y);
      enter_[kept] = enter_[i];
      atHand_[kept++] = atHand_[i];
    }
    enter_.resize(kept);
    atHand_.resize(kept);
  }

  /// Where the next edge begins or ends.
  [[nodiscard]] double nextLevel(double bottom) const {
    const double next = std::min(bottom, firstEnd_);
    return waiting_.empty() ? next
                            : std::min(next, edges_[static_cast<std::size_t>(waiting_.front())].upper.y);
  }

  /// Takes the edges down to a level and puts them in order. Few change places from one slab to the next,
  /// which insertion makes good in one pass.
  void descend(double level) {
    const std::size_t count = atHand_.size();
    leave_.resize(count);
    for (std::size_t i = 0; i < count; ++i) leave_[i] = atHand_[i]->xAt(level);
    constexpr int many = 8;
    if (std::exchange(newcomers_, 0) > many) return sortAll();
    for (std::size_t i = 1; i < count; ++i) {
      if (enter_[i] > enter_[i - 1]) continue;
      const Crossing moved{enter_[i], leave_[i]};
      const Edge* edge = atHand_[i];
      std::size_t to = i;
      for (; to > 0 && isLeftOf(moved, {enter_[to - 1], leave_[to - 1]}); --to) {
        enter_[to] = enter_[to - 1];
        leave_[to] = leave_[to - 1];
        atHand_[to] = atHand_[to - 1];
      }
      enter_[to] = moved.enter;
      leave_[to] = moved.leave;
      atHand_[to] = edge;
    }
  }

  void sortAll() {
    std::vector<std::pair<Crossing, const Edge*>> pieces;
    for (std::size_t i = 0; i < atHand_.size(); ++i) pieces.push_back({{enter_[i], leave_[i]}, atHand_[i]});
    std::sort(pieces.begin(), pieces.end(),
              [](const auto& a, const auto& b) { return isLeftOf(a.first, b.first); });
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      enter_[i] = pieces[i].first.enter;
      leave_[i] = pieces[i].first.leave;
      atHand_[i] = pieces[i].second;
    }
  }

  void addSlab(double height) {
    const std::size_t count = atHand_.size();
    const auto leaveOf = [this](std::size_t i) { return leave_[i]; };
    findLowestAfter(count, leaveOf, lowestAfter_);
    forEachGroup(count, leaveOf, lowestAfter_, [&](std::size_t first, std::size_t members) {
      if (members == 1) return row_.add({enter_[first], leave_[first]}, height * signOf(first));
      tangle_.clear();
      for (std::size_t i = first; i < first + members; ++i) tangle_.push_back({enter_[i], leave_[i]});
      addTangle(tangle_, first, height, row_);
    });
  }

  std::span<const Edge> edges_;
  std::span<const int> waiting_;  ///< those that begin further down
  // The edges at hand, and where each enters and leaves the slab.
  std::vector<const Edge*> atHand_;
  std::vector<double> enter_;
  std::vector<double> leave_;
  double firstEnd_ = std::numeric_limits<double>::infinity();
  int newcomers_ = 0;
  std::vector<double> lowestAfter_;
  std::vector<Crossing> tangle_;
  RowAccumulator& row_;
};

}  // namespace

PolygonShape::Edge::Edge(const ShapePoint& a, const ShapePoint& b)
    : upper(a.y < b.y ? a : b), lower(a.y < b.y ? b : a), slope((lower.x - upper.x) / (lower.y - upper.y)) {}

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
    const bool isBeside = std::max(a.y, b.y) <= 0.0 || std::min(a.y, b.y) >= canvasHeight;
    if (a.y != b.y && !isBeside) edges_.emplace_back(a, b);
  }
  std::sort(edges_.begin(), edges_.end(), [](const Edge& a, const Edge& b) { return a.upper.y < b.upper.y; });
  for (std::size_t i = 0; i < edges_.size(); ++i) {
    const Edge& edge = edges_[i];
    const auto first = static_cast<std::size_t>(std::max(edge.upper.y, 0.0)) / tileSide;
    const auto last = static_cast<std::size_t>(std::min(edge.lower.y, canvasHeight - 1.0)) / tileSide;
    for (std::size_t band = first; band <= last; ++band) edgesOfBand_[band].push_back(static_cast<int>(i));
  }
}

void PolygonShape::cover(MaskBand& band) const {
  const std::vector<int>& edges = edgesOfBand_[static_cast<std::size_t>(band.firstRow() / tileSide)];
  if (edges.empty()) return;
  const std::array<bool, tileSide> isDense = denseRows(edges_, edges, band.firstRow(), canvasWidth_);
  RowAccumulator row(canvasWidth_, band.tilesAcross());
  DensePolygon dense(edges_, edges, canvasWidth_);
  std::optional<BandSweep> sweep;
  for (int y = band.firstRow(); y < band.endRow(); ++y) {
    if (isDense[static_cast<std::size_t>(y - band.firstRow())]) {
      sweep.reset();
      dense.cover(band, y);
      continue;
    }
    if (!sweep) sweep.emplace(edges_, edges, row);
    sweep->addRow(y);
    row.writeTo(band, y);
  }
}

}  // namespace orvanel::kernels
