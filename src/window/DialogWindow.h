// The window of a dialog.
#pragma once

#include <QDialog>
#include <exception>
#include <memory>
#include <vector>

#include "console/PresentedDialog.h"
#include "host/Resources.h"
#include "window/ControlView.h"

namespace mapexport {

class DialogUnits;

/// Shows any dialog template with the states of its controls. The user's actions change the states,
/// and the window shows the new states. Controls are at their dialog units in the window's font.
/// Only a label or check box whose text would be cut extends further right, as far as there is
/// room. If the room is too small, the units are wider than the font's. A label or check box beside
/// an edit box is on its line. If a number is too long for its box, all boxes to type into have a
/// somewhat smaller font. Controls whose texts mark no mnemonic get one, different from all others.
class DialogWindow : public QDialog {
 public:
  /// Both must outlive the window.
  DialogWindow(const DialogTemplate& dialog, PresentedDialog& states, QWidget& owner);

  /// Shows the window until the dialog has ended or the system closes it. Throws what the dialog
  /// procedure throws.
  void Run();
  /// Shows the current states.
  void ShowStates();

  /// Escape, and the window's close button.
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  template <typename Doing>
  void Let(const Doing& doing);
  void Press(int id);
  void ConnectLabels();
  void ChooseMnemonics();
  void LayOut();
  void Place(const DialogUnits& units);
  void FitBoxes();
  int HeightOf(const DialogControl& control) const;
  int RoomFor(const ControlView& view) const;

  const DialogTemplate& dialog_;
  PresentedDialog& states_;
  std::vector<std::unique_ptr<ControlView>> views_;  ///< parallel to the template's controls
  std::exception_ptr thrown_;
};

}  // namespace mapexport
