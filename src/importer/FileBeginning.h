// The first look at a file, before any reader gets it.
#pragma once

#include <string>
#include <string_view>

namespace mapexport {

/// The first bytes (at most 32) of the file at `path`. Throws SceneError for what no reader should
/// be given at all: what isn't there, isn't a regular file, can't be read, or is empty.
std::string FileBeginning(const std::string& path);

/// Throws SceneError "PATH: REASON".
[[noreturn]] void RefuseFile(const std::string& path, std::string_view reason);
[[noreturn]] void RefuseUtf16(const std::string& path);

}  // namespace mapexport
