// Any bytes as a CXP database.

#include <cstdint>
#include <sstream>
#include <string>

#include "materials/ReadCxp.h"
#include "parse/TextStreambuf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  std::stringbuf bytes(std::string(reinterpret_cast<const char*>(data), size));
  TextStreambuf text(bytes);
  std::istream input(&text);
  TextureNames names;
  ReadCxp(input, names);
  return 0;
}
