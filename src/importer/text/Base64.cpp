// Bytes written as text.
#include "importer/text/Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace mapexport {
namespace {

constexpr std::uint8_t kNone = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeValues() {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> values{};
  values.fill(kNone);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kValues = MakeValues();

}  // namespace

std::optional<std::string> DecodeBase64(std::string_view text) {
  for (int i = 0; i < 2 && text.ends_with('='); ++i) text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  std::string bytes(text.size() * 3 / 4, '\0');
  std::size_t out = 0;
  std::uint32_t bits = 0;
  unsigned count = 0;
  bool isSound = true;
  for (const char c : text) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
    isSound = isSound && value != kNone;
    bits = (bits << 6) | (value & 0x3Fu);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes[out++] = static_cast<char>(bits >> count);
  }
  if (!isSound) return std::nullopt;
  return bytes;
}

}  // namespace mapexport
