// Bytes written as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// The bytes that `text` stands for in base64, with or without the "=" at its end; empty when a
/// character has no place in it.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace mapexport
