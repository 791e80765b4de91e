// File descriptors: one that closes itself; opening, reading and writing that see to it that all is
// done.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace mapexport {

class Descriptor {
 public:
  Descriptor() = default;
  /// Takes over what open() gave, an error included.
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

/// Opens the file at `path` for reading. When that fails it is not open, and errno tells why. Reads
/// don't wait, and opening a pipe doesn't wait for its writer, so that one can be refused.
Descriptor OpenToRead(const std::string& path);

/// Reads `size` bytes, or fewer when the file ends before. Returns how many, -1 on an error, which
/// errno tells.
ssize_t ReadUpTo(int file, void* bytes, std::size_t size);

/// Writes all of `bytes`. Returns the errno of the write that failed, 0 when none did.
int WriteAll(int file, std::string_view bytes);

}  // namespace mapexport
