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
#include "system/Counted.h"
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

void WarnOfClash(const TextureCopy& copy, const std::string& reason, Messages& messages) {
  messages.Warning("texture-clash",
                   fmt::format("{}: {} is not copied: {}", copy.to, copy.from, reason));
}

/// For a file that is at `copy.to` already.
void WarnIfOther(const TextureCopy& copy, Messages& messages) {
  if (IsSameContent(copy.to, copy.from)) return;
  WarnOfClash(copy, "another file with this name is there", messages);
}

}  // namespace

std::vector<TextureCopy> PlanTextureCopies(const std::string& folder,
                                           std::span<const TextureUse> textures,
                                           const TakenFiles& taken, Messages& messages) {
  std::vector<TextureCopy> copies;
  std::map<std::string, std::string> sources;  // by the lower-case names of their copies
  for (const TextureUse& use : textures) {
    if (!use.file) continue;
    const std::string name = NamePart(use.file->path);
    const TextureCopy copy{use.file->path, (fs::path(folder) / name).string()};
    const auto [other, isNew] = sources.try_emplace(LowerCase(name), copy.from);
    std::error_code error;
    if (!isNew) {
      if (IsSameContent(other->second, copy.from)) continue;
      WarnOfClash(copy, other->second + " has this name, too", messages);
    } else if (fs::exists(fs::symlink_status(copy.to, error))) {
      WarnIfOther(copy, messages);
    } else if (const std::string what = taken.WhatIs(copy.to); !what.empty()) {
      WarnOfClash(copy, "this is the " + what, messages);
    } else {
      copies.push_back(copy);
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
  std::size_t copied = 0;
  for (const TextureCopy& copy : copies) {
    OutputPlace place(FindOutput(copy.to), [&](std::ostream& out) { CopyContent(copy.from, out); });
    if (place.CommitNew()) {
      ++copied;
      TellPlaced(place, messages);
    } else {
      WarnIfOther(copy, messages);  // another export has copied one meanwhile
    }
  }
  if (copied == 0) return;
  messages.Note("textures-copied",
                fmt::format("{}: {} copied there", folder.string(), Counted(copied, "texture")),
                copied);
}

}  // namespace mapexport
