#include "importer/ase/AseWireColors.h"

#include <cmath>
#include <cstddef>
#include <optional>

#include "importer/text/DecimalNumber.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

/// "0.5 0.25 1.0" as parts of 255; empty when these aren't three numbers from 0 to 1.
std::optional<std::array<std::uint8_t, 3>> ColorOf(std::string_view rest) {
  std::array<std::uint8_t, 3> color{};
  for (std::uint8_t& part : color) {
    const std::optional<float> number = DecimalNumber(TakeWord(rest));
    if (!number || !(*number >= 0.0f && *number <= 1.0f)) return std::nullopt;
    part = static_cast<std::uint8_t>(std::lround(*number * 255.0f));
  }
  return color;
}

}  // namespace

WireColors ReadAseWireColors(std::string_view text) {
  WireColors colors;
  std::string name;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    if (!rest.starts_with("*NODE_NAME") && !rest.starts_with("*WIREFRAME_COLOR")) continue;
    if (TakeWord(rest) == "*NODE_NAME") {
      const std::size_t quote = rest.find('"');
      if (quote == std::string_view::npos) continue;
      rest.remove_prefix(quote + 1);
      name = rest.substr(0, rest.find('"'));
    } else if (const auto color = ColorOf(rest)) {
      colors.try_emplace(name, *color);
    }
  }
  return colors;
}

}  // namespace mapexport
