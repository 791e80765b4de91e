// One control of a dialog as a widget.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "console/ControlStates.h"
#include "console/DialogAction.h"
#include "host/Resources.h"

namespace mapexport {

/// Receives what the user does to the control.
struct ControlEvents {
  std::function<void(const DialogAction&)> act;
  std::function<void(int id)> press;
};

class ControlView {
 public:
  virtual ~ControlView() = default;

  /// A widget of the control's kind; `parent` owns it. Its object name is the control's id. A
  /// control without an id is shown but does nothing.
  static std::unique_ptr<ControlView> Make(const DialogControl& control, QWidget& parent,
                                           const ControlEvents& events);

  virtual QWidget& Widget() const = 0;
  /// Shows `state`, without causing an event.
  virtual void Show(const ControlState& state) = 0;
  /// The smallest width that shows all of the control's text; 0 when the text may be wider than the
  /// control.
  virtual int TextWidth() const { return 0; }

  /// The control's Alt key, in lower case, unless its text marks one with "&". Before Show.
  virtual void SetMnemonic(QChar letter) = 0;
  /// Shows the text of a box to type into in that share of the window's font size. Whether it fits;
  /// other controls always do.
  virtual bool ShowScaled(double /*scale*/) { return true; }
};

}  // namespace mapexport
