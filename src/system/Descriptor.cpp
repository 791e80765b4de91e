#include "system/Descriptor.h"

#include <cerrno>

#include <fcntl.h>

namespace mapexport {
namespace {

/// Calls `read(done)` until `size` bytes are read or the file ends. Errors are those of ReadUpTo.
template <class Read>
ssize_t ReadAll(std::size_t size, const Read& read) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = read(done);
    if (count == 0) break;
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return -1;
    }
  }
  return static_cast<ssize_t>(done);
}

}  // namespace

Descriptor OpenToRead(const std::string& path) {
  Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (file.IsOpen() || errno != ENOENT || path != "/dev/stdin") return file;
  Descriptor input(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
  // A file begins where it does when it is opened, also the second time; a pipe goes on.
  if (input.IsOpen()) lseek(input.Get(), 0, SEEK_SET);
  return input;
}

std::string_view NameHint(std::string_view path) {
  return path == "-" ? "; standard input is /dev/stdin" : "";
}

ssize_t ReadUpTo(int file, void* bytes, std::size_t size) {
  return ReadAll(size, [&](std::size_t done) {
    return ::read(file, static_cast<char*>(bytes) + done, size - done);
  });
}

ssize_t ReadUpTo(int file, void* bytes, std::size_t size, std::uint64_t offset) {
  return ReadAll(size, [&](std::size_t done) {
    return ::pread(file, static_cast<char*>(bytes) + done, size - done,
                   static_cast<off_t>(offset + done));
  });
}

int WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace mapexport
