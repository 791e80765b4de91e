#include "app/ConvertApart.h"

#include <cerrno>
#include <cstdint>
#include <exception>
#include <new>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <fmt/format.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "system/RunError.h"
#include "worker/BecomeWorker.h"

namespace mapexport {
namespace {

/// How the child ends when it ends as it should.
enum End { kConverted = 0, kRefused = 71, kMemoryRanOut = 72 };

static_assert(std::is_trivially_copyable_v<Changes>);

/// Writes what ReadHandedOver reads: the changes, and each file's two lengths, name and bytes.
class HandOver {
 public:
  explicit HandOver(int file) : output_(file), out_(&output_) {}

  void Write(const ConvertedModel& converted) {
    WriteValue(converted.changes);
    for (const ConvertedFile& file : converted.files) {
      WriteValue(std::uint64_t{file.name.size()});
      WriteValue(std::uint64_t{file.bytes.size()});
      out_ << file.name << file.bytes;
    }
  }
  void Write(std::string_view reason) { out_ << reason; }
  int Finish() { return output_.Finish(); }

 private:
  template <typename Value>
  void WriteValue(const Value& value) {
    out_.write(reinterpret_cast<const char*>(&value), sizeof value);
  }

  FdOutput output_;
  std::ostream out_;
};

[[noreturn]] void Refuse(int file, std::string_view reason) {
  HandOver out(file);
  out.Write(reason);
  out.Finish();
  _exit(kRefused);
}

/// The child's part, which nothing leaves.
[[noreturn]] void Convert(const std::function<ConvertedModel()>& convert, int file) noexcept {
  try {
    HandOver out(file);
    out.Write(convert());
    const int error = out.Finish();
    if (error == 0) _exit(kConverted);
    if (ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0) {
      Refuse(file, "what was converted can't be handed over: " + ErrnoText(error));
    }
  } catch (const std::bad_alloc&) {
    _exit(kMemoryRanOut);
  } catch (const std::exception& error) {
    Refuse(file, error.what());
  }
  _exit(kRefused);
}

/// The bytes of a file, from its beginning on.
class Bytes {
 public:
  explicit Bytes(int file) : file_(file) {
    struct stat info {};
    if (fstat(file, &info) != 0) Fail();
    left_ = static_cast<std::uint64_t>(info.st_size);
  }

  std::uint64_t Left() const { return left_; }

  template <typename Value>
  Value Take() {
    Value value;
    Take(reinterpret_cast<char*>(&value), sizeof value);
    return value;
  }
  std::string TakeText(std::uint64_t size) {
    if (size > left_) Fail();
    std::string text(size, '\0');
    Take(text.data(), size);
    return text;
  }

 private:
  [[noreturn]] static void Fail() { throw ConvertError("what was converted can't be taken over"); }

  void Take(char* data, std::uint64_t size) {
    if (size > left_) Fail();
    left_ -= size;
    while (size != 0) {
      const ssize_t count = pread(file_, data, size, at_);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) Fail();
      data += count;
      at_ += count;
      size -= static_cast<std::uint64_t>(count);
    }
  }

  int file_;
  off_t at_ = 0;
  std::uint64_t left_ = 0;
};

ConvertedModel ReadHandedOver(int file) {
  Bytes bytes(file);
  ConvertedModel converted;
  converted.changes = bytes.Take<Changes>();
  while (bytes.Left() != 0) {
    const auto nameSize = bytes.Take<std::uint64_t>();
    const auto size = bytes.Take<std::uint64_t>();
    std::string name = bytes.TakeText(nameSize);
    converted.files.push_back({std::move(name), bytes.TakeText(size)});
  }
  return converted;
}

/// Throws unless `end`, from waitpid, says that all is handed over in `file`.
void RequireConverted(int end, int file) {
  if (WIFSIGNALED(end)) {
    const char* const name = sigdescr_np(WTERMSIG(end));
    throw ConvertError(
        fmt::format("the export library crashed on it ({}), perhaps for want of memory",
                    name == nullptr ? "unknown signal" : name));
  }
  if (WEXITSTATUS(end) == kMemoryRanOut) throw std::bad_alloc();
  if (WEXITSTATUS(end) == kConverted) return;
  Bytes reason(file);
  std::string text = reason.TakeText(WEXITSTATUS(end) == kRefused ? reason.Left() : 0);
  throw ConvertError(text.empty() ? "the export library ended the process" : text);
}

}  // namespace

ConvertedModel ConvertApart(const std::function<ConvertedModel()>& convert) {
  const Descriptor file(memfd_create("converted", MFD_CLOEXEC));
  if (!file.IsOpen()) throw ConvertError("no memory file can be made: " + ErrnoText(errno));
  // An inherited "ignore" would keep its end from us.
  signal(SIGCHLD, SIG_DFL);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw ConvertError("no process can be started: " + ErrnoText(errno));
  if (child == 0) {
    BecomeWorker(parent);
    Convert(convert, file.Get());
  }
  int end = 0;
  while (waitpid(child, &end, 0) < 0) {
    if (errno != EINTR) throw ConvertError("its process's end is not known: " + ErrnoText(errno));
  }
  RequireConverted(end, file.Get());
  return ReadHandedOver(file.Get());
}

}  // namespace mapexport
