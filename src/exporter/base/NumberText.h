// Numbers to text and back, the same in every locale.
#pragma once

#include <string>

namespace mapexport {

/// `value` as "%f" writes it: six decimals and "." as the decimal point; "inf" and "nan", with "-"
/// when the sign is set, for what is no finite number.
std::string FormatFloat(float value);

/// The decimal floating-point number at the start of `text`, after blanks, rounded to double; 0
/// when there is none. Too large a number is infinite. What FormatFloat writes for infinities and
/// NaN is read back, but only if no more follows: other words, and hexadecimal, are no numbers
/// here.
double LeadingNumber(const char* text);

/// The decimal integer at the start of `text`, after blanks, clamped to 32 bits; 0 when there is
/// none.
int LeadingInteger(const char* text);

}  // namespace mapexport
