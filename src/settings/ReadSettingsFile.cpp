#include "settings/ReadSettingsFile.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "settings/SettingsError.h"
#include "system/Descriptor.h"

namespace mapexport {

std::optional<std::string> ReadSettingsFile(const std::string& path) {
  // Without O_NONBLOCK a pipe without a writer would keep us waiting before we see that it is one.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.IsOpen()) return ReadSettingsFile(file.Get());
  if (errno == ENOENT) return std::nullopt;
  throw SettingsError("the file can't be opened", errno);
}

std::string ReadSettingsFile(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) throw SettingsError("the file can't be read", errno);
  if (!S_ISREG(status.st_mode)) throw SettingsError("not a regular file");
  std::string bytes;
  std::array<char, 1 << 16> buffer{};
  while (bytes.size() <= kMaxSettingsBytes) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SettingsError("the file can't be read", errno);
    if (count == 0) return bytes;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  throw SettingsError(fmt::format(
      "the file is longer than {} bytes, the most that settings may take", kMaxSettingsBytes));
}

}  // namespace mapexport
