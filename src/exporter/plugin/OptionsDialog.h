// The dialog "MAP Export Options".
#pragma once

#include "host/System.h"

namespace mapexport {

/// The procedure of the options dialog: shows the options when the dialog opens and changes them as
/// the person works it. Check boxes, lists and Browse take effect at once and outlive Cancel; edit
/// boxes take effect on OK. Nothing is checked: text that is no number becomes 0. Ends with 1 for
/// OK, 0 for Cancel.
bool OptionsDialogProc(HWND dialog, unsigned message, WPARAM wParam, LPARAM lParam);

}  // namespace mapexport
