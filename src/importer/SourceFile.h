// What is known of a scene file before a reader gets it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mapexport {

/// The extension of `path` with its dot, in lower case (ASCII); empty when there is none.
std::string FileExtension(const std::string& path);

/// The first bytes (at most 32) of the file at `path`. Throws SceneError when it doesn't exist,
/// isn't a regular file, can't be read, or is empty.
std::string FileBeginning(const std::string& path);

/// Throws SceneError "PATH: REASON".
[[noreturn]] void RefuseFile(const std::string& path, std::string_view reason);
[[noreturn]] void RefuseUtf16(const std::string& path);

/// The default limit on reading the scene at `path`, in seconds of processor time: 5, plus one per
/// begun 4 MB of the file, at most 45. Always 45 for a format (by its extension) that keeps
/// geometry in other files.
std::uint32_t ReadSeconds(const std::string& path);

}  // namespace mapexport
