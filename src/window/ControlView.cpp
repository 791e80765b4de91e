#include "window/ControlView.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <optional>
#include <string>

#include "window/QtText.h"
#include "window/RowList.h"

namespace mapexport {
namespace {

/// `text` without the marks of its mnemonic.
QString WithoutMnemonic(const QString& text) {
  QString plain;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] == QLatin1Char('&') && ++i == text.size()) break;
    plain += text[i];
  }
  return plain;
}

/// The view of a control that is a widget of that type.
template <typename WidgetType>
class ViewOf : public ControlView {
 public:
  ViewOf(const DialogControl& control, QWidget& parent) : widget_(*new WidgetType(&parent)) {
    widget_.setObjectName(QString::number(control.id));
  }

  QWidget& Widget() const override { return widget_; }
  void Show(const ControlState& state) override {
    // Texts are compared as bytes, because different bytes that are not UTF-8 look the same.
    if (shown_ == state.text) return;
    shown_ = state.text;
    ShowText(ToQt(state.text));
  }

 protected:
  virtual void ShowText(const QString& text) {
    if constexpr (requires { widget_.setText(text); }) widget_.setText(text);
  }

  WidgetType& widget_;
  std::optional<std::string> shown_;
};

class LabelView : public ViewOf<QLabel> {
 public:
  LabelView(const DialogControl& control, QWidget& parent) : ViewOf(control, parent) {
    widget_.setTextFormat(Qt::PlainText);
    widget_.setAlignment(Qt::AlignLeft | Qt::AlignTop);
  }

  int TextWidth() const override { return widget_.sizeHint().width(); }

 protected:
  /// A mnemonic moves the focus to the buddy; screen readers take the label as the buddy's name.
  void ShowText(const QString& text) override {
    const QString plain = WithoutMnemonic(text);
    widget_.setText(widget_.buddy() == nullptr ? plain : text);
    if (widget_.buddy() != nullptr) widget_.buddy()->setAccessibleName(plain);
  }
};

class EditView : public ViewOf<QLineEdit> {
 public:
  EditView(const DialogControl& control, QWidget& parent, const ControlEvents& events)
      : ViewOf(control, parent) {
    widget_.setReadOnly(control.kind == ControlKind::kReadOnlyEdit);
    const int id = control.id;
    QObject::connect(&widget_, &QLineEdit::textEdited, [this, id, events](const QString& text) {
      shown_ = ToBytes(text);
      events.act(TypeText{id, *shown_});
    });
  }

 protected:
  void ShowText(const QString& text) override {
    widget_.setText(text);
    widget_.setCursorPosition(0);  // a long text shows its beginning
  }
};

class CheckBoxView : public ViewOf<QCheckBox> {
 public:
  CheckBoxView(const DialogControl& control, QWidget& parent, const ControlEvents& events)
      : ViewOf(control, parent) {
    const int id = control.id;
    QObject::connect(&widget_, &QCheckBox::clicked, [id, events](bool checked) {
      events.act(SetCheck{id, checked});
    });
  }

  void Show(const ControlState& state) override {
    ViewOf::Show(state);
    widget_.setChecked(state.checked);  // a selection that is not a click
  }
  int TextWidth() const override { return widget_.sizeHint().width(); }
};

class ButtonView : public ViewOf<QPushButton> {
 public:
  ButtonView(const DialogControl& control, QWidget& parent, const ControlEvents& events)
      : ViewOf(control, parent) {
    widget_.setDefault(control.kind == ControlKind::kDefaultButton);
    const int id = control.id;
    QObject::connect(&widget_, &QPushButton::clicked, [id, events] { events.press(id); });
  }
};

class ListView : public ViewOf<RowList> {
 public:
  ListView(const DialogControl& control, QWidget& parent, const ControlEvents& events)
      : ViewOf(control, parent) {
    const int id = control.id;
    QObject::connect(&widget_, &QListWidget::itemSelectionChanged, [this, id, events] {
      const int row = widget_.SelectedRow();
      // A user can't deselect a row.
      if (row < 0) {
        ShowSelection();
      } else {
        events.act(SelectRow{id, row});
      }
    });
  }

  void Show(const ControlState& state) override {
    const QSignalBlocker blocker(&widget_);
    if (rows_ != state.rows) {
      rows_ = state.rows;
      widget_.clear();
      for (const std::string& row : rows_) widget_.addItem(ToQt(row));
    }
    selected_ = state.selected;
    ShowSelection();
  }

 private:
  void ShowSelection() {
    const QSignalBlocker blocker(&widget_);
    if (widget_.SelectedRow() != selected_) widget_.setCurrentRow(selected_);
  }

  std::vector<std::string> rows_;
  int selected_ = -1;
};

}  // namespace

std::unique_ptr<ControlView> ControlView::Make(const DialogControl& control, QWidget& parent,
                                               const ControlEvents& events) {
  switch (control.kind) {
    case ControlKind::kLabel:
      break;
    case ControlKind::kEdit:
    case ControlKind::kReadOnlyEdit:
      return std::make_unique<EditView>(control, parent, events);
    case ControlKind::kCheckBox:
      return std::make_unique<CheckBoxView>(control, parent, events);
    case ControlKind::kButton:
    case ControlKind::kDefaultButton:
      return std::make_unique<ButtonView>(control, parent, events);
    case ControlKind::kListBox:
      return std::make_unique<ListView>(control, parent, events);
  }
  return std::make_unique<LabelView>(control, parent);
}

}  // namespace mapexport
