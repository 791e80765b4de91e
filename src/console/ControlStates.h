// The states of a dialog's controls, without pixels.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/Resources.h"

namespace mapexport {

/// One control. Only the fields of its kind mean something.
struct ControlState {
  int id = -1;
  ControlKind kind = ControlKind::kLabel;
  std::string text;               ///< what the control shows; every kind has one
  bool checked = false;           ///< kCheckBox
  std::vector<std::string> rows;  ///< kListBox
  int selected = -1;              ///< kListBox: index into rows, -1 for none
};

class ControlStates {
 public:
  /// The controls as the template has them: no box checked, no rows.
  explicit ControlStates(const DialogTemplate& dialog);

  /// The control of that id, the first one of several; null when there is none. The id -1 is no
  /// control's.
  ControlState* Find(int id);
  /// The same, null when the control is of another kind.
  ControlState* Find(int id, ControlKind kind);

  /// In tab order.
  std::span<const ControlState> All() const { return controls_; }

 private:
  std::vector<ControlState> controls_;
};

}  // namespace mapexport
