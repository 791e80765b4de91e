// File descriptors: a class that closes its own, and complete reads and writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace mapexport {

class Descriptor {
 public:
  Descriptor() = default;
  /// Owns what open() returned, which may be -1.
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Descriptor() {
    if (IsOpen()) ::close(descriptor_);
  }

  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

/// Opens the file at `path` for reading. When that fails, the descriptor is not open and errno has
/// the reason. It is non-blocking: opening a pipe does not wait for its writer. "/dev/stdin" is
/// standard input also where there is no /proc, to which the name leads.
Descriptor OpenToRead(const std::string& path);

/// What to add to the reason when that fails: for "-" the name of standard input, else nothing.
std::string_view NameHint(std::string_view path);

/// Reads `size` bytes, fewer only at the end of the file. Returns how many; -1 on an error, with
/// the reason in errno.
ssize_t ReadUpTo(int file, void* bytes, std::size_t size);
/// The same from byte `offset` of the file on; its position stays.
ssize_t ReadUpTo(int file, void* bytes, std::size_t size, std::uint64_t offset);

/// Writes all of `bytes`. Returns 0, or the errno of the write that failed.
int WriteAll(int file, std::string_view bytes);

}  // namespace mapexport
