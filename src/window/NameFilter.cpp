#include "window/NameFilter.h"

#include "window/QtText.h"

namespace mapexport {

QString ToNameFilter(const FileBox& box) {
  const QString pattern = box.pattern.empty() ? QStringLiteral("*") : ToQt(box.pattern);
  return QStringLiteral("%1 (%2)").arg(
      ToQt(box.display), QString(pattern).replace(QLatin1Char(';'), QLatin1Char(' ')));
}

}  // namespace mapexport
