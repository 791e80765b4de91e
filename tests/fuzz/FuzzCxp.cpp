// Any bytes as a CXP database.

#include <cstdint>
#include <istream>
#include <sstream>
#include <string>

#include "exporter/materials/LoadCxp.h"
#include "exporter/materials/TextStreambuf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  std::stringbuf file(std::string(reinterpret_cast<const char*>(data), size));
  TextStreambuf text(file);
  std::istream input(&text);
  TextureNames names;
  ReadCxp(input, names);
  return 0;
}
