#include "window/HostWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

#include "window/DialogUnits.h"

namespace mapexport {
namespace {

// Somewhat larger than a large dialog: the pointer, which has just pressed a dialog's button, must
// be over this window when it shows a cursor.
constexpr int kWidth = 360;  // dialog units
constexpr int kHeight = 300;

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
  const QRect space = screen()->availableGeometry();
  resize(DialogUnits(font()).ToPixels(0, 0, kWidth, kHeight).size().boundedTo(space.size()));
  // Dialogs are centred on this window even before the window manager reports its position.
  move(space.center() - rect().center());
}

void HostWindow::ShowStatus(const QString& status) {
  status_.setText(status);
}

void HostWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
}

}  // namespace mapexport
