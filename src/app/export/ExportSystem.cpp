#include "app/export/ExportSystem.h"

#include <array>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "app/export/DialogControls.h"
#include "app/export/ExportArguments.h"
#include "cli/OptionValues.h"
#include "system/Ascii.h"

namespace mapexport {
namespace {

/// The number at the start of `text`, as exporters read what a user typed; 0 for none. Exporters
/// write an infinite number as "inf".
float LeadingFloat(const std::string& text) {
  const char* begin = text.c_str();
  while (*begin == ' ' || *begin == '\t') ++begin;
  if (*begin == '+') ++begin;
  float number = 0;
  std::from_chars(begin, text.c_str() + text.size(), number);
  return std::isfinite(number) || text.ends_with("inf") ? number : 0.0f;
}

/// The text of a number's box as an option takes it, without the zeros that exporters append.
std::string NumberOption(const std::string& text) {
  if (!ParseFloat(text)) return fmt::format("{}", LeadingFloat(text));
  const std::size_t point = text.find('.');
  if (point == text.npos || point == 0 || !IsDigit(text[point - 1])) return text;
  if (text.find_first_of("eE") != text.npos) return text;
  const std::size_t last = text.find_last_not_of('0');
  return text.substr(0, last == point ? last : last + 1);
}

}  // namespace

int ExportSystem::DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                                 LPARAM parameter) {
  log_.LeaveFolder();
  int result = 0;
  const auto show = [&] {
    result = ConsoleSystem::DialogBoxParam(module, id, owner, proc, parameter);
  };
  if (hasPerson_) {
    stages_.During("dialog", show);
  } else {
    show();
  }
  cancelled_ = result == 0;
  return result;
}

void ExportSystem::EndDialog(HWND dialog, int result) {
  values_ = Values{IsDlgButtonChecked(dialog, kWeldControl),
                   LeadingFloat(TextOf(dialog, kWeldDistanceControl)),
                   LeadingFloat(TextOf(dialog, kVoxelSizeControl)),
                   TextOf(dialog, kCxpControl),
                   {}};
  values_->options = OptionsOf(dialog);
  ConsoleSystem::EndDialog(dialog, result);
}

std::string ExportSystem::ValueOf(HWND dialog, const OptionInfo& option) {
  switch (option.kind) {
    case OptionKind::kSwitch:
      return IsDlgButtonChecked(dialog, option.control) ? "on" : "off";
    case OptionKind::kNumber:
      return NumberOption(TextOf(dialog, option.control));
    case OptionKind::kRow: {
      const auto row = static_cast<std::size_t>(ListBoxGetCurSel(dialog, option.control));
      return row < option.rows.size() ? option.rows[row] : "";  // -1 is none
    }
    case OptionKind::kText:
      return TextOf(dialog, kCxpControl);  // the control of the option is the button beside it
    case OptionKind::kFlag:
      break;
  }
  return {};
}

GivenOptions ExportSystem::OptionsOf(HWND dialog) {
  GivenOptions options;
  for (const OptionInfo& option : ExportOptions()) {
    if (option.control == 0) continue;
    const std::string value = ValueOf(dialog, option);
    if (!value.empty()) options[option.name] = {value};
  }
  return options;
}

std::string ExportSystem::TextOf(HWND dialog, int id) {
  std::array<char, kMaxBoxText + 1> text;
  const int length = GetDlgItemText(dialog, id, text.data(), static_cast<int>(text.size()));
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace mapexport
