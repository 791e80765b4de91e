// A stream buffer over a file descriptor that remembers why writing failed.
#pragma once

#include <array>
#include <streambuf>
#include <string_view>

namespace mapexport {

/// Buffers what a stream writes to an open descriptor, which the caller keeps and closes. Call
/// Finish at the end: the destructor drops what is still buffered.
class FdOutput : public std::streambuf {
 public:
  explicit FdOutput(int fd);

  /// Writes what is buffered. Returns the errno of the first write that failed, 0 when none did.
  int Finish();

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override;

 private:
  bool Write(std::string_view text);
  bool Drain();

  int fd_;
  int error_ = 0;
  std::array<char, 65536> buffer_;
};

}  // namespace mapexport
