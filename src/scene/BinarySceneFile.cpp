#include "scene/BinarySceneFile.h"

#include <cerrno>

#include <fmt/format.h>
#include <sys/stat.h>

#include "scene/SceneError.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// The JSON parser takes no more.
constexpr std::uint64_t kLargestJson = 0xFFFF'FF00;

}  // namespace

BinarySceneFile::BinarySceneFile(const Descriptor& file, const std::string& name)
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
  if (header.jsonBytes > size - sizeof header || header.jsonBytes > kLargestJson) {
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
  json_.resize(header.jsonBytes);
  ReadAt(sizeof header, json_.data(), json_.size());
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
