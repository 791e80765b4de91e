#include "console/ControlStates.h"

#include <algorithm>

namespace mapexport {

ControlStates::ControlStates(const DialogTemplate& dialog) {
  controls_.reserve(dialog.controls.size());
  for (const DialogControl& control : dialog.controls) {
    ControlState& state = controls_.emplace_back();
    state.id = control.id;
    state.kind = control.kind;
    if (control.text != nullptr) state.text = control.text;
  }
}

ControlState* ControlStates::Find(int id) {
  const auto found = std::ranges::find(controls_, id, &ControlState::id);
  return id == -1 || found == controls_.end() ? nullptr : &*found;
}

ControlState* ControlStates::Find(int id, ControlKind kind) {
  ControlState* const control = Find(id);
  return control != nullptr && control->kind == kind ? control : nullptr;
}

}  // namespace mapexport
