// Small types that several host interfaces share.
#pragma once

#include <cstdint>

namespace mapexport {

/// The host's time, in its own ticks.
using TimeValue = std::int32_t;

/// Identifier of a class of objects, materials, maps or plug-ins.
struct Class_ID {
  std::uint32_t a = 0;
  std::uint32_t b = 0;

  friend bool operator==(const Class_ID&, const Class_ID&) = default;
};

inline constexpr Class_ID kTriObjectClassID{0x9, 0};
inline constexpr Class_ID kStandardMtlClassID{2, 0};
inline constexpr Class_ID kMultiMtlClassID{0x200, 0};
inline constexpr Class_ID kBitmapTexClassID{0x240, 0};

/// A colour as the host's materials give it, each component usually 0 to 1.
struct Color {
  float r = 0.0f;
  float g = 0.0f;
  float b = 0.0f;

  friend bool operator==(const Color&, const Color&) = default;
};

/// A window of the System, which alone knows what it points to.
struct Window;
using HWND = Window*;

}  // namespace mapexport
