// Reads a file of any kind (pipes too) into one block.
#include "scene/FileText.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <simdjson.h>

#include "scene/SceneError.h"

namespace mapexport {

namespace {

constexpr std::size_t kLargestFile = simdjson::SIMDJSON_MAXSIZE_BYTES;
constexpr std::size_t kFirstBlock = 64 * 1024;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void FailWithErrno(const std::string& path) {
  throw SceneError(
      fmt::format("{}: can't be read: {}", path, std::generic_category().message(errno)));
}

}  // namespace

FileText::FileText(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (file == nullptr) FailWithErrno(path);
  // The size is a hint only: a pipe has none, and a file may grow while it is read. One byte more
  // lets the end show without another block.
  std::error_code noSize;
  const std::uintmax_t sizeHint = std::filesystem::file_size(path, noSize);
  Grow(noSize ? kFirstBlock : std::min<std::uintmax_t>(sizeHint, kLargestFile) + 1);
  while (true) {
    const std::size_t room = capacity_ - size_;
    errno = 0;
    const std::size_t count = std::fread(bytes_.get() + size_, 1, room, file.get());
    size_ += count;
    if (size_ > kLargestFile) {
      throw SceneError(
          fmt::format("{}: is too large, a scene file has at most {} bytes", path, kLargestFile));
    }
    if (count < room) break;
    Grow(std::max(kFirstBlock, size_ * 2));
  }
  if (std::ferror(file.get()) != 0) FailWithErrno(path);
  bytes_[size_] = '\0';
  const std::string_view text(bytes_.get(), size_);
  if (text.starts_with(kByteOrderMark)) start_ = kByteOrderMark.size();
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    throw SceneError(path + ": is UTF-16; a scene file is UTF-8");
  }
}

// Makes room for `capacity` bytes of the file.
void FileText::Grow(std::size_t capacity) {
  auto larger = std::make_unique_for_overwrite<char[]>(capacity + 1);
  if (size_ > 0) std::memcpy(larger.get(), bytes_.get(), size_);
  bytes_ = std::move(larger);
  capacity_ = capacity;
}

}  // namespace mapexport
