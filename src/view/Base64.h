// Bytes as text.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <span>

namespace mapexport {

/// Writes `bytes` in base64 (RFC 4648, with padding), without line breaks.
void WriteBase64(std::span<const std::byte> bytes, std::ostream& out);

}  // namespace mapexport
