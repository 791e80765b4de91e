// Whether this build has a sanitizer with shadow memory (address, thread), which needs more from
// the system.
#pragma once

namespace mapexport {

#ifdef MAPEXPORT_SHADOW_MEMORY
inline constexpr bool kShadowMemory = true;
#else
inline constexpr bool kShadowMemory = false;
#endif

}  // namespace mapexport
