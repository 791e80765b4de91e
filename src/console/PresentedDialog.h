// An open dialog, as seen by the window that shows it.
#pragma once

#include <span>

#include "console/ControlStates.h"
#include "console/DialogAction.h"

namespace mapexport {

/// The user's actions reach the dialog procedure here; the control states show the result. Do and
/// Press throw what the procedure throws.
class PresentedDialog {
 public:
  virtual ~PresentedDialog() = default;

  /// One for each control of the template, in the same order.
  virtual std::span<const ControlState> Controls() const = 0;
  /// Whether the procedure has ended the dialog.
  virtual bool Ended() const = 0;

  /// Performs one action. Throws std::logic_error when the dialog has no such control or row.
  virtual void Do(const DialogAction& action) = 0;
  /// Sends the command of the button `id`, for its click, Enter (IDOK) or Escape (IDCANCEL). The
  /// dialog need not have such a button.
  virtual void Press(int id) = 0;
};

}  // namespace mapexport
