// Reads the bytes of a settings file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace mapexport {

/// A longer file can't be a settings file.
inline constexpr std::size_t kMaxSettingsBytes = std::size_t{16} << 20;

/// The bytes of the file at `path`; nothing when there is no such file. Throws SettingsError when
/// it is not a regular file, can't be read or is too long.
std::optional<std::string> ReadSettingsFile(const std::string& path);

/// The same for an open file, from its descriptor's position.
std::string ReadSettingsFile(int descriptor);

}  // namespace mapexport
