#include "window/DialogWindow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <array>
#include <utility>

#include "host/System.h"
#include "window/DialogUnits.h"
#include "window/QtText.h"

namespace mapexport {
namespace {

// Of the font in boxes. A smaller one would be hard to read.
constexpr std::array kScales{1.0, 0.96, 0.92, 0.88, 0.84, 0.8};

bool TakesLabel(ControlKind kind) {
  return kind == ControlKind::kEdit || kind == ControlKind::kReadOnlyEdit ||
         kind == ControlKind::kListBox;
}

}  // namespace

DialogWindow::DialogWindow(const DialogTemplate& dialog, PresentedDialog& states, QWidget& owner)
    : QDialog(&owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      dialog_(dialog),
      states_(states) {
  setObjectName(QStringLiteral("dialog%1").arg(dialog.id));
  setWindowTitle(ToQt(dialog.title == nullptr ? "" : dialog.title));
  const ControlEvents events{
      [this](const DialogAction& action) { Let([&] { states_.Do(action); }); },
      [this](int id) { Press(id); }};
  const ControlEvents none{[](const DialogAction&) {}, [](int) {}};
  bool hasDefault = false;
  for (const DialogControl& control : dialog.controls) {
    views_.push_back(ControlView::Make(control, *this, control.id == -1 ? none : events));
    hasDefault = hasDefault || control.kind == ControlKind::kDefaultButton;
  }
  // Without a default button, Enter is IDOK, not the first button.
  for (QPushButton* const button : findChildren<QPushButton*>()) button->setAutoDefault(hasDefault);
  for (std::size_t i = 1; i < views_.size(); ++i) {
    setTabOrder(&views_[i - 1]->Widget(), &views_[i]->Widget());
  }
  ConnectLabels();
  ChooseMnemonics();
  ShowStates();
  LayOut();
}

void DialogWindow::Run() {
  if (!states_.Ended()) exec();
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

void DialogWindow::ShowStates() {
  const std::span<const ControlState> states = states_.Controls();
  for (std::size_t i = 0; i < views_.size(); ++i) views_[i]->Show(states[i]);
}

void DialogWindow::reject() {
  Press(IDCANCEL);
}

void DialogWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
    QDialog::keyPressEvent(event);
    return;
  }
  const QList<QPushButton*> buttons = findChildren<QPushButton*>();
  auto pressed = std::ranges::find_if(buttons, &QPushButton::hasFocus);
  if (pressed == buttons.end()) pressed = std::ranges::find_if(buttons, &QPushButton::isDefault);
  if (pressed == buttons.end()) {
    Press(IDOK);
  } else {
    (*pressed)->click();
  }
}

void DialogWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) LayOut();
}

/// Runs the user's action. Exceptions must not pass through Qt, so Run throws them later.
template <typename Doing>
void DialogWindow::Let(const Doing& doing) {
  if (thrown_) return;
  try {
    if (!states_.Ended()) doing();
    ShowStates();
  } catch (...) {
    thrown_ = std::current_exception();
  }
  if (thrown_ || states_.Ended()) done(QDialog::Accepted);
}

void DialogWindow::Press(int id) {
  Let([&] { states_.Press(id); });
}

/// The label before an edit box or a list is its name.
void DialogWindow::ConnectLabels() {
  for (std::size_t i = 1; i < views_.size(); ++i) {
    auto* const label = qobject_cast<QLabel*>(&views_[i - 1]->Widget());
    if (label != nullptr && TakesLabel(dialog_.controls[i].kind)) {
      label->setBuddy(&views_[i]->Widget());
    }
  }
}

/// OK and Cancel have Enter and Escape.
void DialogWindow::ChooseMnemonics() {
  QString taken;
  const auto textOf = [this](std::size_t i) { return ToQt(states_.Controls()[i].text); };
  for (std::size_t i = 0; i < views_.size(); ++i) {
    taken += QKeySequence::mnemonic(textOf(i)).toString().right(1).toLower();
  }
  for (std::size_t i = 0; i < views_.size(); ++i) {
    const DialogControl& control = dialog_.controls[i];
    const auto* const label = qobject_cast<QLabel*>(&views_[i]->Widget());
    const bool canHaveOne = label != nullptr ? label->buddy() != nullptr
                                             : control.id != -1 && !TakesLabel(control.kind);
    const QString text = textOf(i).toLower();
    if (!canHaveOne || text.contains(QLatin1Char('&')) || control.id == IDOK ||
        control.id == IDCANCEL) {
      continue;
    }
    QString letters;  // the beginnings of words first
    for (qsizetype at = 0; at < text.size(); ++at) {
      if (at == 0 || !text[at - 1].isLetter()) letters += text[at];
    }
    letters += text;
    const auto* const letter = std::ranges::find_if(
        letters, [&](QChar each) { return each.isLetter() && !taken.contains(each); });
    if (letter == letters.end()) continue;
    views_[i]->SetMnemonic(*letter);
    taken += *letter;
  }
}

void DialogWindow::LayOut() {
  DialogUnits units(font());
  Place(units);
  // A font whose texts are wide for its letters gets a wider dialog. The extra pixel is for
  // rounding.
  double lack = 1;
  for (const std::unique_ptr<ControlView>& view : views_) {
    const int room = RoomFor(*view);
    if (view->TextWidth() <= room) continue;
    lack = std::max(lack, (view->TextWidth() + 1.0) / std::max(1, room));
  }
  if (lack > 1) {
    units.Widen(lack);
    Place(units);
  }
  for (const std::unique_ptr<ControlView>& view : views_) {
    QRect place = view->Widget().geometry();
    const int textWidth = std::min(view->TextWidth(), RoomFor(*view));
    place.setWidth(std::max(place.width(), textWidth));
    view->Widget().setGeometry(place);
  }
  FitBoxes();
}

/// All boxes get the largest font in which as many texts fit as in the smallest; the other texts
/// show their beginning.
void DialogWindow::FitBoxes() {
  const auto fit = [this](double scale) {
    return std::ranges::count_if(views_,
                                 [scale](const auto& view) { return view->ShowScaled(scale); });
  };
  const auto most = fit(kScales.back());
  for (const double scale : kScales) {
    if (fit(scale) >= most) return;
  }
}

void DialogWindow::Place(const DialogUnits& units) {
  setFixedSize(units.ToPixels(0, 0, dialog_.width, dialog_.height).size());
  for (std::size_t i = 0; i < views_.size(); ++i) {
    const DialogControl& c = dialog_.controls[i];
    QRect place = units.ToPixels(c.x, c.y, c.width, HeightOf(c));
    // Rounding must not cost a text its last line of pixels.
    if (views_[i]->TextWidth() > 0)
      place.setHeight(std::max(place.height(), fontMetrics().height()));
    views_[i]->Widget().setGeometry(place);
  }
}

/// In dialog units: a label or check box is as high as the edit box on its line, so that centred
/// texts are on one line.
int DialogWindow::HeightOf(const DialogControl& control) const {
  if (control.kind != ControlKind::kLabel && control.kind != ControlKind::kCheckBox) {
    return control.height;
  }
  int height = control.height;
  for (const DialogControl& other : dialog_.controls) {
    const bool isEdit =
        other.kind == ControlKind::kEdit || other.kind == ControlKind::kReadOnlyEdit;
    if (isEdit && other.y == control.y) height = std::max(height, other.height);
  }
  return height;
}

/// The width up to the next control or the edge.
int DialogWindow::RoomFor(const ControlView& view) const {
  const QRect place = view.Widget().geometry();
  int room = width() - place.left();
  for (const std::unique_ptr<ControlView>& other : views_) {
    const QRect taken = other->Widget().geometry();
    const bool beside = taken.top() <= place.bottom() && taken.bottom() >= place.top();
    if (beside && taken.left() > place.left()) room = std::min(room, taken.left() - place.left());
  }
  return room;
}

}  // namespace mapexport
