// An open dialog, as a window that shows it sees it.
#pragma once

#include <span>

#include "console/ControlStates.h"
#include "console/DialogAction.h"

namespace mapexport {

/// What a person does goes through here to the dialog procedure, whose doing shows in the states.
/// Whatever the procedure throws comes out of Do and Press.
class PresentedDialog {
 public:
  virtual ~PresentedDialog() = default;

  /// One for each control of the template, in its order.
  virtual std::span<const ControlState> Controls() const = 0;
  /// Whether the procedure has ended the dialog.
  virtual bool Ended() const = 0;

  /// Does one action. Throws std::logic_error when the dialog has no such control or row.
  virtual void Do(const DialogAction& action) = 0;
  /// Sends the command of the button `id`: its click, Enter (IDOK), Escape (IDCANCEL). The dialog
  /// need not have such a button.
  virtual void Press(int id) = 0;
};

}  // namespace mapexport
