#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "raster/kernels/EdgePieces.h"
#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

using Edge = PolygonShape::Edge;

/// The piece of an edge within a slab of a row: where it enters and where it leaves.
struct Crossing {
  double enter;
  double leave;
};

/// Collects one row's coverage as differences from each column to the next.
class RowAccumulator {
 public:
  explicit RowAccumulator(int width)
      : width_(width),
        differences_(static_cast<std::size_t>(width) + 3),
        touched_(differences_.size() / 64 + 1),
        runs_(differences_.size() + 1) {}

  /// Adds `sign` times all that lies to the right of a piece of an edge, over a height of `height`.
  void add(Crossing piece, double height, double sign) {
    const double left = std::min(piece.enter, piece.leave);
    const double right = std::max(piece.enter, piece.leave);
    if (left >= width_) return;
    const double amount = sign * height;
    if (right <= 0.0) return addFirst(amount);
    const int column = static_cast<int>(left);
    if (left < 0.0 || right > column + 1.0) return addWide(left, right, amount);
    const double offset = (left + right) / 2.0 - column;
    addShares(column, amount * (1.0 - offset), amount * offset, 0.0);
  }

  /// Adds differences to a column and the next two.
  void addShares(int column, double first, double second, double third) {
    double* out = differences_.data() + column;
    out[0] += first;
    out[1] += second;
    out[2] += third;
    touch(column, column + 1 + (third != 0.0 ? 1 : 0));
  }

  /// Takes the row's runs out and is empty again.
  void finish(RowCoverage& row) {
    CoverageRun* run = runs_.data();
    double* differences = differences_.data();
    const int width = width_;
    double sum = 0.0;
    int begin = 0;
    for (std::size_t word = 0; word < touched_.size(); ++word) {
      for (std::uint64_t bits = std::exchange(touched_[word], 0); bits != 0; bits &= bits - 1) {
        const int column = static_cast<int>(word * 64) + std::countr_zero(bits);
        // What begins beyond the canvas is written, but not kept.
        const int end = std::min(column, width);
        *run = {begin, end, coverageOf(sum)};
        run += begin < end ? 1 : 0;
        begin = column;
        sum += std::exchange(differences[column], 0.0);
      }
    }
    if (begin < width) *run++ = {begin, width, coverageOf(sum)};
    row.assign(runs_.data(), run);
  }

 private:
  /// Sums of many pieces miss 0 and 1 by a little; such pixels lie wholly outside or inside. A float next to
  /// 1 is too coarse to see the margin.
  static float coverageOf(double sum) {
    constexpr double margin = 1e-9;
    return static_cast<float>(std::min(std::max(sum - margin, 0.0), 1.0));
  }

  /// A piece across several columns, which carries `amount` from its left end to its right.
  void addWide(double left, double right, double amount) {
    const double perColumn = amount / (right - left);
    if (left < 0.0) {
      addFirst(-left * perColumn);
      left = 0.0;
    }
    right = std::min(right, static_cast<double>(width_));
    const int first = static_cast<int>(left);
    const int last = static_cast<int>(right);
    if (first == last) return add({left, right}, (right - left) * perColumn, 1.0);
    const double inFirst = first + 1.0 - left;
    const double inLast = right - last;
    double* out = differences_.data() + first;
    // A whole column gives half of its amount to itself and half to the next.
    *out++ += inFirst * perColumn * (inFirst / 2.0);
    *out += inFirst * perColumn * (1.0 - inFirst / 2.0);
    for (int column = first + 1; column < last; ++column) {
      *out++ += perColumn / 2.0;
      *out += perColumn / 2.0;
    }
    *out++ += inLast * perColumn * (1.0 - inLast / 2.0);
    *out += inLast * perColumn * (inLast / 2.0);
    touch(first, last + 1);
  }

  /// What lies to the left of the canvas.
  void addFirst(double amount) {
    differences_[0] += amount;
    touch(0, 0);
  }

  /// Marks the columns from `first` to `last`, both included.
  void touch(int first, int last) {
    const auto word = static_cast<std::size_t>(first) / 64;
    const auto end = static_cast<std::size_t>(last) / 64;
    const std::uint64_t from = ~std::uint64_t{0} << (first % 64);
    const std::uint64_t upTo = ~std::uint64_t{0} >> (63 - last % 64);
    if (word == end) {
      touched_[word] |= from & upTo;
      return;
    }
    touched_[word] |= from;
    for (std::size_t i = word + 1; i < end; ++i) touched_[i] = ~std::uint64_t{0};
    touched_[end] |= upTo;
  }

  int width_;
  std::vector<double> differences_;
  std::vector<std::uint64_t> touched_;  ///< a bit for each column whose difference was set
  std::vector<CoverageRun> runs_;       ///< room for one more than there are columns
};

/// Which of the pieces to the left of a place are an odd number decides what they enclose.
double signOf(std::size_t index) {
  return index % 2 == 0 ? 1.0 : -1.0;
}

/// Orders pieces from left to right at the slab's top.
bool isLeftOf(const Crossing& a, const Crossing& b) {
  return a.enter < b.enter || (a.enter == b.enter && a.leave < b.leave);
}

double splitOf(const Crossing& piece, double at) {
  return piece.enter + (piece.leave - piece.enter) * at;
}

/// For each piece the least place where one of those after it leaves, and infinity at the end.
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
    if (count == 1) return row.add(pieces[first], height, signOf(before + first));
    addTangle(pieces.subspan(first, count), before + first, height, row);
  });
}

/// Two pieces that change places; `at` is the share of the height above their crossing.
void addCross(std::span<const Crossing> pieces, std::size_t before, double height, double at,
              RowAccumulator& row) {
  const double split = splitOf(pieces[0], at);
  const double sign = signOf(before);
  row.add({pieces[0].enter, split}, height * at, sign);
  row.add({pieces[1].enter, split}, height * at, -sign);
  row.add({split, pieces[1].leave}, height * (1.0 - at), sign);
  row.add({split, pieces[0].leave}, height * (1.0 - at), -sign);
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
  for (std::size_t i = 0; i < pieces.size(); ++i) row.add(pieces[i], height, signOf(before + i));
}

/// Walks down a band of rows with the edges beneath its level at hand, from left to right. What it adds to
/// a row are slabs, which every edge at hand crosses from top to bottom.
class BandSweep {
 public:
  /// `band` are indexes of edges by the height of their upper ends.
  BandSweep(std::span<const Edge> edges, std::span<const int> band, int canvasWidth)
      : edges_(edges), waiting_(band), canvasWidth_(canvasWidth), row_(canvasWidth) {}

  void coverRow(double top, RowCoverage& row) {
    const double bottom = top + 1.0;
    for (double level = top; level < bottom;) {
      enterEdges(level);
      const double next = nextLevel(bottom);
      descend(next);
      addSlab(next - level);
      std::swap(enter_, leave_);
      if (next >= firstEnd_) dropEdges(next);
      level = next;
    }
    row_.finish(row);
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
    const std::size_t padded = (count + piecesAtOnce - 1) / piecesAtOnce * piecesAtOnce;
    enter_.resize(padded);
    leave_.resize(padded);
    shares_.resize(padded);
    sharePieces(enter_.data(), leave_.data(), padded, canvasWidth_, shares_);
    enter_.resize(count);
    leave_.resize(count);
    const auto leaveOf = [this](std::size_t i) { return leave_[i]; };
    findLowestAfter(count, leaveOf, lowestAfter_);
    forEachGroup(count, leaveOf, lowestAfter_, [&](std::size_t first, std::size_t members) {
      if (members == 1) return addPiece(first, height);
      tangle_.clear();
      for (std::size_t i = first; i < first + members; ++i) tangle_.push_back({enter_[i], leave_[i]});
      addTangle(tangle_, first, height, row_);
    });
  }

  void addPiece(std::size_t i, double height) {
    const int column = shares_.columns[i];
    if (column < 0) return row_.add({enter_[i], leave_[i]}, height, signOf(i));
    const double amount = height * signOf(i);
    row_.addShares(column, shares_.first[i] * amount, shares_.second[i] * amount, shares_.third[i] * amount);
  }

  std::span<const Edge> edges_;
  std::span<const int> waiting_;  ///< those that begin further down
  int canvasWidth_;
  // The edges at hand, and where each enters and leaves the slab.
  std::vector<const Edge*> atHand_;
  std::vector<double> enter_;
  std::vector<double> leave_;
  double firstEnd_ = std::numeric_limits<double>::infinity();
  int newcomers_ = 0;
  PieceShares shares_;
  std::vector<double> lowestAfter_;
  std::vector<Crossing> tangle_;
  RowAccumulator row_;
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

void PolygonShape::cover(int firstRow, std::span<RowCoverage> rows) const {
  const std::vector<int>& band = edgesOfBand_[static_cast<std::size_t>(firstRow / tileSide)];
  if (band.empty()) return;
  BandSweep sweep(edges_, band, canvasWidth_);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    sweep.coverRow(firstRow + static_cast<double>(i), rows[i]);
  }
}

}  // namespace orvanel::kernels
