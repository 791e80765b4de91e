#include "importer/SourceFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <sys/stat.h>

#include "scene/SceneError.h"
#include "system/Ascii.h"
#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr std::size_t kBeginning = 32;

// glTF's buffers, LightWave's and Irrlicht's objects, the two halves of an Unreal mesh.
constexpr std::array<std::string_view, 5> kDataBeside{".gltf", ".lws", ".irr", ".3d", ".uc"};

bool HasDataBeside(const std::string& path) {
  return std::ranges::find(kDataBeside, FileExtension(path)) != kDataBeside.end();
}

}  // namespace

std::string FileExtension(const std::string& path) {
  return LowerCase(std::filesystem::path(path).extension().string());
}

std::string FileBeginning(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR)
      RefuseFile(path, fmt::format("no such file{}", NameHint(path)));
    RefuseFile(path, fmt::format("can't be opened: {}", ErrnoText(errno)));
  }
  if (S_ISDIR(status.st_mode)) RefuseFile(path, "is a folder, not a file");
  if (!S_ISREG(status.st_mode)) RefuseFile(path, "is not a regular file");

  std::string bytes(kBeginning, '\0');
  const ssize_t count = ReadUpTo(file.Get(), bytes.data(), bytes.size());
  if (count < 0) RefuseFile(path, fmt::format("can't be read: {}", ErrnoText(errno)));
  if (count == 0) RefuseFile(path, "the file is empty");
  bytes.resize(static_cast<std::size_t>(count));
  return bytes;
}

void RefuseFile(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

void RefuseUtf16(const std::string& path) {
  RefuseFile(path, "is UTF-16 text, which is not understood; save it as UTF-8");
}

std::uint32_t ReadSeconds(const std::string& path) {
  constexpr std::uint32_t kLeast = 5;
  constexpr std::uint32_t kMost = 45;
  constexpr std::uintmax_t kBytesOfSecond = 4'000'000;
  if (HasDataBeside(path)) return kMost;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return kLeast;  // it can't be read either
  const std::uintmax_t begun = size / kBytesOfSecond + (size % kBytesOfSecond == 0 ? 0 : 1);
  return kLeast + static_cast<std::uint32_t>(std::min<std::uintmax_t>(begun, kMost - kLeast));
}

}  // namespace mapexport
