// Performs a user's actions in a dialog.
#pragma once

#include <optional>
#include <string>

#include "console/PresentedDialog.h"
#include "host/System.h"

namespace mapexport {

/// Changes the states of an open dialog's controls and notifies its procedure. The actions come
/// from the command line or from a user at a window.
class Person : public PresentedDialog {
 public:
  struct Dialog {
    HWND window;
    DialogProc* proc;
    ControlStates& controls;
    const std::optional<int>& result;  ///< the result that EndDialog got
  };

  /// What `dialog` refers to, and `pickedFile`, must outlive this. `pickedFile` is the answer to
  /// the next file-open box.
  Person(const Dialog& dialog, std::optional<std::string>& pickedFile)
      : dialog_(dialog), pickedFile_(pickedFile) {}

  std::span<const ControlState> Controls() const override { return dialog_.controls.All(); }
  bool Ended() const override { return dialog_.result.has_value(); }
  void Do(const DialogAction& action) override;
  void Press(int id) override;

 private:
  void Act(const SetCheck& action) const;
  void Act(const TypeText& action) const;
  void Act(const SelectRow& action) const;
  void Act(const PickFile& action) const;
  void Notify(int id, unsigned notification) const;

  Dialog dialog_;
  std::optional<std::string>& pickedFile_;
};

}  // namespace mapexport
