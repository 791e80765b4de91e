// Finds the triangle that each sample of a picture shows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "picture/Picture.h"
#include "picture/ScreenTriangle.h"

namespace mapexport {

/// A triangle covers a sample that is within its edges; of a sample on an edge, only the top and
/// the left edges are within. So triangles that share an edge cover each sample once. Everything
/// that decides is done in whole numbers, except the slopes of depths, which are doubles that every
/// machine rounds alike.
///
/// Samples are kept in blocks of 8 x 8, blocks in squares of 8 x 8, and so on. Each square has a
/// depth that none of its samples exceeds, so that what is hidden behind a square is soon skipped.
class Rasteriser {
 public:
  static constexpr std::uint32_t kNothing = UINT32_MAX;

  /// `size` in samples, at most kGuard on each axis.
  explicit Rasteriser(PictureSize size);

  /// Draws `triangle` where nothing is as near; fastest when near triangles are drawn first.
  void Draw(const ScreenTriangle& triangle, std::uint32_t id);

  /// The id of the triangle at a sample, or kNothing.
  std::uint32_t At(int x, int y) const { return ids_[PlaceOf(x, y)]; }

 private:
  static constexpr int kEdge = 8;  ///< blocks and squares have so many parts on an axis
  static constexpr int kEdgeBits = 3;
  static constexpr int kLevels = 5;  ///< the last one has a single square

  /// The plane of a triangle's depths.
  struct Slopes {
    double originDepth = 0;  ///< at sample (0, 0)
    double perX = 0;         ///< from one sample to the next
    double perY = 0;

    double At(int x, int y) const { return originDepth + perX * x + perY * y; }
    /// In the square of `size` samples.
    double LeastIn(int x, int y, int size) const;
    Slopes Minus(const Slopes& other) const {
      return {originDepth - other.originDepth, perX - other.perX, perY - other.perY};
    }
  };
  struct Edge {
    std::int64_t atOrigin = 0;  ///< at sample (0, 0); samples are within where it is not below 0
    std::int32_t perX = 0;
    std::int32_t perY = 0;

    std::int64_t At(int x, int y) const {
      return atOrigin + std::int64_t{perX} * x + std::int64_t{perY} * y;
    }
    std::int64_t MostIn(int x, int y, int size) const;
    std::int64_t LeastIn(int x, int y, int size) const;
    /// Whether every sample of the square that is within `inner` is within this edge.
    bool Contains(const Edge& inner, int x, int y, int size) const;
    /// For an edge that crosses the square: of the samples outside, the value of the nearest one.
    /// The edge can be moved by that much, less 1, and has the same samples within it.
    std::int64_t MostOutside(int x, int y, int size) const;
  };
  /// A part of a square in which no sample is farther than a plane, but for rounding. In a stack
  /// that is seen from an angle, planes are in an order where the extents of their depths overlap.
  struct Cover {
    Slopes plane{std::numeric_limits<double>::infinity()};
    bool isWhole = false;  ///< the part is the square
    Edge edge;             ///< otherwise, the part is what is within this
  };
  struct Square {
    std::int32_t farthest = INT32_MAX;  ///< at least as much as the depth of every sample
    bool changed = false;               ///< it may be less by now
    Cover cover;
  };
  struct Level {
    int width = 0;  ///< in squares
    int height = 0;
    std::vector<Square> squares;
  };
  struct Setup;

  /// A large triangle that was drawn.
  struct Large {
    std::array<ScreenPoint, 3> corners;
    Slopes slopes;
  };

  std::size_t PlaceOf(int x, int y) const {
    const int block = (y >> kEdgeBits) * levels_[0].width + (x >> kEdgeBits);
    return static_cast<std::size_t>(block) * kEdge * kEdge +
           static_cast<std::size_t>((y % kEdge) * kEdge + x % kEdge);
  }
  Square& SquareAt(int level, int x, int y) {
    Level& all = levels_[static_cast<std::size_t>(level)];
    return all.squares[static_cast<std::size_t>(y) * static_cast<std::size_t>(all.width) +
                       static_cast<std::size_t>(x)];
  }
  /// Whether one of the last large triangles that were drawn hides it wholly. Along the outline of
  /// a stack, squares are never full, so that its triangles would be drawn there one by one.
  bool IsCovered(const ScreenTriangle& triangle) const;
  /// The depth that no sample of the square exceeds, as small as it is.
  std::int32_t FarthestIn(int level, int x, int y);
  /// Draws what of the triangle is in the square; whether anything was drawn. The square is within
  /// those of the triangle's edges whose bit in `crossing` is 0.
  bool DrawSquare(const Setup& setup, int level, int x, int y, unsigned crossing);
  bool DrawParts(const Setup& setup, int level, int x, int y, unsigned crossing);
  /// Makes what the triangle fills of the square its cover, where that hides more.
  void RenewCover(const Setup& setup, int level, int x, int y, unsigned crossing, bool drawn);
  template <bool kIsSteep>
  bool DrawBlock(const Setup& setup, std::size_t block, int x, int y, unsigned crossing);

  PictureSize size_;
  std::array<Level, kLevels> levels_;
  std::array<Large, 8> large_;
  std::size_t largeCount_ = 0;        ///< that there were so far
  std::vector<std::int32_t> depths_;  ///< by block, then by row
  std::vector<std::uint32_t> ids_;
};

}  // namespace mapexport
