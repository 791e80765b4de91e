// One control of a dialog as a widget.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "console/ControlStates.h"
#include "console/DialogAction.h"
#include "host/Resources.h"

namespace mapexport {

/// What the person does to a control goes to one of these.
struct ControlEvents {
  std::function<void(const DialogAction&)> act;
  std::function<void(int id)> press;
};

class ControlView {
 public:
  virtual ~ControlView() = default;

  /// A widget of the control's kind, a child of `parent`, which owns it. Its object name is the
  /// control's id. A control without an id shows, and nothing comes of what is done to it.
  static std::unique_ptr<ControlView> Make(const DialogControl& control, QWidget& parent,
                                           const ControlEvents& events);

  virtual QWidget& Widget() const = 0;
  /// Shows `state`. No event comes of it.
  virtual void Show(const ControlState& state) = 0;
  /// The least width at which all of its text shows; 0 when the text may be wider than the control.
  virtual int TextWidth() const { return 0; }
};

}  // namespace mapexport
