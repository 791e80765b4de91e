// Resource ids of the cursors that show which clean-up pass runs.
#pragma once

namespace mapexport {

inline constexpr int kWeldCursor = 104;
inline constexpr int kCleanCursor = 109;

}  // namespace mapexport
