// Any bytes as a model file: read, then printed when sound.

#include <cstdint>
#include <span>
#include <sstream>

#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "modelreader/ReadModelFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  for (const ModelLayout layout : {ModelLayout::kQob, ModelLayout::kKob}) {
    const ModelReadResult read = ReadModelBytes(std::as_bytes(std::span(data, size)), layout);
    if (!read.Sound()) continue;
    std::ostringstream out;
    WriteModelJson(read.model, false, out);
    WriteModelText(read.model, out);
  }
  return 0;
}
