#include "importer/ReadSeconds.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "importer/SourceFormat.h"

namespace mapexport {

std::uint32_t ReadSeconds(const std::string& path) {
  constexpr std::uint32_t kLeast = 5;
  constexpr std::uint32_t kMost = 45;
  constexpr std::uintmax_t kBytesOfSecond = 4'000'000;
  if (HasDataBeside(path)) return kMost;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return kLeast;  // it can't be read either
  const std::uintmax_t begun = size / kBytesOfSecond + (size % kBytesOfSecond == 0 ? 0 : 1);
  return kLeast + static_cast<std::uint32_t>(std::min<std::uintmax_t>(begun, kMost - kLeast));
}

}  // namespace mapexport
