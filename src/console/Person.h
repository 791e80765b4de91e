// What a person does in a dialog, and what the dialog procedure is sent for it.
#pragma once

#include <optional>
#include <string>

#include "console/PresentedDialog.h"
#include "host/System.h"

namespace mapexport {

/// Changes the states of an open dialog's controls and notifies its procedure, whoever the person
/// is: the command line or someone at a window.
class Person : public PresentedDialog {
 public:
  struct Dialog {
    HWND window;
    DialogProc* proc;
    ControlStates& controls;
    const std::optional<int>& result;  ///< of EndDialog
  };

  /// What `dialog` refers to, and `pickedFile`, must outlive this. The latter holds the path with
  /// which the next file-open box is to be answered.
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
