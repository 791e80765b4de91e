#include "exporter/base/DebugLog.h"

#include <filesystem>
#include <locale>

#include "exporter/base/ProcessState.h"
#include "host/System.h"

namespace mapexport {

void DebugLog::LineBuffer::Rewind() {
  setp(text_.data(), text_.data() + text_.size() - 1);
  cut_ = false;
}

const char* DebugLog::LineBuffer::Terminate() {
  if (cut_) pptr()[-1] = '\n';
  *pptr() = '\0';
  return pbase();
}

DebugLog::LineBuffer::int_type DebugLog::LineBuffer::overflow(int_type c) {
  cut_ = true;
  return traits_type::not_eof(c);
}

// The host's global locale may group digits or convert characters.
DebugLog::DebugLog() {
  line_.imbue(std::locale::classic());
  file_.imbue(std::locale::classic());
}

DebugLog& DebugLog::Instance() {
  auto& log = State().debugLog;
  if (!log) log.emplace();
  return *log;
}

void DebugLog::Open(const char* name) {
  fileOpen_ = false;
  file_.close();
  file_.clear();
  name_ = name;
  // Opening a pipe would wait for somebody to read it.
  std::error_code unknown;
  if (!std::filesystem::is_fifo(name, unknown)) file_.open(name, std::ios::out | std::ios::trunc);
  fileOpen_ = file_.is_open();
  if (fileOpen_) return;
  Line() << "Unable to open the file [" << name << "]\n" << std::flush;
  Emit();
}

std::ostream& DebugLog::Line() {
  buffer_.Rewind();
  line_.clear();
  return line_;
}

void DebugLog::Emit() {
  struct LineEnd {
    LineBuffer& buffer;
    ~LineEnd() { buffer.Rewind(); }
  };
  {
    const LineEnd end{buffer_};
    const char* text = buffer_.Terminate();
    if (fileOpen_) file_ << text << std::flush;
    if (echo_) TheSystem().OutputDebugStringA(text);
  }
  if (!fileOpen_ || file_) return;
  fileOpen_ = false;
  Line() << "Unable to write the file [" << name_ << "]\n" << std::flush;
  Emit();
}

}  // namespace mapexport
