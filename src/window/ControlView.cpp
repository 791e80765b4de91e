#include "window/ControlView.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTextDocument>
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

/// `text` with a mark before its first `letter`, the beginnings of words first; unchanged when it
/// has a mark or not that letter.
QString WithMnemonic(const QString& text, QChar letter) {
  if (letter.isNull() || text.contains(QLatin1Char('&'))) return text;
  qsizetype place = text.indexOf(letter, 0, Qt::CaseInsensitive);
  for (qsizetype i = text.size() - 1; i >= 0; --i) {
    const bool begins = i == 0 || !text[i - 1].isLetter();
    if (begins && text[i].toLower() == letter) place = i;
  }
  return place < 0 ? text : QString(text).insert(place, QLatin1Char('&'));
}

/// The view of a control that is a widget of that type.
template <typename WidgetType>
class ViewOf : public ControlView {
 public:
  ViewOf(const DialogControl& control, QWidget& parent) : widget_(*new WidgetType(&parent)) {
    widget_.setObjectName(QString::number(control.id));
  }

  QWidget& Widget() const override { return widget_; }
  void SetMnemonic(QChar letter) override { mnemonic_ = letter; }
  void Show(const ControlState& state) override {
    // Texts are compared as bytes, because different bytes that are not UTF-8 look the same.
    if (shown_ == state.text) return;
    shown_ = state.text;
    ShowText(ToQt(state.text));
  }

 protected:
  virtual void ShowText(const QString& text) {
    if constexpr (requires { widget_.setText(text); })
      widget_.setText(WithMnemonic(text, mnemonic_));
  }

  WidgetType& widget_;
  QChar mnemonic_;
  std::optional<std::string> shown_;
};

class LabelView : public ViewOf<QLabel> {
 public:
  LabelView(const DialogControl& control, QWidget& parent) : ViewOf(control, parent) {
    widget_.setTextFormat(Qt::PlainText);
    widget_.setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  }

  int TextWidth() const override { return widget_.sizeHint().width(); }

 protected:
  /// A mnemonic moves the focus to the buddy; screen readers take the label as the buddy's name.
  void ShowText(const QString& text) override {
    const QString plain = WithoutMnemonic(text);
    widget_.setText(widget_.buddy() == nullptr ? plain : WithMnemonic(text, mnemonic_));
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
    QObject::connect(&widget_, &QLineEdit::textChanged, [this] { ShowToolTip(); });
  }

  bool ShowScaled(double scale) override {
    QFont font = widget_.window()->font();
    const bool isNumber = !widget_.isReadOnly();
    if (isNumber && font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * scale);
    widget_.setFont(font);
    ShowToolTip();
    return !isNumber || Fits();
  }

 protected:
  void ShowText(const QString& text) override {
    widget_.setText(text);
    widget_.setCursorPosition(0);  // a long text shows its beginning
  }

 private:
  bool Fits() const {
    constexpr int kMargins = 5;  // two that QLineEdit keeps on each side, one for its cursor
    QStyleOptionFrame option;
    option.initFrom(&widget_);
    option.lineWidth =
        widget_.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &widget_);
    const QRect box =
        widget_.style()->subElementRect(QStyle::SE_LineEditContents, &option, &widget_);
    return QFontMetricsF(widget_.font()).horizontalAdvance(widget_.text()) <=
           box.width() - kMargins;
  }
  /// The whole of a text that is too long; as HTML, because Qt would take some texts for such.
  void ShowToolTip() {
    widget_.setToolTip(Fits() ? QString() : Qt::convertFromPlainText(widget_.text()));
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
