// Reads the arguments of a command. Each function throws UsageError for a value that is wrong, and
// gives nothing for an option that is not given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/CommandLine.h"

namespace mapexport {

/// `path`, which must not be empty; errors begin with `name`.
std::string RequirePath(const CommandLine& line, std::string_view name, const std::string& path);

/// The path that the positional of that number is.
std::string PositionalPath(const CommandLine& line, std::size_t index);

std::optional<std::string> PathValue(const CommandLine& line, std::string_view option);

/// A whole number from 0 to 4294967295.
std::optional<std::uint32_t> WholeValue(const CommandLine& line, std::string_view option);

/// The number of --scale, above 0; nothing also when it is "auto".
std::optional<float> ScaleValue(const CommandLine& line);

/// Which of the option's words its value is; no other value is allowed.
std::optional<std::size_t> WordValue(const CommandLine& line, const OptionInfo& option);

/// Which of the option's rows its value names.
std::optional<int> RowValue(const CommandLine& line, const OptionInfo& option);

}  // namespace mapexport
