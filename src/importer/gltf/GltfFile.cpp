// The container of a glTF file: .gltf or .glb.
#include "importer/gltf/GltfFile.h"

#include <cstddef>
#include <cstdint>

#include <fmt/format.h>
#include <simdjson.h>

#include "importer/SourceFile.h"
#include "importer/text/Numbers.h"

namespace mapexport {
namespace {

constexpr std::string_view kMagic = "glTF";
constexpr std::string_view kJsonType = "JSON";
constexpr std::string_view kBinaryType{"BIN\0", 4};
constexpr std::uint32_t kVersion = 2;
constexpr std::size_t kHeader = 12;
constexpr std::size_t kChunkHeader = 8;

}  // namespace

GltfFile::GltfFile(const std::string& path) : path_(path), text_(path) {
  const std::string_view bytes = text_.View();
  const bool isBinary = FileExtension(path) == ".glb" || bytes.starts_with(kMagic);
  if (isBinary)
    SplitBinary(bytes);
  else
    json_ = bytes;
}

void GltfFile::SplitBinary(std::string_view bytes) {
  if (!bytes.starts_with(kMagic.substr(0, bytes.size()))) {
    RefuseFile(path_, "is no binary glTF: it doesn't begin with \"glTF\"");
  }
  if (bytes.size() < kHeader) RefuseFile(path_, "ends within its header");
  const std::uint32_t version = *NumberAt<std::uint32_t>(bytes, 4);
  if (version != kVersion) {
    RefuseFile(path_, fmt::format("is binary glTF of version {}, which can't be read; save it as "
                                  "version 2",
                                  version));
  }
  const std::uint32_t length = *NumberAt<std::uint32_t>(bytes, 8);
  if (length > bytes.size()) {
    RefuseFile(path_,
               fmt::format("is cut: its header says {} bytes, it has {}", length, bytes.size()));
  }
  bytes = bytes.substr(0, length);
  // Only the first two chunks mean anything; others may follow.
  std::size_t at = kHeader;
  for (const std::string_view type : {kJsonType, kBinaryType}) {
    if (at == bytes.size() && type == kBinaryType) break;
    const std::string_view name(type.data());
    if (bytes.size() < at + kChunkHeader) {
      RefuseFile(path_, fmt::format("byte {}: there is no {} chunk", at, name));
    }
    const std::size_t size = *NumberAt<std::uint32_t>(bytes, at);
    if (bytes.substr(at + 4, 4) != type) {
      if (type == kBinaryType) break;  // of an extension
      RefuseFile(path_, fmt::format("byte {}: is no {} chunk", at, name));
    }
    const std::string_view content = bytes.substr(at + kChunkHeader, size);
    if (content.size() < size) {
      RefuseFile(path_, fmt::format("byte {}: the {} chunk says {} bytes, {} are left", at, name,
                                    size, content.size()));
    }
    if (type == kJsonType)
      json_ = content.substr(0, content.find_last_not_of('\0') + 1);  // how some fill it up
    else
      binary_ = content;
    at += kChunkHeader + size;
  }
}

bool GltfFile::IsVersion1() const {
  simdjson::ondemand::parser parser;
  const simdjson::padded_string text(json_);
  simdjson::ondemand::document document;
  std::string_view version;  // some write it as a number
  if (parser.iterate(text).get(document) != simdjson::SUCCESS) return false;
  return document["asset"]["version"].raw_json_token().get(version) == simdjson::SUCCESS &&
         (version.starts_with('1') || version.starts_with("\"1"));
}

bool IsGltf(const std::string& path, std::string_view beginning) {
  const std::string extension = FileExtension(path);
  return extension == ".gltf" || extension == ".glb" || beginning.starts_with(kMagic);
}

}  // namespace mapexport
