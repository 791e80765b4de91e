// Any bytes as a model file: read, then printed when sound; and what engines read it with, which
// must take every sound file.

#include <cstdint>
#include <cstdlib>
#include <span>
#include <sstream>

#include <mapexport/ModelReader.h>

#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "modelreader/ReadModelFile.h"

namespace {

/// Touches every entry of an opened model.
void Walk(const mapexport::reader::Model& model) {
  volatile float sum = 0;
  for (const auto& material : model.materials) sum = sum + material.diffuse.r;
  for (const auto& group : model.groups) {
    for (const auto& batch : group.batches) {
      for (const auto& face : batch.vertexIndices) sum = sum + group.vertices[face[0]].x;
      for (const auto& face : batch.cornerIndices) sum = sum + batch.colours[face[2]].a;
    }
    for (const auto& set : group.surfaceSets) {
      for (const auto face : set.faces) sum = sum + group.planes[group.faces[face].position].d;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  for (const ModelLayout layout : {ModelLayout::kQob, ModelLayout::kKob}) {
    const ModelReadResult read = ReadModelBytes(std::as_bytes(std::span(data, size)), layout);
    reader::Model model;
    const bool opened = model.Open(data, size, layout);
    if (opened) Walk(model);
    if (read.Sound() && !opened) std::abort();
    if (!read.Sound()) continue;
    std::ostringstream out;
    WriteModelJson(read.model, false, out);
    WriteModelText(read.model, out);
  }
  return 0;
}
