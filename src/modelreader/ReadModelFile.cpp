#include "modelreader/ReadModelFile.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>

#include "modelreader/ByteReader.h"
#include "modelreader/LoadBytes.h"
#include "modelreader/PrintableText.h"
#include "modelreader/ReadGroup.h"
#include "modelreader/ReadMaterials.h"
#include "modelreader/SizedRecord.h"

namespace mapexport {

namespace {

constexpr std::string_view kStartTag = "BeginModel";
constexpr std::string_view kEndTag = "EndModel";

struct Chunk {
  std::uint32_t id;
  std::string_view name;
};

constexpr Chunk kMaterialChunk{8, "MaterialList"};
constexpr Chunk kGeometryChunk{7, "GeometryList"};

/// Reads a chunk's id and name. When neither is right, what follows is no such chunk.
void ReadChunkHeader(ByteReader& in, const Chunk& chunk, const Place& place) {
  const Place idPlace(place, "id");
  const Place namePlace(place, "name");
  const std::uint64_t idOffset = in.Offset();
  const std::uint32_t id = in.U32(idPlace);
  if (id != chunk.id) {
    in.Problems().Add(ModelProblemCode::kChunkId, idOffset, idPlace, id, chunk.id);
  }
  const std::uint64_t nameOffset = in.Offset();
  const std::string name = in.Text(namePlace);
  if (name != chunk.name) {
    in.Problems().Add(ModelProblemCode::kChunkName, nameOffset, namePlace, Quoted(name),
                      Quoted(chunk.name));
    if (id != chunk.id) throw Unreadable{};
  }
}

bool ChunkStandsAt(const ByteReader& in, std::uint64_t offset, const Chunk& chunk) {
  return in.StandsAt(offset + 4, chunk.id) && in.StandsAt(offset + 8, chunk.name);
}

void ReadGroups(ByteReader& in, ModelFile& model, std::optional<std::uint32_t> materialCount) {
  const Place list("groups");
  const std::uint32_t count = in.Count(LeastGroupBytes(model.layout), list);
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto isNext = [&](std::uint64_t offset) {
      return i + 1 == count ? offset == in.End()
                            : RecordStandsAt(in, offset, GroupTypeCode(model.layout));
    };
    ReadGroup(in, model.layout, materialCount, list.At(i), isNext, model.groups.emplace_back());
  }
}

/// A tag has one right form, so anything else there is told as the tag's absence.
void ReadTag(ByteReader& in, std::string_view tag, ModelProblemCode missing, const Place& place) {
  if (!in.StandsAt(in.Offset(), tag)) {
    in.Problems().Add(missing, in.Offset(), place);
    throw Unreadable{};
  }
  in.Seek(in.Offset() + 4 + tag.size() + 1);
}

void ReadFraming(ByteReader& in, ModelFile& model) {
  ReadTag(in, kStartTag, ModelProblemCode::kNoStartTag, Place("startTag"));

  std::optional<std::uint32_t> materialCount;
  const Place materialChunk("materialChunk");
  ReadSizedRecord(
      in, materialChunk, [&] { ReadChunkHeader(in, kMaterialChunk, materialChunk); },
      [&] { ReadMaterials(in, model.materials, materialCount); },
      [&](std::uint64_t offset) { return ChunkStandsAt(in, offset, kGeometryChunk); });

  const Place geometryChunk("geometryChunk");
  ReadSizedRecord(
      in, geometryChunk, [&] { ReadChunkHeader(in, kGeometryChunk, geometryChunk); },
      [&] { ReadGroups(in, model, materialCount); },
      [&](std::uint64_t offset) { return in.StandsAt(offset, kEndTag); });

  ReadTag(in, kEndTag, ModelProblemCode::kNoEndTag, Place("endTag"));
  if (in.Left() > 0) {
    in.Problems().Add(ModelProblemCode::kAfterEndTag, in.Offset(), Place("endTag"), in.Left());
  }
}

}  // namespace

ModelLayout LayoutOfPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension == "qob" ? ModelLayout::kQob : ModelLayout::kKob;
}

bool ModelReadResult::Sound() const {
  return std::none_of(problems.begin(), problems.end(), [](const ModelProblem& problem) {
    return problem.severity == ModelSeverity::kError;
  });
}

ModelReadResult ReadModelBytes(std::span<const std::byte> bytes, ModelLayout layout) {
  ModelReadResult result;
  result.model.layout = layout;
  ProblemList problems;
  if (bytes.empty()) {
    problems.AddToFile(ModelProblemCode::kEmpty);
  } else {
    ByteReader in(bytes, problems);
    try {
      ReadFraming(in, result.model);
    } catch (const Unreadable&) {  // its problem is noted
    } catch (const StopReading&) {
    }
  }
  result.problems = problems.Take();
  return result;
}

ModelReadResult ReadModelFile(const std::string& path, ModelLayout layout) {
  ProblemList problems;
  try {
    const std::optional<LoadedBytes> bytes = LoadBytes(path, problems);
    if (bytes) return ReadModelBytes(bytes->View(), layout);
  } catch (const std::bad_alloc&) {  // all that was read is given back by now
    problems.AddToFile(ModelProblemCode::kNoMemory);
  }
  ModelReadResult result;
  result.model.layout = layout;
  result.problems = problems.Take();
  return result;
}

}  // namespace mapexport
