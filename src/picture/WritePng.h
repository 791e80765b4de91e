// Writes a picture as a PNG file.
#pragma once

#include <iosfwd>

#include "picture/Picture.h"

namespace mapexport {

/// 8 bits per channel, the same bytes from run to run: no time, no names. Check the stream's state
/// afterwards. Throws bad_alloc and RunError.
void WritePng(const Picture& picture, std::ostream& out);

}  // namespace mapexport
