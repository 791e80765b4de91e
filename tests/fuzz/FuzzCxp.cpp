// Any bytes as a CXP database, and the tokenizer against its definition.

#include <cstdint>
#include <istream>
#include <sstream>
#include <string>

#include "exporter/materials/LoadCxp.h"
#include "exporter/materials/TextStreambuf.h"
#include "exporter/materials/Tokenizer.h"
#include "fuzz/FuzzBytes.h"
#include "reference/LiteralTokenizer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  {
    std::stringbuf file(bytes);
    TextStreambuf text(file);
    std::istream input(&text);
    TextureNames names;
    ReadCxp(input, names);
  }
  std::stringbuf file(bytes);
  TextStreambuf text(file);
  std::istream input(&text);
  Tokenizer tokens(input);
  LiteralTokenizer literal(bytes);
  bool more = true;
  while (more) {
    more = literal.ReadToken();
    Require(tokens.ReadToken() == more, "as many tokens as by the definition");
    Require(tokens.Token() == literal.Token(), "the tokens of the definition");
    Require(input.good() == literal.StreamGood(), "the stream is where the definition has it");
  }
  return 0;
}
