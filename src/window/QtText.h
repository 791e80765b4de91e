// Converts bytes to Qt's text and back.
#pragma once

#include <QString>
#include <string>

namespace mapexport {

/// `bytes` read as UTF-8; other bytes become the replacement character.
inline QString ToQt(const std::string& bytes) {
  return QString::fromStdString(bytes);
}

/// UTF-8.
inline std::string ToBytes(const QString& text) {
  return text.toStdString();
}

}  // namespace mapexport
