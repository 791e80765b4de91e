#include "app/ExportSystem.h"

#include <array>

#include "app/OptionValues.h"
#include "app/Options.h"

namespace mapexport {

int ExportSystem::DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                                 LPARAM parameter) {
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
                   ParseFloat(TextOf(dialog, kWeldDistanceControl)).value_or(0.0f),
                   TextOf(dialog, kCxpControl)};
  ConsoleSystem::EndDialog(dialog, result);
}

std::string ExportSystem::TextOf(HWND dialog, int id) {
  std::array<char, kMaxBoxText + 1> text;
  const int length = GetDlgItemText(dialog, id, text.data(), static_cast<int>(text.size()));
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace mapexport
