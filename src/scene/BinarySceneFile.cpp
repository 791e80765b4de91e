#include "scene/BinarySceneFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fmt/format.h>
#include <sys/stat.h>

#include "scene/JsonDocument.h"
#include "scene/SceneError.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// The JSON parser takes no more.
constexpr std::uint64_t kLargestJson = 0xFFFF'FF00;
constexpr std::uint64_t kFirstOfJson = std::uint64_t{64} << 10;
constexpr std::uint64_t kMostOfJson = std::uint64_t{16} << 20;

}  // namespace

BinarySceneFile::BinarySceneFile(const Descriptor& file, const std::string& name,
                                 std::uint64_t mostJson)
    : file_(file), name_(name) {
  struct stat status {};
  if (!file_.IsOpen() || fstat(file_.Get(), &status) != 0) {
    Fail("can't be read: " + ErrnoText(errno));
  }
  if (S_ISDIR(status.st_mode)) Fail("can't be read: " + ErrnoText(EISDIR));
  if (!S_ISREG(status.st_mode)) Fail("is not a regular file");
  const auto size = static_cast<std::uint64_t>(status.st_size);
  BinarySceneHeader header{};
  if (size == 0) Fail("the file is empty");
  if (size < sizeof header) Fail("is shorter than the header of a binary scene file");
  ReadAt(0, &header, sizeof header);
  if (std::string_view(header.magic, sizeof header.magic) != kBinarySceneMagic) {
    Fail("is no binary scene file: it begins with other bytes");
  }
  ToFileOrder(header);
  if (header.version != kBinarySceneVersion) {
    Fail(fmt::format("version {} is not known, only {} is", header.version, kBinarySceneVersion));
  }
  if (header.reserved != 0) {
    Fail(fmt::format("bytes 20 to 24 are reserved and must be 0, not {}", header.reserved));
  }
  if (header.jsonBytes > size - sizeof header) {
    Fail(fmt::format("its header says that the JSON has {} bytes, but the file has {}",
                     header.jsonBytes, size));
  }
  listsBegin_ = AlignList(sizeof header + header.jsonBytes);
  listBytes_ = header.listBytes;
  if (listsBegin_ > size || size - listsBegin_ != listBytes_) {
    Fail(
        fmt::format("its header says that the lists are the {} bytes from byte {} on, but the file "
                    "has {} bytes",
                    listBytes_, listsBegin_, size));
  }
  const std::uint64_t most = std::min(mostJson, kLargestJson);
  if (header.jsonBytes > most) {
    Fail(fmt::format("its JSON has {} bytes, more than the {} that are allowed", header.jsonBytes,
                     most));
  }
  ReadJson(header.jsonBytes);
}

/// A hole in a file costs no disk. No text holds NUL: nothing behind the first can be right.
void BinarySceneFile::ReadJson(std::uint64_t size) {
  while (json_.size() < size) {
    const std::size_t done = json_.size();
    const std::size_t count = std::min(done == 0 ? kFirstOfJson : kMostOfJson, size - done);
    json_.resize(done + count);
    ReadAt(sizeof(BinarySceneHeader) + done, json_.data() + done, count);
    if (std::memchr(json_.data() + done, '\0', count) != nullptr) break;
    if (done == 0 && count < size) JsonDocument::CheckBeginning(name_, json_);
  }
}

void BinarySceneFile::Read(std::uint64_t offset, std::span<std::uint32_t> words) const {
  ReadAt(listsBegin_ + offset, words.data(), words.size_bytes());
  ToFileOrder(words);
}

void BinarySceneFile::ReadAt(std::uint64_t offset, void* bytes, std::uint64_t size) const {
  const ssize_t got = ReadUpTo(file_.Get(), bytes, size, offset);
  if (got < 0) Fail("can't be read: " + ErrnoText(errno));
  if (static_cast<std::uint64_t>(got) != size) Fail("became shorter while it was read");
}

void BinarySceneFile::Fail(std::string_view reason) const {
  throw SceneError(fmt::format("{}: {}", name_, reason));
}

}  // namespace mapexport
