#include "console/Person.h"

#include <stdexcept>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace mapexport {
namespace {

/// The control of an action; it must exist.
ControlState& Require(ControlState* control, int id, const char* kind) {
  if (control == nullptr) throw std::logic_error(fmt::format("the dialog has no {} {}", kind, id));
  return *control;
}

}  // namespace

void Person::Do(const DialogAction& action) {
  std::visit([this](const auto& each) { Act(each); }, action);
}

void Person::Press(int id) {
  Notify(id, BN_CLICKED);
}

void Person::Act(const SetCheck& action) const {
  ControlState& box =
      Require(dialog_.controls.Find(action.id, ControlKind::kCheckBox), action.id, "check box");
  if (box.checked == action.checked) return;
  box.checked = action.checked;
  Notify(action.id, BN_CLICKED);
}

void Person::Act(const TypeText& action) const {
  Require(dialog_.controls.Find(action.id, ControlKind::kEdit), action.id, "edit box to type into")
      .text = action.text;
}

void Person::Act(const SelectRow& action) const {
  ControlState& list =
      Require(dialog_.controls.Find(action.id, ControlKind::kListBox), action.id, "list box");
  if (action.row < 0 || std::cmp_greater_equal(action.row, list.rows.size())) {
    throw std::logic_error(fmt::format("the list box {} has {} rows and none of index {}",
                                       action.id, list.rows.size(), action.row));
  }
  if (list.selected == action.row) return;
  list.selected = action.row;
  Notify(action.id, LBN_SELCHANGE);
}

void Person::Act(const PickFile& action) const {
  ControlState* button = dialog_.controls.Find(action.id, ControlKind::kButton);
  if (button == nullptr) {
    button = dialog_.controls.Find(action.id, ControlKind::kDefaultButton);
  }
  Require(button, action.id, "button");
  pickedFile_ = action.path;
  Notify(action.id, BN_CLICKED);
  pickedFile_.reset();
}

void Person::Notify(int id, unsigned notification) const {
  dialog_.proc(dialog_.window, WM_COMMAND, MakeCommand(id, notification), 0);
}

}  // namespace mapexport
