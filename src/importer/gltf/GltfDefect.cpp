// What is wrong with a glTF file that the import library refused.
#include "importer/gltf/GltfDefect.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include <fmt/format.h>

#include "importer/text/HostText.h"
#include "importer/text/Numbers.h"
#include "scene/FileText.h"
#include "scene/JsonSyntax.h"
#include "scene/JsonValue.h"

namespace mapexport {
namespace {

std::string JsonDefect(std::string_view text) {
  const JsonSyntax syntax = CheckJsonDocument(text);
  if (syntax.defect == nullptr) return {};
  return fmt::format("{}: {}", TextPlace(text, syntax.end), syntax.defect);
}

/// The version that a glTF document says it is of.
std::string GltfVersion(const std::string& path, const FileText& text) {
  std::string version;
  constexpr std::size_t kDepth = 8;
  JsonDocument document(path, text, kDepth);
  JsonObject(document).ReadMembers(
      JsonMember{"asset", [&](JsonValue& asset) {
                   asset.ReadObject(JsonMember{
                       "version", [&](JsonValue& value) { version = value.ReadText(); }});
                 }});
  return version;
}

constexpr std::size_t kGlbHeader = 12;
constexpr std::size_t kGlbChunkHeader = 8;
constexpr std::string_view kGlbMagic = "glTF";
constexpr std::uint32_t kGlbVersion = 2;

}  // namespace

std::string GltfDefect(const std::string& path, const FileText& text) {
  if (std::string defect = JsonDefect(text.View()); !defect.empty()) return defect;
  const std::string version = GltfVersion(path, text);
  if (version.empty()) return "asset.version: is missing, so that it is no glTF document";
  if (version.starts_with('2')) return {};
  return fmt::format("is glTF of version \"{}\", which can't be read; save it as version 2",
                     FirstLine(version));
}

std::string GlbDefect(std::string_view bytes) {
  if (!bytes.starts_with(kGlbMagic.substr(0, bytes.size()))) {
    return "is no binary glTF: it doesn't begin with \"glTF\"";
  }
  if (bytes.size() < kGlbHeader) return "ends within its header";
  const std::uint32_t version = *NumberAt<std::uint32_t>(bytes, 4);
  if (version != kGlbVersion) {
    return fmt::format("is binary glTF of version {}, which can't be read; save it as version 2",
                       version);
  }
  const std::uint32_t length = *NumberAt<std::uint32_t>(bytes, 8);
  if (length > bytes.size()) {
    return fmt::format("is cut: its header says {} bytes, it has {}", length, bytes.size());
  }
  std::size_t at = kGlbHeader;
  for (const std::string_view type : {std::string_view("JSON"), std::string_view("BIN\0", 4)}) {
    // The second one may be missing.
    if (at == bytes.size() && at > kGlbHeader) break;
    const std::string name(type.data());
    const std::optional<std::uint32_t> size = NumberAt<std::uint32_t>(bytes, at);
    if (bytes.size() - at < kGlbChunkHeader) {
      return fmt::format("byte {}: there is no {} chunk", at, name);
    }
    if (bytes.substr(at + 4, 4) != type) return fmt::format("byte {}: is no {} chunk", at, name);
    const std::string_view content = bytes.substr(at + kGlbChunkHeader, *size);
    if (content.size() < *size) {
      return fmt::format("byte {}: the {} chunk says {} bytes, {} are left", at, name, *size,
                         content.size());
    }
    if (name == "JSON") {
      if (const std::string defect = JsonDefect(content); !defect.empty()) {
        return "JSON chunk: " + defect;
      }
    }
    at += kGlbChunkHeader + content.size();
  }
  return {};
}

}  // namespace mapexport
