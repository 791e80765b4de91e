#include "system/FdOutput.h"

#include <cstring>

#include "system/Descriptor.h"

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
      return Write({text, static_cast<std::size_t>(size)}) ? size : 0;
    }
  }
  std::memcpy(pptr(), text, static_cast<std::size_t>(size));
  pbump(static_cast<int>(size));
  return size;
}

int FdOutput::sync() {
  return Drain() ? 0 : -1;
}

bool FdOutput::Write(std::string_view text) {
  if (error_ == 0) error_ = WriteAll(fd_, text);
  return error_ == 0;
}

bool FdOutput::Drain() {
  const bool written = Write({pbase(), pptr()});
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return written;
}

}  // namespace mapexport
