// The text of an XML document.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include <pugixml.hpp>

namespace mapexport {

/// The document as text, without any blanks added.
inline std::string XmlText(const pugi::xml_document& document) {
  struct Writer : pugi::xml_writer {
    void write(const void* data, std::size_t size) override {
      text.append(static_cast<const char*>(data), size);
    }
    std::string text;
  } writer;
  document.save(writer, "", pugi::format_raw);
  return std::move(writer.text);
}

}  // namespace mapexport
