#include "window/DialogUnits.h"

#include <QFontMetricsF>
#include <QString>

namespace mapexport {

DialogUnits::DialogUnits(const QFont& font) {
  const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  const QFontMetricsF metrics(font);
  x_ = metrics.horizontalAdvance(letters) / static_cast<double>(letters.size()) / 4;
  y_ = metrics.height() / 8;
}

QRect DialogUnits::ToPixels(int x, int y, int width, int height) const {
  const QPoint first(qRound(x * x_), qRound(y * y_));
  const QPoint end(qRound((x + width) * x_), qRound((y + height) * y_));
  return {first, QSize(end.x() - first.x(), end.y() - first.y())};
}

}  // namespace mapexport
