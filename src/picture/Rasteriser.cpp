#include "picture/Rasteriser.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace mapexport {
namespace {

constexpr std::int32_t kNoDepth = INT32_MAX;
/// Steeper slopes, per sample, are those of triangles seen nearly from the side. They overflow
/// within a block, so their depths are not found by steps.
constexpr double kSteep = 1 << 24;
/// Triangles that are larger than this on an axis, in samples, may cover others.
constexpr int kLarge = 64;
/// What the depths of a gentle triangle may differ from its plane, by rounding.
constexpr std::int32_t kSlack = 32;
constexpr unsigned kAllEdges = 0b111;

}  // namespace

struct Rasteriser::Setup {
  std::array<Edge, 3> edges;
  /// For the columns of a block, what is added to the first.
  std::array<std::array<std::int32_t, kEdge>, 3> edgeSteps;
  std::array<std::int32_t, kEdge> depthSteps;
  Slopes slopes;
  std::int32_t depthPerX = 0;
  std::int32_t depthPerY = 0;
  std::int32_t nearest = 0;
  std::int32_t farthest = 0;
  bool steep = false;
  std::int32_t slack = kSlack;
  std::uint32_t id = 0;
  // The samples that it may cover.
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;

  /// The depth at a sample that the triangle covers, elsewhere that of its plane, within limits.
  std::int32_t DepthAt(int x, int y) const { return WithinLimits(slopes.At(x, y)); }
  static std::int32_t WithinLimits(double depth) {
    constexpr double kLimit = 1 << 30;
    return static_cast<std::int32_t>(std::clamp(depth, -kLimit, kLimit));
  }
  /// A depth that none in the square of `size` samples is nearer than.
  std::int32_t NearestIn(int x, int y, int size) const {
    if (steep) return nearest;
    return std::max(nearest, WithinLimits(slopes.LeastIn(x, y, size))) - slack;
  }
  /// Whether the part of the square that is within the edges `crossing` is behind the cover.
  bool IsBehind(const Cover& cover, int x, int y, int size, unsigned crossing) const {
    if (steep || slopes.Minus(cover.plane).LeastIn(x, y, size) < kSlack) return false;
    if (cover.isWhole) return true;
    for (std::size_t i = 0; i < edges.size(); ++i) {
      if ((crossing >> i & 1) != 0 && cover.edge.Contains(edges[i], x, y, size)) return true;
    }
    return false;
  }
  void FindSlopes(const std::array<ScreenPoint, 3>& corners, std::int64_t area);
};

void Rasteriser::Setup::FindSlopes(const std::array<ScreenPoint, 3>& corners, std::int64_t area) {
  const auto& [a, b, c] = corners;
  const std::int64_t toB = b.depth - a.depth;
  const std::int64_t toC = c.depth - a.depth;
  const double perArea = double{kPlacesPerSample} / static_cast<double>(area);
  slopes.perX = static_cast<double>(toB * (c.y - a.y) - toC * (b.y - a.y)) * perArea;
  slopes.perY = static_cast<double>(toC * (b.x - a.x) - toB * (c.x - a.x)) * perArea;
  steep = std::abs(slopes.perX) > kSteep || std::abs(slopes.perY) > kSteep;
  if (!steep) {
    depthPerX = static_cast<std::int32_t>(slopes.perX);
    depthPerY = static_cast<std::int32_t>(slopes.perY);
  }
  slopes.originDepth = a.depth + slopes.perX * (kHalfSample - a.x) / kPlacesPerSample +
                       slopes.perY * (kHalfSample - a.y) / kPlacesPerSample;
  // Without a slope nothing is rounded, so that of equal depths the later ones are skipped, too.
  if (nearest == farthest) slack = 0;
}

double Rasteriser::Slopes::LeastIn(int x, int y, int size) const {
  return At(x, y) + (size - 1) * (std::min(0.0, perX) + std::min(0.0, perY));
}

std::int64_t Rasteriser::Edge::MostIn(int x, int y, int size) const {
  return At(x, y) + (size - 1) * (std::int64_t{std::max(0, perX)} + std::max(0, perY));
}

std::int64_t Rasteriser::Edge::LeastIn(int x, int y, int size) const {
  return At(x, y) + (size - 1) * (std::int64_t{std::min(0, perX)} + std::min(0, perY));
}

bool Rasteriser::Edge::Contains(const Edge& inner, int x, int y, int size) const {
  const Edge gap{atOrigin - inner.atOrigin, perX - inner.perX, perY - inner.perY};
  return gap.LeastIn(x, y, size) >= 0;
}

std::int64_t Rasteriser::Edge::MostOutside(int x, int y, int size) const {
  std::int64_t most = INT32_MIN;
  auto first = static_cast<std::int32_t>(At(x, y));
  for (int row = 0; row < size; ++row, first += perY) {
    const std::int32_t last = first + perX * (size - 1);
    if (std::min(first, last) >= 0) continue;
    std::int32_t value = std::max(first, last);
    // On a row from outside to inside, or back, what is still outside is less than a step from 0.
    if (value >= 0) value = value % std::abs(perX) - std::abs(perX);
    most = std::max<std::int64_t>(most, value);
  }
  return most;
}

Rasteriser::Rasteriser(PictureSize size) : size_(size) {
  int width = size.width;
  int height = size.height;
  for (Level& level : levels_) {
    level.width = width = (width + kEdge - 1) / kEdge;
    level.height = height = (height + kEdge - 1) / kEdge;
    level.squares.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  }
  const std::size_t samples = levels_[0].squares.size() * kEdge * kEdge;
  depths_.assign(samples, kNoDepth);
  ids_.assign(samples, kNothing);
}

void Rasteriser::Draw(const ScreenTriangle& triangle, std::uint32_t id) {
  const auto& [a, b, c] = triangle.corners;
  // The first sample at or behind a place, and the last one at or before it.
  const auto first = [](std::int32_t place) { return (place + kHalfSample - 1) >> kPlaceBits; };
  const auto last = [](std::int32_t place) { return (place - kHalfSample) >> kPlaceBits; };
  Setup setup;
  setup.left = std::max(0, first(std::min({a.x, b.x, c.x})));
  setup.right = std::min(size_.width - 1, last(std::max({a.x, b.x, c.x})));
  setup.top = std::max(0, first(std::min({a.y, b.y, c.y})));
  setup.bottom = std::min(size_.height - 1, last(std::max({a.y, b.y, c.y})));
  if (setup.left > setup.right || setup.top > setup.bottom) return;

  setup.id = id;
  setup.nearest = std::min({a.depth, b.depth, c.depth});
  setup.farthest = std::max({a.depth, b.depth, c.depth});
  setup.FindSlopes(triangle.corners, DoubleArea(a, b, c));
  const bool isLarge = setup.right - setup.left > kLarge || setup.bottom - setup.top > kLarge;
  if (isLarge && IsCovered(triangle)) return;
  for (std::size_t i = 0; i < 3; ++i) {
    const ScreenPoint& from = triangle.corners[i];
    const ScreenPoint& to = triangle.corners[(i + 1) % 3];
    const std::int32_t x = to.x - from.x;
    const std::int32_t y = to.y - from.y;
    const bool isTopOrLeft = y < 0 || (y == 0 && x > 0);
    // Per sample this changes by multiples of kPlacesPerSample, so it can be divided by them.
    const std::int64_t atOrigin = std::int64_t{x} * (kHalfSample - from.y) -
                                  std::int64_t{y} * (kHalfSample - from.x) - (isTopOrLeft ? 0 : 1);
    setup.edges[i] = {atOrigin >> kPlaceBits, -y, x};
    for (int column = 0; column < kEdge; ++column) {
      setup.edgeSteps[i][static_cast<std::size_t>(column)] = -y * column;
    }
  }
  for (int column = 0; column < kEdge; ++column) {
    setup.depthSteps[static_cast<std::size_t>(column)] = setup.depthPerX * column;
  }

  int level = 0;
  int bits = kEdgeBits;
  while (level < kLevels - 1 &&
         (setup.left >> bits != setup.right >> bits || setup.top >> bits != setup.bottom >> bits)) {
    ++level;
    bits += kEdgeBits;
  }
  const int x = setup.left >> bits;
  const int y = setup.top >> bits;
  if (!DrawSquare(setup, level, x, y, kAllEdges)) return;
  if (isLarge && !setup.steep) {
    large_[largeCount_++ % large_.size()] = {triangle.corners, setup.slopes};
  }
  for (int above = level + 1; above < kLevels; ++above) {
    const int shift = (above - level) * kEdgeBits;
    SquareAt(above, x >> shift, y >> shift).changed = true;
  }
}

bool Rasteriser::IsCovered(const ScreenTriangle& triangle) const {
  const auto hides = [&](const Large& large) {
    const std::array<ScreenPoint, 3>& of = large.corners;
    if (of == triangle.corners) return true;
    const Slopes& slopes = large.slopes;
    return std::ranges::all_of(triangle.corners, [&](const ScreenPoint& point) {
      const double x = (point.x - kHalfSample) / double{kPlacesPerSample};
      const double y = (point.y - kHalfSample) / double{kPlacesPerSample};
      return point.depth > slopes.originDepth + slopes.perX * x + slopes.perY * y + kSlack &&
             DoubleArea(of[0], of[1], point) >= 0 && DoubleArea(of[1], of[2], point) >= 0 &&
             DoubleArea(of[2], of[0], point) >= 0;
    });
  };
  const auto used = static_cast<std::ptrdiff_t>(std::min(largeCount_, large_.size()));
  return std::any_of(large_.begin(), large_.begin() + used, hides);
}

std::int32_t Rasteriser::FarthestIn(int level, int x, int y) {
  Square& square = SquareAt(level, x, y);
  if (!square.changed) return square.farthest;
  square.changed = false;
  std::int32_t farthest = 0;
  if (level == 0) {
    const std::int32_t* const depths = &depths_[PlaceOf(x * kEdge, y * kEdge)];
    for (int i = 0; i < kEdge * kEdge; ++i) farthest = std::max(farthest, depths[i]);
  } else {
    const Level& parts = levels_[static_cast<std::size_t>(level - 1)];
    const int right = std::min(parts.width, (x + 1) * kEdge);
    const int bottom = std::min(parts.height, (y + 1) * kEdge);
    for (int partY = y * kEdge; partY < bottom; ++partY) {
      for (int partX = x * kEdge; partX < right; ++partX) {
        farthest = std::max(farthest, FarthestIn(level - 1, partX, partY));
        if (farthest == square.farthest) return farthest;
      }
    }
  }
  square.farthest = farthest;
  return farthest;
}

bool Rasteriser::DrawSquare(const Setup& setup, int level, int x, int y, unsigned crossing) {
  const int bits = (level + 1) * kEdgeBits;
  const int size = 1 << bits;
  const int firstX = x << bits;
  const int firstY = y << bits;
  for (std::size_t i = 0; i < setup.edges.size(); ++i) {
    if ((crossing >> i & 1) == 0) continue;
    const Edge& edge = setup.edges[i];
    if (edge.MostIn(firstX, firstY, size) < 0) return false;
    if (edge.LeastIn(firstX, firstY, size) >= 0) crossing &= ~(1U << i);
  }
  Square& square = SquareAt(level, x, y);
  const std::int32_t nearest = setup.NearestIn(firstX, firstY, size);
  if (nearest >= square.farthest) return false;
  if (setup.IsBehind(square.cover, firstX, firstY, size, crossing)) return false;
  if (nearest >= FarthestIn(level, x, y)) return false;

  bool drawn = false;
  if (level == 0) {
    const auto block = static_cast<std::size_t>(y) * static_cast<std::size_t>(levels_[0].width) +
                       static_cast<std::size_t>(x);
    drawn = setup.steep ? DrawBlock<true>(setup, block, firstX, firstY, crossing)
                        : DrawBlock<false>(setup, block, firstX, firstY, crossing);
  } else {
    drawn = DrawParts(setup, level, x, y, crossing);
  }
  if (drawn) square.changed = true;
  if (!setup.steep) RenewCover(setup, level, x, y, crossing, drawn);
  return drawn;
}

bool Rasteriser::DrawParts(const Setup& setup, int level, int x, int y, unsigned crossing) {
  const int bits = level * kEdgeBits;
  const int size = 1 << bits;
  const int left = std::max(x * kEdge, setup.left >> bits);
  const int right = std::min((x + 1) * kEdge - 1, setup.right >> bits);
  const int top = std::max(y * kEdge, setup.top >> bits);
  const int bottom = std::min((y + 1) * kEdge - 1, setup.bottom >> bits);
  const std::vector<Square>& squares = levels_[static_cast<std::size_t>(level - 1)].squares;
  // Most parts that are skipped are skipped here, with the least that decides.
  std::array<std::int64_t, 3> firsts{};
  std::array<std::int64_t, 3> perPart{};
  std::array<std::int64_t, 3> perRow{};
  for (std::size_t i = 0; i < setup.edges.size(); ++i) {
    if ((crossing >> i & 1) == 0) continue;
    const Edge& edge = setup.edges[i];
    firsts[i] = edge.MostIn(left << bits, top << bits, size);
    perPart[i] = std::int64_t{edge.perX} * size;
    perRow[i] = std::int64_t{edge.perY} * size;
  }
  bool drawn = false;
  const std::ptrdiff_t width = levels_[static_cast<std::size_t>(level - 1)].width;
  for (int partY = top; partY <= bottom; ++partY) {
    std::array<std::int64_t, 3> most = firsts;
    const Square* square = squares.data() + (partY * width + left);
    for (int partX = left; partX <= right; ++partX, ++square) {
      const bool outside = (most[0] | most[1] | most[2]) < 0;
      for (std::size_t i = 0; i < most.size(); ++i) most[i] += perPart[i];
      if (outside || setup.NearestIn(partX << bits, partY << bits, size) >= square->farthest) {
        continue;
      }
      if (DrawSquare(setup, level - 1, partX, partY, crossing)) drawn = true;
    }
    for (std::size_t i = 0; i < firsts.size(); ++i) firsts[i] += perRow[i];
  }
  return drawn;
}

void Rasteriser::RenewCover(const Setup& setup, int level, int x, int y, unsigned crossing,
                            bool drawn) {
  const int size = kEdge << (level * kEdgeBits);
  const int firstX = x * size;
  const int firstY = y * size;
  Cover& cover = SquareAt(level, x, y).cover;
  if (crossing == 0) {
    const int middle = size / 2;
    const auto inMiddle = [&](const Slopes& plane) {
      return plane.At(firstX + middle, firstY + middle);
    };
    if (cover.isWhole && inMiddle(setup.slopes) >= inMiddle(cover.plane)) return;
    cover.plane = setup.slopes;
    cover.isWhole = true;
  } else if (drawn && !cover.isWhole && std::has_single_bit(crossing)) {
    cover.plane = setup.slopes;
    cover.edge = setup.edges[static_cast<std::size_t>(std::countr_zero(crossing))];
    if (level <= 1) cover.edge.atOrigin -= cover.edge.MostOutside(firstX, firstY, size) + 1;
  }
}

template <bool kIsSteep>
bool Rasteriser::DrawBlock(const Setup& setup, std::size_t block, int x, int y, unsigned crossing) {
  // An edge that does not cross the block decides nothing: 0 everywhere.
  static constexpr std::array<std::int32_t, kEdge> kNoSteps{};
  std::array<std::int32_t, 3> values{};
  std::array<std::int32_t, 3> perY{};
  std::array<const std::int32_t*, 3> steps{kNoSteps.data(), kNoSteps.data(), kNoSteps.data()};
  for (std::size_t i = 0; i < 3; ++i) {
    if ((crossing >> i & 1) == 0) continue;
    // It crosses the block, so it is less than what it changes by within the block.
    values[i] = static_cast<std::int32_t>(setup.edges[i].At(x, y));
    perY[i] = setup.edges[i].perY;
    steps[i] = setup.edgeSteps[i].data();
  }
  std::int32_t depth = setup.DepthAt(x, y);
  std::int32_t* depths = &depths_[block * kEdge * kEdge];
  std::uint32_t* ids = &ids_[block * kEdge * kEdge];
  std::uint32_t drawn = 0;
  for (int row = 0; row < kEdge; ++row, depths += kEdge, ids += kEdge) {
    for (int column = 0; column < kEdge; ++column) {
      const std::int32_t outside = (values[0] + steps[0][column]) | (values[1] + steps[1][column]) |
                                   (values[2] + steps[2][column]);
      std::int32_t own = depth + setup.depthSteps[static_cast<std::size_t>(column)];
      if constexpr (kIsSteep) {
        own = std::clamp(setup.DepthAt(x + column, y + row), setup.nearest, setup.farthest);
      }
      const std::uint32_t shown =
          outside >= 0 && own < depths[column] ? UINT32_MAX : std::uint32_t{0};
      depths[column] = shown != 0 ? own : depths[column];
      ids[column] = (setup.id & shown) | (ids[column] & ~shown);
      drawn |= shown;
    }
    for (std::size_t i = 0; i < 3; ++i) values[i] += perY[i];
    depth += setup.depthPerY;
  }
  return drawn != 0;
}

}  // namespace mapexport
