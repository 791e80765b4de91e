#include "modelreader/LoadBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mapexport {

namespace {

constexpr std::uint64_t kTooManyBytes = std::uint64_t{1} << 32;
constexpr std::uint64_t kBeginning = 64;

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Value() const { return value_; }

 private:
  int value_;
};

std::string SystemMessage(int error) {
  return std::generic_category().message(error);
}

/// Reads up to `size` bytes; fewer when the file has become shorter. -1 on an error, told by errno.
std::int64_t ReadFully(int file, std::byte* data, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = ::read(file, data + done, size - done);
    if (count == 0) break;
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return -1;
    }
  }
  return static_cast<std::int64_t>(done);
}

}  // namespace

std::optional<LoadedBytes> LoadBytes(const std::string& path,
                                     bool (*isWanted)(std::span<const std::byte> beginning),
                                     ProblemList& problems) {
  // Without O_NONBLOCK, opening a pipe would wait for its writer.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (file.Value() < 0 || ::fstat(file.Value(), &status) != 0) {
    problems.AddToFile(ModelFault::kCannotOpen, SystemMessage(errno));
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    problems.AddToFile(S_ISDIR(status.st_mode) ? ModelFault::kIsFolder : ModelFault::kNotRegular);
    return std::nullopt;
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size >= kTooManyBytes) {
    problems.AddToFile(ModelFault::kTooLarge, std::to_string(size), std::to_string(kTooManyBytes));
    return std::nullopt;
  }

  // First the beginning, then the whole file.
  LoadedBytes bytes;
  for (const std::uint64_t wanted : {std::min(size, kBeginning), size}) {
    auto data = std::make_unique_for_overwrite<std::byte[]>(wanted);
    std::ranges::copy(bytes.View(), data.get());
    bytes.data = std::move(data);
    const std::int64_t count =
        ReadFully(file.Value(), bytes.data.get() + bytes.size, wanted - bytes.size);
    if (count < 0) {
      problems.AddToFile(ModelFault::kCannotRead, SystemMessage(errno));
      return std::nullopt;
    }
    bytes.size += static_cast<std::size_t>(count);
    if (bytes.size == size || !isWanted(bytes.View())) break;
  }
  return bytes;
}

}  // namespace mapexport
