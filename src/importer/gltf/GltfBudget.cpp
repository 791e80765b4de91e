// What a glTF document may ask for.
#include "importer/gltf/GltfBudget.h"

#include <fmt/format.h>

#include "importer/SourceFile.h"

namespace mapexport {
namespace {

// What any document may have. A crowd of 200 skinned figures of 150,000 corners takes 30 million
// values.
constexpr std::size_t kFreeZeros = std::size_t{1} << 16;
constexpr std::size_t kFreeNodes = std::size_t{1} << 16;
constexpr std::size_t kFreeKept = std::size_t{1} << 22;
constexpr std::size_t kFreeValues = std::size_t{1} << 25;
constexpr std::size_t kFreeText = std::size_t{1} << 26;
// What it may have for each byte: primitives may share lists, and nodes meshes with keywords.
constexpr std::size_t kValuesOfByte = 16;
constexpr std::size_t kTextOfByte = 16;

}  // namespace

void GltfBudget::TakeCompressed(std::size_t bytes, const std::string& place) {
  compressed_ += bytes;
  Check(compressed_, fileBytes_, "compressed bytes", place);
}

void GltfBudget::TakeValues(std::size_t count, const std::string& place) {
  values_ += count;
  Check(values_, kFreeValues + kValuesOfByte * Bytes(), "values in all", place);
}

void GltfBudget::CheckZeros(std::size_t count, const std::string& place) const {
  Check(count, kFreeZeros + Bytes(), "values without data", place);
}

void GltfBudget::TakeNodes(std::size_t count, const std::string& place) {
  nodes_ += count;
  Check(nodes_, kFreeNodes + Bytes(), "instances in all", place);
}

void GltfBudget::TakeText(std::size_t bytes, const std::string& place) {
  text_ += bytes;
  Check(text_, kFreeText + kTextOfByte * Bytes(), "bytes of names and keywords in all", place);
}

std::size_t GltfBudget::MostKept() const {
  return kFreeKept + Bytes();
}

void GltfBudget::Check(std::size_t sum, std::size_t most, std::string_view what,
                       const std::string& place) const {
  if (sum <= most) return;
  RefuseFile(path_,
             fmt::format("{}: {} {}, more than a file of this size can hold", place, sum, what));
}

}  // namespace mapexport
