// Where an output goes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

namespace mapexport {

/// Whether the path of an output means standard output: "-", "/dev/stdout" and its other names. It
/// is written to and never replaced, whatever it leads to.
bool IsStandardOutput(std::string_view path);

/// An output that can be had.
struct OutputTarget {
  std::string name;                ///< the path as the person gave it, or "standard output"
  std::string path;                ///< the same, or what a link of that path leads to
  std::optional<struct stat> old;  ///< of the file that is there and is to be replaced
  bool isStandardOutput = false;   ///< else a file
};

/// Looks where `output` leads: to standard output, or to a file that can be placed there, because
/// its folder exists and can be written, and what is there is a regular file that can be written.
/// Changes nothing. Throws RunError.
OutputTarget FindOutput(const std::string& output);

/// Throws RunError when `path` exists and is no regular file, links followed, or names a folder by
/// its form.
void RequireRegularFileOrNothing(const std::string& path);

/// Throws the RunError of an output that can't be had: "NAME: cannot be written: WHY".
[[noreturn]] void ThrowCannotWrite(const std::string& name, const std::string& why);

}  // namespace mapexport
