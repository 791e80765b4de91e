// The states of a dialog's controls.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/Resources.h"

namespace mapexport {

/// One control. Only the fields of its kind are used.
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
  /// The initial controls of the template: no box checked, no rows.
  explicit ControlStates(const DialogTemplate& dialog);

  /// The first control with that id; null for none. The id -1 finds no control.
  ControlState* Find(int id);
  /// The same; null when the control is of another kind.
  ControlState* Find(int id, ControlKind kind);

  /// In tab order.
  std::span<const ControlState> All() const { return controls_; }

 private:
  std::vector<ControlState> controls_;
};

}  // namespace mapexport
