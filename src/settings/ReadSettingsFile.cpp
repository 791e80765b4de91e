#include "settings/ReadSettingsFile.h"

#include <array>
#include <cerrno>

#include <fmt/format.h>
#include <sys/stat.h>

#include "settings/SettingsError.h"
#include "system/Descriptor.h"

namespace mapexport {

std::optional<std::string> ReadSettingsFile(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  if (file.IsOpen()) return ReadSettingsFile(file.Get());
  if (errno == ENOENT) return std::nullopt;
  throw SettingsError("the file can't be opened", errno);
}

std::string ReadSettingsFile(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) throw SettingsError("the file can't be read", errno);
  if (!S_ISREG(status.st_mode)) throw SettingsError("not a regular file");
  std::string bytes;
  std::array<char, 1 << 16> block{};
  for (;;) {
    const ssize_t count = ReadUpTo(descriptor, block.data(), block.size());
    if (count < 0) throw SettingsError("the file can't be read", errno);
    bytes.append(block.data(), static_cast<std::size_t>(count));
    if (bytes.size() > kMaxSettingsBytes) {
      throw SettingsError(fmt::format(
          "the file is longer than {} bytes, the most that settings may take", kMaxSettingsBytes));
    }
    if (static_cast<std::size_t>(count) < block.size()) return bytes;
  }
}

}  // namespace mapexport
