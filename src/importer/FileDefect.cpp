#include "importer/FileDefect.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "importer/SourceFile.h"
#include "importer/text/HostText.h"
#include "importer/text/StatementLines.h"
#include "importer/threeds/Chunk3ds.h"
#include "scene/FileText.h"
#include "system/Ascii.h"

namespace mapexport {
namespace {

std::string ColladaDefect(std::string_view text) {
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer(text.data(), text.size(), pugi::parse_full);
  if (!result) {
    const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0));
    const bool isCut = result.status != pugi::status_no_document_element &&
                       text.find('>', at) == std::string_view::npos;
    return fmt::format("{}: is no sound XML: {}", TextPlace(text, at),
                       isCut ? "the text ends too early" : result.description());
  }
  if (!document.child("COLLADA"))
    return "has no element COLLADA, so that it is no Collada document";
  return {};
}

std::string Defect3ds(std::string_view bytes) {
  constexpr std::uint16_t kMain = 0x4D4D;
  std::string_view rest = bytes;
  const std::optional<Chunk3ds> main = TakeChunk3ds(rest);
  if (!main) return "ends within the header of its first chunk";
  if (main->id != kMain) {
    return fmt::format("is no .3ds file: it begins with a chunk 0x{:04X}, not 0x{:04X}", main->id,
                       kMain);
  }
  if (main->announced > main->content.size()) {
    return fmt::format("is cut: its first chunk says {} bytes, {} are left", main->announced,
                       main->content.size());
  }
  std::vector<std::string_view> lists{main->content};
  while (!lists.empty()) {
    std::string_view list = lists.back();
    lists.pop_back();
    while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(list)) {
      if (chunk->announced > chunk->content.size()) {
        const auto at = static_cast<std::size_t>(chunk->content.data() - bytes.data());
        return fmt::format("byte {}: the chunk 0x{:04X} says {} bytes, {} are left",
                           at - kChunkHeader3ds, chunk->id, chunk->announced,
                           chunk->content.size());
      }
      constexpr std::uint16_t kObject = 0x4000;
      constexpr std::array<std::uint16_t, 3> kLists{0x3D3D, 0x4100, 0xAFFF};
      if (std::ranges::find(kLists, chunk->id) != kLists.end()) lists.push_back(chunk->content);
      if (chunk->id == kObject) {
        const std::size_t nameEnd = chunk->content.find('\0');
        if (nameEnd != std::string_view::npos) lists.push_back(chunk->content.substr(nameEnd + 1));
      }
    }
  }
  return {};
}

std::string AseDefect(std::string_view text) {
  constexpr std::string_view kMark = "*3dsmax_asciiexport";
  constexpr std::size_t kMarkWithin = 200;
  if (LowerCase(text.substr(0, kMarkWithin)).find(kMark) == std::string::npos) {
    return "is no .ase file: it doesn't begin with *3DSMAX_ASCIIEXPORT";
  }
  struct Block {
    std::size_t line;
    std::string name;
  };
  std::vector<Block> open;
  bool hasBlocks = false;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    bool isInText = false;
    for (const char c : rest) {
      if (c == '"') isInText = !isInText;
      if (isInText) continue;
      if (c == '{') {
        hasBlocks = true;
        std::string_view statement = rest;
        open.push_back({lines.Line(), std::string(TakeWord(statement))});
      }
      if (c == '}' && !open.empty()) open.pop_back();
    }
  }
  if (!hasBlocks) return "ends before its first block";
  if (open.empty()) return {};
  return fmt::format("ends within the block {} that begins in line {}", FirstLine(open.back().name),
                     open.back().line);
}

}  // namespace

std::string FileDefect(const std::string& path) {
  const std::string extension = FileExtension(path);
  const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, std::string_view(extension)) != names.end();
  };
  if (!isOneOf({".dae", ".3ds", ".ase"})) return {};
  const FileText text(path);
  if (extension == ".dae") return ColladaDefect(text.View());
  if (extension == ".3ds") return Defect3ds(text.View());
  return AseDefect(text.View());
}

}  // namespace mapexport
