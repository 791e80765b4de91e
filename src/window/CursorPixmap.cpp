#include "window/CursorPixmap.h"

#include <QImage>
#include <QPixmap>
#include <algorithm>

namespace mapexport {
namespace {

constexpr int kSize = 32;

QRgb ColourOf(char pixel) {
  if (pixel == 'X') return qRgba(0, 0, 0, 255);
  if (pixel == 'o') return qRgba(255, 255, 255, 255);
  return qRgba(0, 0, 0, 0);
}

}  // namespace

QCursor ToQtCursor(const CursorImage& image, double pixelRatio) {
  QImage pixels(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
  pixels.fill(Qt::transparent);
  const int height = static_cast<int>(std::min<std::size_t>(image.rows.size(), kSize));
  for (int y = 0; y < height; ++y) {
    const std::string_view row = image.rows[static_cast<std::size_t>(y)];
    const int width = static_cast<int>(std::min<std::size_t>(row.size(), kSize));
    for (int x = 0; x < width; ++x) {
      pixels.setPixel(x, y, ColourOf(row[static_cast<std::size_t>(x)]));
    }
  }
  const int size = qRound(kSize * pixelRatio);
  const bool whole = size % kSize == 0;  // else pixels would come out of different sizes
  QPixmap pixmap =
      QPixmap::fromImage(pixels.scaled(size, size, Qt::IgnoreAspectRatio,
                                       whole ? Qt::FastTransformation : Qt::SmoothTransformation));
  pixmap.setDevicePixelRatio(pixelRatio);
  return QCursor(pixmap, image.hotX, image.hotY);
}

}  // namespace mapexport
