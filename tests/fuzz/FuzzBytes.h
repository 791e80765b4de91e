// Values out of a fuzzer's bytes, most of them near to where decisions fall.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <string>
#include <string_view>

namespace mapexport {

/// Takes values off the front of the input; behind its end all bytes are 0.
class FuzzBytes {
 public:
  /// Finite numbers are at most `largest`.
  FuzzBytes(const std::uint8_t* data, std::size_t size,
            float largest = std::numeric_limits<float>::max())
      : rest_(reinterpret_cast<const char*>(data), size), largest_(largest) {}

  std::string_view Rest() const { return rest_; }
  /// The next `size` bytes, or all that are left.
  FuzzBytes Part(std::size_t size) {
    const std::string_view part = rest_.substr(0, size);
    rest_.remove_prefix(part.size());
    return FuzzBytes(part, largest_);
  }

  std::uint32_t U8() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }
  std::uint32_t U16() {
    const std::uint32_t low = U8();
    return low | U8() << 8;
  }
  std::uint32_t U32() {
    const std::uint32_t low = U16();
    return low | U16() << 16;
  }
  std::uint32_t Below(std::size_t limit) {
    return (limit <= 256 ? U8() : U16()) % static_cast<std::uint32_t>(limit);
  }
  bool OneIn(std::uint32_t n) { return Below(n) == n - 1; }
  template <class T, std::size_t kSize>
  T Pick(const std::array<T, kSize>& of) {
    return of[Below(kSize)];
  }

  /// Limits of the passes and values beside them, small multiples, ends of the range, or any bits.
  float Float() {
    constexpr std::array kNotable{0.0f,     1.0f,   0.2f,  0.1f,   0.01f,      0.0001f, 0.3f,
                                  0.31623f, 0.5f,   10.0f, 100.0f, 1000.0f,    0.005f,  0.05f,
                                  1e-20f,   1e-42f, 1e18f, 1e19f,  3.4e38f,    1e30f,   16777216.0f,
                                  65536.0f, 255.0f, 1e-6f, 1e6f,   33554432.f, 0.8f,    1.0e-10f};
    const std::uint32_t kind = U8();
    if (kind >= 0xF0) return std::bit_cast<float>(U32());
    if (kind >= 0xA0) {
      constexpr std::array kSteps{1.0f, 0.1f, 0.05f, 100.0f, 0.001f};
      return kSteps[kind % kSteps.size()] * static_cast<float>(static_cast<std::int8_t>(U8()));
    }
    const float notable = kNotable[kind % kNotable.size()] * (kind % 2 == 0 ? 1.0f : -1.0f);
    if (kind < 0x70) return kind >= 0x38 ? -notable : notable;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    return std::nextafter(notable, kind < 0x88 ? kInfinity : -kInfinity);
  }
  float Finite() {
    const float value = Float();
    return std::abs(value) <= largest_ ? value : 0.0f;
  }

  /// Up to 255 bytes.
  std::string Text() { return std::string(Part(U8()).Rest()); }
  /// User property text: keywords and what is nearly one, separators and anything.
  std::string UserText() {
    constexpr std::array<std::string_view, 20> kPieces{"climbable",
                                                       "notcollidable",
                                                       "notcollidable3d",
                                                       "notrendered",
                                                       "floorface",
                                                       "45plusfloor",
                                                       "notshownplan",
                                                       "\n",
                                                       "\r\n",
                                                       "\t",
                                                       " ",
                                                       "3d",
                                                       "NotRendered",
                                                       "floorfac",
                                                       "&lf;",
                                                       "&cr;&lf;",
                                                       ",",
                                                       "\xC3\xA4",
                                                       "\xFF",
                                                       "not"};
    std::string text;
    for (std::uint32_t i = Below(12); i > 0; --i) {
      const std::uint32_t piece = Below(kPieces.size() + 1);
      text += piece < kPieces.size() ? std::string(kPieces[piece]) : Text();
    }
    return text;
  }

 private:
  FuzzBytes(std::string_view bytes, float largest) : rest_(bytes), largest_(largest) {}

  std::string_view rest_;
  float largest_;
};

/// Ends the run as a find, saying what does not hold.
inline void Require(bool holds, std::string_view what) {
  if (holds) return;
  std::cerr << "does not hold: " << what << '\n';
  std::abort();
}

}  // namespace mapexport
