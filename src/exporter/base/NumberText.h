// Numbers to text and back, the same in every locale.
#pragma once

#include <string>

namespace mapexport {

/// `value` as "%f" writes it: six decimals and "." as the decimal point; "inf" and "nan", with "-"
/// when the sign is set, for values that are not finite.
std::string FormatFloat(float value);

/// The decimal floating-point number at the start of `text`, after blanks, rounded to double; 0
/// when there is none. Too large a number is infinite. "inf" and "nan" are numbers when nothing
/// follows them; other words and hexadecimal are none.
double LeadingNumber(const char* text);

/// The decimal integer at the start of `text`, after blanks, clamped to 32 bits; 0 when there is
/// none.
int LeadingInteger(const char* text);

}  // namespace mapexport
