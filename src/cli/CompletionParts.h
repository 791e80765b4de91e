// What the completions of all shells say of options.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/CommandInfo.h"

namespace mapexport {

/// The words that a value can be completed with; none for flags, numbers, files and free texts.
std::span<const char* const> ValueWords(const OptionInfo& option);

/// Whether the value is a file or folder.
bool ValueIsPath(const OptionInfo& option);

/// The first part of a help text, as the note beside a word.
std::string_view ShortHelp(std::string_view help);

/// `text` with a backslash before each of `special`.
std::string WithBackslashes(std::string_view text, std::string_view special);

}  // namespace mapexport
