// The text of a file, and places in it by line and column.
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
  /// Throws to refuse the file at `path` because of its first bytes.
  using CheckBeginning = void (*)(const std::string& path, std::string_view beginning);

  /// Reads the file at `path`, which must be a regular file or standard input; a pipe is read until
  /// its writer closes it. Of a file longer than 64 KiB, `check` sees the first 64 KiB before the
  /// rest is read. Throws SceneError when the file can't be read, has 4 GiB or more (a regular file
  /// is refused before it is read), or begins as UTF-16.
  explicit FileText(const std::string& path, CheckBeginning check = nullptr);

  std::string_view View() const { return {bytes_.get() + start_, size_ - start_}; }

 private:
  void Grow(std::size_t capacity);

  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0;  // without the zero byte
  std::size_t size_ = 0;      // of the file
  std::size_t start_ = 0;     // behind the byte-order mark
};

/// "line 3, column 7" of the byte at `offset`, which may be the text's end; both count from 1, the
/// column in characters of UTF-8.
std::string TextPlace(std::string_view text, std::size_t offset);

}  // namespace mapexport
