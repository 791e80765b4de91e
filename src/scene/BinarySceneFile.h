// The parts of a binary scene file (.scene.bin): header, JSON document, block of lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "system/ByteOrder.h"
#include "system/Descriptor.h"

namespace mapexport {

// A file begins with this header. The JSON follows it; the lists begin at the next multiple of
// kListAlignment, counted from the start of the file, and reach to its end. All numbers are
// little-endian.
inline constexpr std::string_view kBinarySceneMagic("mapexport-scene\0", 16);
inline constexpr std::uint32_t kBinarySceneVersion = 1;
struct BinarySceneHeader {
  char magic[16];
  std::uint32_t version;
  std::uint32_t reserved;  ///< 0
  std::uint64_t jsonBytes;
  std::uint64_t listBytes;
};
static_assert(sizeof(BinarySceneHeader) == 40);

inline constexpr std::uint64_t kListAlignment = 16;
constexpr std::uint64_t AlignList(std::uint64_t offset) {
  return (offset + kListAlignment - 1) / kListAlignment * kListAlignment;
}

/// Turns the numbers of a header into those of a file, or back.
inline void ToFileOrder(BinarySceneHeader& header) {
  ToFileOrder(std::span(&header.version, 1));
  ToFileOrder(std::span(&header.reserved, 1));
  ToFileOrder(std::span(&header.jsonBytes, 1));
  ToFileOrder(std::span(&header.listBytes, 1));
}

/// A file whose header and sizes are checked and whose JSON is read. It is read, not mapped:
/// another program may cut it meanwhile, and a mapped file that becomes shorter is a signal.
class BinarySceneFile {
 public:
  /// `file` must outlive this object; if it isn't open, errno says why. Messages begin with `name`.
  /// The JSON may have `mostJson` bytes; it is not read beyond a zero byte. Throws SceneError.
  BinarySceneFile(const Descriptor& file, const std::string& name, std::uint64_t mostJson);

  /// May be called once.
  std::string TakeJson() { return std::move(json_); }
  std::uint64_t ListBytes() const { return listBytes_; }
  /// Reads words of the lists from byte `offset` on. They must lie in the lists. Throws SceneError.
  void Read(std::uint64_t offset, std::span<std::uint32_t> words) const;

 private:
  void ReadJson(std::uint64_t size);
  void ReadAt(std::uint64_t offset, void* bytes, std::uint64_t size) const;
  [[noreturn]] void Fail(std::string_view reason) const;

  const Descriptor& file_;
  std::string name_;
  std::string json_;
  std::uint64_t listsBegin_ = 0;
  std::uint64_t listBytes_ = 0;
};

}  // namespace mapexport
