// Actions of a user on the controls of a dialog.
#pragma once

#include <string>
#include <variant>

namespace mapexport {

/// Clicks a check box if its state differs from `checked` at that time.
struct SetCheck {
  int id;
  bool checked;
};
/// Replaces the text of an edit box that is not read-only.
struct TypeText {
  int id;
  std::string text;
};
/// Clicks a row of a list box; `row` counts from 0 and must exist. Clicking the selected row
/// changes nothing.
struct SelectRow {
  int id;
  int row;
};
/// Presses a button that opens the file-open box, and answers the box with `path`. The box is
/// cancelled when the path is empty or longer than the box can return.
struct PickFile {
  int id;
  std::string path;
};

using DialogAction = std::variant<SetCheck, TypeText, SelectRow, PickFile>;

}  // namespace mapexport
