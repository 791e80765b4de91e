// Reads a regular file, or standard input, into one block.
#include "scene/FileText.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>

#include <fcntl.h>
#include <fmt/format.h>
#include <simdjson.h>
#include <sys/stat.h>
#include <unistd.h>

#include "scene/SceneError.h"
#include "system/Descriptor.h"
#include "system/RunError.h"
#include "system/Utf8.h"

namespace mapexport {

namespace {

constexpr std::size_t kLargestFile = simdjson::SIMDJSON_MAXSIZE_BYTES;
constexpr std::size_t kFirstBlock = 64 * 1024;
constexpr std::size_t kLargestBlock = std::size_t{16} << 20;

[[noreturn]] void FailWithErrno(const std::string& path, int error) {
  throw SceneError(fmt::format("{}: can't be read: {}", path, ErrnoText(error)));
}

[[noreturn]] void FailTooLarge(const std::string& path) {
  throw SceneError(
      fmt::format("{}: is too large, a scene file has at most {} bytes", path, kLargestFile));
}

bool IsStandardInput(const struct stat& status) {
  struct stat input {};
  return fstat(STDIN_FILENO, &input) == 0 && input.st_dev == status.st_dev &&
         input.st_ino == status.st_ino;
}

struct OpenFile {
  Descriptor file;
  std::uint64_t size;  ///< 0 when it is no regular file
};

OpenFile Open(const std::string& path) {
  OpenFile opened{OpenToRead(path), 0};
  struct stat status {};
  if (!opened.file.IsOpen() || fstat(opened.file.Get(), &status) != 0) FailWithErrno(path, errno);
  if (S_ISDIR(status.st_mode)) FailWithErrno(path, EISDIR);
  if (S_ISREG(status.st_mode)) {
    opened.size = static_cast<std::uint64_t>(status.st_size);
    if (opened.size > kLargestFile) FailTooLarge(path);
  } else if (!IsStandardInput(status)) {
    throw SceneError(path + ": is not a regular file");
  } else if (fcntl(opened.file.Get(), F_SETFL, 0) != 0) {  // it is waited for
    FailWithErrno(path, errno);
  }
  return opened;
}

std::string_view WithoutMark(std::string_view text) {
  return text.starts_with(kByteOrderMark) ? text.substr(kByteOrderMark.size()) : text;
}

}  // namespace

FileText::FileText(const std::string& path, CheckBeginning check) {
  const auto [file, size] = Open(path);
  // All of a small file, or as much as the check wants to see.
  Grow(kFirstBlock);
  for (bool isFirst = true;; isFirst = false) {
    const std::size_t room = std::min(capacity_ - size_, kLargestBlock);
    const ssize_t got = ReadUpTo(file.Get(), bytes_.get() + size_, room);
    if (got < 0) FailWithErrno(path, errno);
    const auto count = static_cast<std::size_t>(got);
    size_ += count;
    const std::string_view text(bytes_.get(), size_);
    if (isFirst && IsUtf16(text)) {
      throw SceneError(path + ": is UTF-16; a scene file is UTF-8");
    }
    if (size_ > kLargestFile) FailTooLarge(path);
    if (count < room) break;
    // A hole in a file costs no disk. No text holds NUL: nothing behind the first can be right.
    if (check != nullptr && std::memchr(bytes_.get() + size_ - count, '\0', count) != nullptr)
      break;
    if (isFirst && check != nullptr) check(path, WithoutMark(text));
    // The size is a hint only: a pipe has none, and a file may grow while it is read. One byte more
    // lets the end show without another block.
    if (size_ == capacity_) Grow(std::max<std::size_t>(isFirst ? size + 1 : 0, size_ * 2));
  }
  bytes_[size_] = '\0';
  start_ = size_ - WithoutMark({bytes_.get(), size_}).size();
}

// Makes room for `capacity` bytes of the file.
void FileText::Grow(std::size_t capacity) {
  auto larger = std::make_unique_for_overwrite<char[]>(capacity + 1);
  if (size_ > 0) std::memcpy(larger.get(), bytes_.get(), size_);
  bytes_ = std::move(larger);
  capacity_ = capacity;
}

std::string TextPlace(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  // npos + 1 is 0, the start of the only line.
  const std::string_view inLine = before.substr(before.rfind('\n') + 1);
  const auto column = 1 + std::ranges::count_if(inLine, std::not_fn(ContinuesCharacter));
  return fmt::format("line {}, column {}", line, column);
}

}  // namespace mapexport
