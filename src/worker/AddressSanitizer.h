// Whether this build has AddressSanitizer, which needs more from the system.
#pragma once

namespace mapexport {

#ifdef MAPEXPORT_ADDRESS_SANITIZER
inline constexpr bool kAddressSanitizer = true;
#else
inline constexpr bool kAddressSanitizer = false;
#endif

}  // namespace mapexport
