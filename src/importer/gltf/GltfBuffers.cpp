// The bytes that a glTF document refers to.
#include "importer/gltf/GltfBuffers.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "importer/SourceFile.h"
#include "importer/gltf/DecodeMeshopt.h"
#include "importer/text/Base64.h"
#include "importer/text/HostText.h"
#include "system/Descriptor.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kData = "data:";

/// Whether a URI says how to get at what it names. One letter is a drive of Windows.
bool HasScheme(std::string_view uri) {
  const std::size_t colon = uri.find(':');
  return colon != std::string_view::npos && colon > 1 &&
         std::ranges::all_of(uri.substr(0, colon), [](char c) {
           return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '.' ||
                  c == '-';
         });
}

/// What the URI of a file may mean: some programs write plain names, or Windows' separators.
std::vector<std::string> NamesOf(const std::string& uri) {
  std::string slashed = uri;
  std::ranges::replace(slashed, '\\', '/');
  return {DecodePercents(uri), uri, slashed};
}

/// The content of a data URI; empty when it has none that can be read.
std::optional<std::string> ContentOf(std::string_view uri) {
  constexpr std::string_view kBase64 = ";base64";
  const std::size_t comma = uri.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const std::string_view content = uri.substr(comma + 1);
  if (!uri.substr(0, comma).ends_with(kBase64)) return DecodePercents(content);
  if (std::optional<std::string> bytes = DecodeBase64(content)) return bytes;
  // Some write it in lines, or its "=" as "%3D".
  std::string digits = DecodePercents(content);
  std::erase_if(digits, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
  return DecodeBase64(digits);
}

/// The first `length` bytes of an open file, or all when there are fewer.
std::string ReadBeginning(int descriptor, std::size_t fileSize, std::size_t length) {
  std::string bytes(std::min(fileSize, length), '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t count = read(descriptor, bytes.data() + size, bytes.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

GltfBuffers::GltfBuffers(const GltfFile& file, const GltfDocument& document, GltfBudget& budget,
                         std::vector<std::string>& sideFiles)
    : file_(file),
      document_(document),
      budget_(budget),
      sideFiles_(sideFiles),
      buffers_(document.buffers.size()) {
  budget_.AddFile(file.Json().size() + file.Binary().value_or(std::string_view()).size());
}

std::string_view GltfBuffers::View(int view) {
  const auto index = static_cast<std::size_t>(view);
  const GltfBufferView& source = document_.bufferViews[index];
  if (source.meshopt) return Decompress(index);
  return Part(source.buffer, source.byteOffset, source.byteLength,
              fmt::format("bufferViews[{}]", index));
}

const std::string& GltfBuffers::Decompress(std::size_t view) {
  const std::string place = fmt::format("bufferViews[{}].extensions.EXT_meshopt_compression", view);
  const GltfMeshopt& source = *document_.bufferViews[view].meshopt;
  const std::string_view data = Part(source.buffer, source.byteOffset, source.byteLength, place);
  const auto [entry, isNew] = decompressed_.try_emplace(
      {{data.data(), data.size()}, source.count, source.byteStride, source.mode, source.filter});
  std::string& bytes = entry->second;
  if (!isNew) return bytes;
  budget_.TakeCompressed(data.size(), place);
  const std::string reason = DecodeMeshopt(source, data, bytes);
  if (!reason.empty()) RefuseFile(file_.Path(), fmt::format("{}{}", place, reason));
  budget_.AddDecoded(bytes.size());
  return bytes;
}

const DracoMesh& GltfBuffers::Draco(int view, const std::string& user) {
  const std::string_view data = View(view);
  const auto [entry, isNew] = draco_.try_emplace({data.data(), data.size()});
  DracoMesh& mesh = entry->second;
  if (!isNew) return mesh;
  budget_.TakeCompressed(data.size(), user);
  if (!mesh.Decode(data)) RefuseFile(file_.Path(), user + ": its data is damaged");
  budget_.AddDecoded(mesh.Size());
  return mesh;
}

std::string_view GltfBuffers::Part(int buffer, std::size_t offset, std::size_t length,
                                   const std::string& place) {
  const std::string_view bytes = Buffer(buffer, place);
  if (offset > bytes.size() || length > bytes.size() - offset) {
    RefuseFile(file_.Path(), fmt::format("{}: bytes {} to {}, buffers[{}] has {}", place, offset,
                                         offset + length, buffer, bytes.size()));
  }
  return bytes.substr(offset, length);
}

std::string_view GltfBuffers::Buffer(int buffer, const std::string& user) {
  if (buffer == kNoGltfIndex) RefuseFile(file_.Path(), user + ".buffer: is missing");
  const auto index = static_cast<std::size_t>(buffer);
  const std::size_t length = document_.buffers[index].byteLength;
  std::string_view bytes;
  if (index == 0 && !document_.buffers[index].uri && file_.Binary()) {
    bytes = *file_.Binary();
  } else {
    if (!buffers_[index]) {
      buffers_[index] = Load(index);
      budget_.AddFile(buffers_[index]->size());
    }
    bytes = *buffers_[index];
  }
  if (length > bytes.size()) {
    RefuseFile(file_.Path(), fmt::format("buffers[{}].byteLength: {}, its data has {} bytes", index,
                                         length, bytes.size()));
  }
  return bytes.substr(0, length);
}

std::string GltfBuffers::Load(std::size_t buffer) {
  const std::optional<std::string>& uri = document_.buffers[buffer].uri;
  if (!uri) RefuseFile(file_.Path(), fmt::format("buffers[{}].uri: is missing", buffer));
  if (!uri->starts_with(kData)) return LoadFile(buffer, *uri);
  std::optional<std::string> content = ContentOf(*uri);
  if (!content) {
    RefuseFile(file_.Path(), fmt::format("buffers[{}].uri: its base64 data can't be read", buffer));
  }
  return *std::move(content);
}

std::string GltfBuffers::LoadFile(std::size_t buffer, const std::string& uri) {
  const auto refuse = [&](std::string_view reason) {
    RefuseFile(file_.Path(),
               fmt::format("buffers[{}].uri: the file \"{}\" {}", buffer, FirstLine(uri), reason));
  };
  if (HasScheme(uri)) refuse("is none beside the scene");
  if (DecodePercents(uri).find('\0') != std::string::npos) refuse("holds a NUL character");
  int error = ENOENT;
  for (const std::string& name : NamesOf(uri)) {
    const std::string path = (fs::path(file_.Path()).parent_path() / name).string();
    // A pipe would be waited for, a device may have no end.
    const Descriptor descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor.IsOpen()) {
      if (errno != ENOENT) error = errno;
      continue;
    }
    struct stat status {};
    if (fstat(descriptor.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
      refuse("is not a regular file");
    }
    if (std::ranges::find(sideFiles_, path) == sideFiles_.end()) sideFiles_.push_back(path);
    return ReadBeginning(descriptor.Get(), static_cast<std::size_t>(status.st_size),
                         document_.buffers[buffer].byteLength);
  }
  refuse(fmt::format("can't be opened: {}", std::generic_category().message(error)));
  return {};
}

}  // namespace mapexport
