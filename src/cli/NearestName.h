// Suggests a name for a mistyped one.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace mapexport {

/// "; did you mean "export"?" with the name that is nearest to `given`: the fewest letters added,
/// left out, changed or swapped with their neighbour, at most one per three letters of `given`, or
/// one that begins with it. Of equally near ones the first. Empty when none is near.
std::string Suggestion(std::string_view given, std::span<const std::string> names);

}  // namespace mapexport
