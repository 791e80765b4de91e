#include "app/ExportSystem.h"

#include <array>
#include <charconv>
#include <cmath>

#include "app/DialogControls.h"
#include "cli/OptionValues.h"

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
                   LeadingFloat(TextOf(dialog, kVoxelSizeControl)), TextOf(dialog, kCxpControl)};
  ConsoleSystem::EndDialog(dialog, result);
}

std::string ExportSystem::TextOf(HWND dialog, int id) {
  std::array<char, kMaxBoxText + 1> text;
  const int length = GetDlgItemText(dialog, id, text.data(), static_cast<int>(text.size()));
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace mapexport
