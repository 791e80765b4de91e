#include "app/textures/CopyTextures.h"

#include <cerrno>
#include <filesystem>
#include <map>
#include <ostream>
#include <system_error>

#include <fmt/format.h>

#include "app/WriteOutput.h"
#include "output/Sha256.h"
#include "system/Ascii.h"
#include "system/Descriptor.h"
#include "system/FileIdentity.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 65536;

void CopyContent(const std::string& from, std::ostream& out) {
  const Descriptor file = OpenToRead(from);
  std::string block(kBlock, '\0');
  for (std::size_t count = kBlock; count == kBlock && out;) {
    const ssize_t got = file.IsOpen() ? ReadUpTo(file.Get(), block.data(), block.size()) : -1;
    if (got < 0) throw RunError(fmt::format("{}: cannot be read: {}", from, ErrnoText(errno)));
    count = static_cast<std::size_t>(got);
    out.write(block.data(), got);
  }
}

bool IsSameContent(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) ||
         (fs::is_regular_file(a, error) && fs::is_regular_file(b, error) &&
          fs::file_size(a, error) == fs::file_size(b, error) && Sha256OfFile(a) == Sha256OfFile(b));
}

}  // namespace

std::vector<TextureCopy> PlanTextureCopies(const std::string& folder,
                                           std::span<const TextureUse> textures,
                                           const TakenFiles& taken, Messages& messages) {
  std::vector<TextureCopy> copies;
  std::map<std::string, std::string> sources;  // by the lower-case names of their copies
  const auto warn = [&](const std::string& to, const std::string& reason) {
    messages.Warning("texture-clash", fmt::format("{}: {}", to, reason));
  };
  for (const TextureUse& use : textures) {
    if (!use.file) continue;
    const std::string& from = use.file->path;
    const std::string name = NamePart(from);
    const std::string to = (fs::path(folder) / name).string();
    const auto [other, isNew] = sources.try_emplace(LowerCase(name), from);
    std::error_code error;
    if (!isNew) {
      if (!IsSameContent(other->second, from)) {
        warn(to, fmt::format("{} is not copied: {} has this name, too", from, other->second));
      }
    } else if (!fs::exists(fs::symlink_status(to, error))) {
      if (const std::string what = taken.WhatIs(to); !what.empty()) {
        warn(to, fmt::format("{} is not copied: this is the {}", from, what));
      } else {
        copies.push_back({from, to});
      }
    } else if (!IsSameContent(to, from)) {
      warn(to, fmt::format("{} is not copied: another file with this name is there", from));
    }
  }
  return copies;
}

void CopyTextures(std::span<const TextureCopy> copies, Messages& messages) {
  if (copies.empty()) return;
  const fs::path folder = fs::path(copies.front().to).parent_path();
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw RunError(
        fmt::format("{}: the folder can't be made: {}", folder.string(), ErrnoText(error.value())));
  }
  for (const TextureCopy& copy : copies) {
    WriteOutput(
        FindOutput(copy.to), [&](std::ostream& out) { CopyContent(copy.from, out); }, messages);
  }
  messages.Note("textures-copied",
                fmt::format("{}: {} texture{} copied there", folder.string(), copies.size(),
                            copies.size() == 1 ? "" : "s"),
                copies.size());
}

}  // namespace mapexport
