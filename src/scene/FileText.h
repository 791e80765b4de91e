// The text of a file.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace mapexport {

/// The bytes of a file, without a byte-order mark at their start. A zero byte follows them in
/// memory.
class FileText {
 public:
  /// Reads the file at `path`, which may be a pipe: its writer is waited for, until it has closed
  /// the pipe. Throws SceneError when the file can't be read, holds 4 GiB or more, or begins as
  /// UTF-16.
  explicit FileText(const std::string& path);

  std::string_view View() const { return {bytes_.get() + start_, size_ - start_}; }

 private:
  void Grow(std::size_t capacity);

  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0;  // without the zero byte
  std::size_t size_ = 0;      // of the file
  std::size_t start_ = 0;     // behind the byte-order mark
};

}  // namespace mapexport
