#include "system/FdOutput.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace mapexport {

FdOutput::FdOutput(int fd) : fd_(fd) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

int FdOutput::Finish() {
  Drain();
  return error_;
}

FdOutput::int_type FdOutput::overflow(int_type c) {
  if (!Drain()) return traits_type::eof();
  if (!traits_type::eq_int_type(c, traits_type::eof())) {
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
  }
  return traits_type::not_eof(c);
}

std::streamsize FdOutput::xsputn(const char* text, std::streamsize size) {
  if (size > epptr() - pptr()) {
    if (!Drain()) return 0;
    if (size >= epptr() - pptr()) {
      return WriteAll(text, static_cast<std::size_t>(size)) ? size : 0;
    }
  }
  std::memcpy(pptr(), text, static_cast<std::size_t>(size));
  pbump(static_cast<int>(size));
  return size;
}

int FdOutput::sync() {
  return Drain() ? 0 : -1;
}

bool FdOutput::WriteAll(const char* text, std::size_t size) {
  while (error_ == 0 && size != 0) {
    const ssize_t written = write(fd_, text, size);
    if (written < 0) {
      if (errno != EINTR) error_ = errno;
      continue;
    }
    text += written;
    size -= static_cast<std::size_t>(written);
  }
  return error_ == 0;
}

bool FdOutput::Drain() {
  const bool written = WriteAll(pbase(), static_cast<std::size_t>(pptr() - pbase()));
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return written;
}

}  // namespace mapexport
