// Any bytes as a model file of either layout, for both readers and all that shows models.

#include <span>
#include <sstream>

#include <simdjson.h>

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
  }
  return 0;
}
