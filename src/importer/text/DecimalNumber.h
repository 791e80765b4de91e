// Decimal numbers as texts of scene files write them.
#pragma once

#include <optional>
#include <string_view>

namespace mapexport {

/// The 32-bit float nearest to the number that `word` is wholly; empty when it is none. The locale
/// plays no part. What is too large is infinite, what is too small is 0; "nan", "inf" and the forms
/// like "-1.#IND" that some programs write for such values aren't finite either.
std::optional<float> DecimalNumber(std::string_view word);

}  // namespace mapexport
