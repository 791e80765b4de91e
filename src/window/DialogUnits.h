// Converts dialog units to pixels.
#pragma once

#include <QFont>
#include <QRect>

namespace mapexport {

/// The units of dialogs in one font: a quarter of its average character width over the letters A to
/// Z and a to z, an eighth of its height. Pixels are device-independent ones.
class DialogUnits {
 public:
  explicit DialogUnits(const QFont& font);

  /// Makes everything wider.
  void Widen(double factor) { x_ *= factor; }

  /// Each edge is rounded, so that what touches in units touches in pixels.
  QRect ToPixels(int x, int y, int width, int height) const;

 private:
  double x_;  ///< pixels per unit
  double y_;
};

}  // namespace mapexport
