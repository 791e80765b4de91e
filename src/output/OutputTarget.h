// Finds out where an output goes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

namespace mapexport {

/// Whether the path of an output means standard output: "-", "/dev/stdout" and its other names.
/// Standard output is written to and never replaced, whatever it leads to.
bool IsStandardOutput(std::string_view path);

/// The place of an output that can be written.
struct OutputTarget {
  std::string name;                ///< the path as given, or "standard output"
  std::string path;                ///< the same, or the file that it links to, or "/dev/stdout"
  std::optional<struct stat> old;  ///< of the existing file that will be replaced
  bool isStandardOutput = false;   ///< else it is a file
};

/// Resolves `output`: to standard output, or to a file that can be put in place. Its folder must
/// exist and be writable; an existing file must be regular and writable. Changes nothing. Throws
/// RunError.
OutputTarget FindOutput(const std::string& output);

/// Throws RunError when `path` exists (links followed) and is not a regular file, or when it ends
/// like a folder.
void RequireRegularFileOrNothing(const std::string& path);

/// Throws RunError: "NAME: cannot be written: WHY".
[[noreturn]] void ThrowCannotWrite(const std::string& name, const std::string& why);

}  // namespace mapexport
