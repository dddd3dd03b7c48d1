#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {
namespace {

using Edge = PolygonShape::Edge;

/// The piece of an edge within a slab of a row: where it enters and where it leaves.
struct Crossing {
  double enter;
  double leave;
  const Edge* edge;
  [[nodiscard]] double middle() const { return enter + leave; }
};

/// Collects one row's coverage as differences from each column to the next.
class RowAccumulator {
 public:
  explicit RowAccumulator(int width)
      : width_(width),
        differences_(static_cast<std::size_t>(width) + 3),
        touched_(differences_.size() / 64 + 1) {}

  /// Adds `sign` times all that lies to the right of a piece of an edge, over a height of `height`.
  void add(Crossing piece, double height, double sign) {
    const double left = std::min(piece.enter, piece.leave);
    const double right = std::max(piece.enter, piece.leave);
    if (left >= width_) return;
    if (right <= 0.0) return addFirst(sign * height);
    const double amount = sign * height;
    if (left < 0.0 || right >= std::floor(left) + 2.0) return addWide(left, right, amount);
    // Most pieces stay within two columns. Which of them need the second can't be foretold, so that
    // computing nothing for it is faster than asking.
    const int column = static_cast<int>(left);
    const double border = column + 1.0;
    const double inFirst = std::min(right, border) - left;
    const double inSecond = std::max(right - border, 0.0);
    const double span = right - left;
    const double share = span > 0.0 ? amount / span : 0.0;
    const double first = span > 0.0 ? inFirst * share : amount;
    const double second = inSecond * share;
    const double offset = left + inFirst / 2.0 - column;
    double* out = differences_.data() + column;
    out[0] += first * (1.0 - offset);
    out[1] += first * offset + second * (1.0 - inSecond / 2.0);
    out[2] += second * (inSecond / 2.0);
    touch(column, column + 1 + (inSecond > 0.0 ? 1 : 0));
  }

  /// Takes the row's runs out and is empty again.
  void finish(RowCoverage& row) {
    std::size_t count = 1;
    for (const std::uint64_t bits : touched_) count += static_cast<std::size_t>(std::popcount(bits));
    row.resize(count);
    CoverageRun* run = row.data();
    double sum = 0.0;
    int begin = 0;
    // Every run is written; those that cover nothing are written over.
    const auto endRun = [&](int end) {
      // Sums of many pieces miss 0 and 1 by a little; such pixels lie wholly outside or inside.
      *run = {begin, end, sum > 1.0 - 1e-9 ? 1.0F : static_cast<float>(sum)};
      run += sum > 1e-9 && begin < end ? 1 : 0;
      begin = end;
    };
    for (std::size_t word = 0; word < touched_.size(); ++word) {
      for (std::uint64_t bits = std::exchange(touched_[word], 0); bits != 0; bits &= bits - 1) {
        const std::size_t column = word * 64 + static_cast<std::size_t>(std::countr_zero(bits));
        endRun(std::min(static_cast<int>(column), width_));
        sum += std::exchange(differences_[column], 0.0);
      }
    }
    endRun(width_);
    row.resize(static_cast<std::size_t>(run - row.data()));
  }

 private:
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
    if (first == last) return add({left, right, nullptr}, (right - left) * perColumn, 1.0);
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
};

/// Which of the pieces to the left of a place are an odd number decides what they enclose.
double signOf(std::size_t index) {
  return index % 2 == 0 ? 1.0 : -1.0;
}

/// Orders pieces from left to right at the slab's top.
bool isLeftOf(const Crossing& a, const Crossing& b) {
  return a.enter < b.enter || (a.enter == b.enter && a.leave < b.leave);
}

/// Walks down a band of rows with the edges beneath its level at hand, from left to right. What it adds to
/// a row are slabs, which every edge at hand crosses from top to bottom.
class BandSweep {
 public:
  /// `band` are indexes of edges by the height of their upper ends.
  BandSweep(std::span<const Edge> edges, std::span<const int> band, int canvasWidth)
      : edges_(edges), waiting_(band), accumulator_(canvasWidth) {}

  void coverRow(double top, RowCoverage& row) {
    const double bottom = top + 1.0;
    for (double level = top; level < bottom;) {
      enterEdges(level);
      const double next = nextLevel(bottom);
      descend(next);
      addSlab(pieces_, 0, next - level);
      for (Crossing& piece : pieces_) piece.enter = piece.leave;
      if (next >= firstEnd_) dropEdges(next);
      level = next;
    }
    accumulator_.finish(row);
  }

 private:
  void enterEdges(double level) {
    for (; !waiting_.empty(); waiting_ = waiting_.subspan(1)) {
      const Edge& edge = edges_[static_cast<std::size_t>(waiting_.front())];
      if (edge.upper.y > level) return;
      if (edge.lower.y <= level) continue;
      pieces_.push_back({edge.xAt(level), 0.0, &edge});
      firstEnd_ = std::min(firstEnd_, edge.lower.y);
      ++newcomers_;
    }
  }

  void dropEdges(double level) {
    std::erase_if(pieces_, [level](const Crossing& piece) { return piece.edge->lower.y <= level; });
    firstEnd_ = std::numeric_limits<double>::infinity();
    for (const Crossing& piece : pieces_) firstEnd_ = std::min(firstEnd_, piece.edge->lower.y);
  }

  /// Where the next edge begins or ends.
  [[nodiscard]] double nextLevel(double bottom) const {
    const double next = std::min(bottom, firstEnd_);
    return waiting_.empty() ? next
                            : std::min(next, edges_[static_cast<std::size_t>(waiting_.front())].upper.y);
  }

  /// Takes the pieces down to a level and puts them in order. Few change places from one slab to the next,
  /// which insertion makes good in one pass.
  void descend(double level) {
    for (Crossing& piece : pieces_) piece.leave = piece.edge->xAt(level);
    constexpr int many = 8;
    if (std::exchange(newcomers_, 0) > many) std::sort(pieces_.begin(), pieces_.end(), isLeftOf);
    for (std::size_t i = 1; i < pieces_.size(); ++i) {
      if (!isLeftOf(pieces_[i], pieces_[i - 1])) continue;
      const Crossing moved = pieces_[i];
      std::size_t to = i;
      for (; to > 0 && isLeftOf(moved, pieces_[to - 1]); --to) pieces_[to] = pieces_[to - 1];
      pieces_[to] = moved;
    }
  }

  /// Adds pieces in order, with `before` others to their left. Most keep their place among the others and
  /// are added as they are; those that change places are handled together.
  void addSlab(std::span<const Crossing> pieces, std::size_t before, double height) {
    const std::size_t base = lowestAfter_.size();
    lowestAfter_.resize(base + pieces.size() + 1, std::numeric_limits<double>::infinity());
    for (std::size_t i = pieces.size(); i-- > 0;) {
      lowestAfter_[base + i] = std::min(lowestAfter_[base + i + 1], pieces[i].leave);
    }
    std::size_t first = 0;
    double highest = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      highest = std::max(highest, pieces[i].leave);
      if (highest > lowestAfter_[base + i + 1]) continue;
      if (i == first) {
        accumulator_.add(pieces[i], height, signOf(before + i));
      } else {
        addTangle(pieces.subspan(first, i + 1 - first), before + first, height);
      }
      first = i + 1;
    }
    lowestAfter_.resize(base);
  }

  /// Adds pieces that cross each other: divides the slab at a crossing.
  void addTangle(std::span<const Crossing> pieces, std::size_t before, double height) {
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
      const double above = pieces[i + 1].enter - pieces[i].enter;
      const double below = pieces[i + 1].leave - pieces[i].leave;
      // Edges that run closer than this together enclose nothing that shows, wherever they cross.
      if (above * below >= 0.0 || std::max(std::abs(above), std::abs(below)) < 1e-9) continue;
      const double at = above / (above - below);
      // A crossing at the slab's very rim moves no area worth splitting for.
      if (at * height < 1e-7 || (1.0 - at) * height < 1e-7) continue;
      return pieces.size() == 2 ? addCross(pieces, before, height, at) : divide(pieces, before, height, at);
    }
    std::vector<Crossing> ordered(pieces.begin(), pieces.end());
    std::sort(ordered.begin(), ordered.end(),
              [](const Crossing& a, const Crossing& b) { return a.middle() < b.middle(); });
    for (std::size_t i = 0; i < ordered.size(); ++i) {
      accumulator_.add(ordered[i], height, signOf(before + i));
    }
  }

  static double splitOf(const Crossing& piece, double at) {
    return piece.enter + (piece.leave - piece.enter) * at;
  }

  /// Two pieces that change places; `at` is the share of the height above their crossing.
  void addCross(std::span<const Crossing> pieces, std::size_t before, double height, double at) {
    const double split = splitOf(pieces[0], at);
    const double sign = signOf(before);
    accumulator_.add({pieces[0].enter, split, nullptr}, height * at, sign);
    accumulator_.add({pieces[1].enter, split, nullptr}, height * at, -sign);
    accumulator_.add({split, pieces[1].leave, nullptr}, height * (1.0 - at), sign);
    accumulator_.add({split, pieces[0].leave, nullptr}, height * (1.0 - at), -sign);
  }

  void divide(std::span<const Crossing> pieces, std::size_t before, double height, double at) {
    std::vector<Crossing> part(pieces.begin(), pieces.end());
    for (Crossing& piece : part) piece.leave = splitOf(piece, at);
    addSlab(part, before, height * at);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      part[i] = {splitOf(pieces[i], at), pieces[i].leave, nullptr};
    }
    std::sort(part.begin(), part.end(), isLeftOf);
    addSlab(part, before, height * (1.0 - at));
  }

  std::span<const Edge> edges_;
  std::span<const int> waiting_;  ///< those that begin further down
  std::vector<Crossing> pieces_;  ///< of the edges at hand
  double firstEnd_ = std::numeric_limits<double>::infinity();
  int newcomers_ = 0;
  std::vector<double> lowestAfter_;  ///< a stack: slabs within slabs use its end
  RowAccumulator accumulator_;
};

}  // namespace

PolygonShape::Edge::Edge(const ShapePoint& a, const ShapePoint& b)
    : upper(a.y < b.y ? a : b), lower(a.y < b.y ? b : a), slope((lower.x - upper.x) / (lower.y - upper.y)) {}

double PolygonShape::Edge::xAt(double y) const {
  if (y >= lower.y) return lower.x;
  return upper.x + slope * (y - upper.y);
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
