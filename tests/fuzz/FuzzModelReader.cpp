// Any bytes as a model file of either layout, for both readers and what shows or converts models.

#include <span>
#include <sstream>

#include <simdjson.h>

#include "convert/ConvertModel.h"
#include "fuzz/ReadersAgree.h"
#include "modelreader/WriteModel.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  for (const ModelLayout layout : {ModelLayout::kQob, ModelLayout::kKob}) {
    const ModelReadResult read = RequireReadersAgree(std::as_bytes(std::span(data, size)), layout);
    for (const ModelProblem& problem : read.problems) {
      Require(ToLine(problem).find('\n') == std::string::npos, "a problem is one line");
    }
    if (!read.Sound()) continue;
    std::ostringstream json;
    WriteModelJson(read.model, false, json);
    simdjson::dom::parser parser;
    Require(parser.parse(json.str()).error() == simdjson::SUCCESS, "the JSON document is one");
    std::ostringstream text;
    WriteModelText(read.model, text);
    for (const char c : text.str())
      Require(c >= ' ' || c < 0 || c == '\n', "no control characters");
    const int system = static_cast<int>(size % 4);
    for (const TargetFormat& format : TargetFormats()) {
      const std::string name = "model" + std::string(format.extension);
      try {
        ConvertModel(read.model, name, format, {system, system}, format.hostUnits);
      } catch (const ConvertError&) {  // there is nothing to convert
      }
    }
  }
  return 0;
}
