#include "modelreader/LoadBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include <fmt/format.h>
#include <sys/stat.h>

#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {

namespace {

constexpr std::uint64_t kTooManyBytes = std::uint64_t{1} << 32;
constexpr std::uint64_t kBeginning = 64;

}  // namespace

std::optional<LoadedBytes> LoadBytes(const std::string& path,
                                     bool (*isWanted)(std::span<const std::byte> beginning),
                                     ProblemList& problems) {
  const Descriptor file = OpenToRead(path);
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    problems.AddToFile(ModelFault::kCannotOpen,
                       fmt::format("{}{}", ErrnoText(errno), NameHint(path)));
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

  // The beginning alone first: it shows whether the rest is worth reading.
  LoadedBytes bytes;
  for (const std::uint64_t wanted : {std::min(size, kBeginning), size}) {
    auto data = std::make_unique_for_overwrite<std::byte[]>(wanted);
    std::ranges::copy(bytes.View(), data.get());
    bytes.data = std::move(data);
    const ssize_t count = ReadUpTo(file.Get(), bytes.data.get() + bytes.size, wanted - bytes.size);
    if (count < 0) {
      problems.AddToFile(ModelFault::kCannotRead, ErrnoText(errno));
      return std::nullopt;
    }
    bytes.size += static_cast<std::size_t>(count);
    if (bytes.size == size || !isWanted(bytes.View())) break;
  }
  return bytes;
}

}  // namespace mapexport
