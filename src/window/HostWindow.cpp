#include "window/HostWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "window/DialogUnits.h"

namespace mapexport {
namespace {

// Somewhat larger than a large dialog: the pointer, which has just pressed a dialog's button, must
// be over this window when it shows a cursor.
constexpr int kWidth = 360;  // dialog units
constexpr int kHeight = 300;

// At least this much is left for the status beside a dialog, or below it.
constexpr int kLeastWidth = 90;
constexpr int kLeastHeight = 40;

// What a window manager may add to a window. How much it adds is known only some time after the
// window is shown, so places here are those of the insides.
constexpr QMargins kFrame{8, 40, 8, 8};

}  // namespace

HostWindow::HostWindow(const QString& title) : status_(*new QLabel(this)) {
  setObjectName(QStringLiteral("host"));
  setWindowTitle(title);
  status_.setObjectName(QStringLiteral("status"));
  status_.setTextFormat(Qt::PlainText);
  status_.setAlignment(Qt::AlignCenter);
  status_.setWordWrap(true);
  status_.setAttribute(Qt::WA_TransparentForMouseEvents);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(&status_);
  // Dialogs are centred on this window even before the window manager reports its position.
  CentreOn(screen()->availableGeometry().center());
}

void HostWindow::ShowStatus(const QString& status) {
  status_.setText(status);
}

void HostWindow::StandBeside(QWidget& dialog) {
  const QRect space = screen()->availableGeometry();
  const QSize taken = dialog.size().grownBy(kFrame);
  const QSize rest = (space.size() - taken).shrunkBy(kFrame);
  const QSize least = DialogUnits(font()).ToPixels(0, 0, kLeastWidth, kLeastHeight).size();
  const bool beside = rest.width() >= least.width();
  if (!beside && rest.height() < least.height()) return;
  const QSize own = beside ? QSize(std::min(width(), rest.width()), dialog.height())
                           : QSize(dialog.width(), std::min(height(), rest.height()));
  const QPoint step = beside ? QPoint(taken.width(), 0) : QPoint(0, taken.height());
  QRect both = QRect(QPoint(), taken) | QRect(step, own.grownBy(kFrame));
  both.moveCenter(space.center());
  const QPoint corner = both.marginsRemoved(kFrame).topLeft();
  dialog.setGeometry({corner, dialog.size()});
  setGeometry({corner + step, own});
}

void HostWindow::CentreOn(QPoint middle) {
  const QRect space = screen()->availableGeometry();
  const QSize full = DialogUnits(font()).ToPixels(0, 0, kWidth, kHeight).size();
  QRect place(QPoint(), full.grownBy(kFrame).boundedTo(space.size()));
  place.moveCenter(middle);
  place.moveBottomRight(
      {std::min(place.right(), space.right()), std::min(place.bottom(), space.bottom())});
  place.moveTopLeft({std::max(place.left(), space.left()), std::max(place.top(), space.top())});
  setGeometry(place.marginsRemoved(kFrame));
}

void HostWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
}

}  // namespace mapexport
