#include "window/WindowPresenter.h"

#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>
#include <algorithm>
#include <clocale>

#include "window/CursorPixmap.h"
#include "window/DialogWindow.h"
#include "window/QtText.h"

namespace mapexport {
namespace {

QtMessageHandler defaultHandler = nullptr;

/// Passes on Qt's messages about displays, and drops its other remarks at startup.
void TellOfDisplays(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  const bool grave = type == QtCriticalMsg || type == QtFatalMsg;
  if (grave || QLatin1String(context.category).startsWith(QLatin1String("qt."))) {
    defaultHandler(type, context, text);
  }
}

std::unique_ptr<QApplication> MakeApplication() {
  // Qt keeps references to both.
  static int count = 1;
  static char name[] = "mapexport";
  static char* arguments[] = {name, nullptr};
  // Qt sets the user's locale for the whole process; restore the number format.
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  defaultHandler = qInstallMessageHandler(TellOfDisplays);
  auto application = std::make_unique<QApplication>(count, arguments);
  qInstallMessageHandler(defaultHandler);
  std::setlocale(LC_ALL, locale.c_str());
  QApplication::setQuitOnLastWindowClosed(false);
  return application;
}

/// Makes room for the title and for unbroken lines of the text: the box would break them long
/// before the display is full.
void KeepLines(QMessageBox& box) {
  auto* const grid = qobject_cast<QGridLayout*>(box.layout());
  if (grid == nullptr) return;
  const QFontMetrics metrics = box.fontMetrics();
  const int text = metrics.size(0, box.text()).width() + 8 * metrics.averageCharWidth();
  const int title = metrics.horizontalAdvance(box.windowTitle()) + 24 * metrics.averageCharWidth();
  grid->addItem(new QSpacerItem(std::max(text, title), 0), grid->rowCount(), 0, 1,
                grid->columnCount());
}

/// Lets the windows repaint, without handling the user's input.
void Repaint() {
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

/// The filter of a file box, "DISPLAY (PATTERN PATTERN)"; every file when the box has no pattern.
QString NameFilter(const FileBox& box) {
  const QString pattern = box.pattern.empty() ? QStringLiteral("*") : ToQt(box.pattern);
  return QStringLiteral("%1 (%2)").arg(
      ToQt(box.display), QString(pattern).replace(QLatin1Char(';'), QLatin1Char(' ')));
}

}  // namespace

WindowPresenter::WindowPresenter(const char* title)
    : application_(MakeApplication()), host_(std::make_unique<HostWindow>(ToQt(title))) {}

WindowPresenter::~WindowPresenter() = default;

void WindowPresenter::ShowDialog(HWND window, const DialogTemplate& dialog,
                                 PresentedDialog& states) {
  DialogWindow shown(dialog, states, Owner());
  const bool hasStatus = open_.empty() && host_->isVisible();
  if (hasStatus) host_->StandBeside(shown);
  open_.emplace_back(window, &shown);
  struct Closing {
    WindowPresenter& presenter;
    ~Closing() { presenter.open_.pop_back(); }
  };
  {
    const Closing closing{*this};
    shown.Run();
  }
  // Where the pointer is.
  if (hasStatus) host_->CentreOn(shown.geometry().center());
  Repaint();
}

void WindowPresenter::UpdateDialog(HWND window) {
  for (const auto& [handle, shown] : open_) {
    if (handle == window) shown->ShowStates();
  }
}

void WindowPresenter::ShowMessageBox(const std::string& title, const std::string& text) {
  QMessageBox box(QMessageBox::NoIcon, ToQt(title), ToQt(text).trimmed(), QMessageBox::Ok,
                  &Owner());
  box.setTextFormat(Qt::PlainText);
  KeepLines(box);
  box.exec();
  Repaint();
}

std::optional<std::string> WindowPresenter::PickFile(const FileBox& box) {
  QFileDialog dialog(&Owner(), QStringLiteral("Open"),
                     box.initialDir ? ToQt(*box.initialDir) : QString());
  // Like the classical box without flags: the named file need not exist.
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilters({NameFilter(box)});
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return QFile::encodeName(dialog.selectedFiles().constFirst()).toStdString();
}

void WindowPresenter::ShowCursor(const CursorImage& image) {
  Show(ToQtCursor(image, host_->devicePixelRatioF()));
}

void WindowPresenter::ShowWaitCursor() {
  Show(QCursor(Qt::WaitCursor));
}

void WindowPresenter::HideCursor() {
  Show(QCursor(Qt::BlankCursor));
}

void WindowPresenter::ShowStatus(const std::string& status) {
  host_->ShowStatus(ToQt(status));
  host_->show();
  Repaint();
}

QWidget& WindowPresenter::Owner() {
  if (open_.empty()) return *host_;
  return *open_.back().second;
}

void WindowPresenter::Show(const QCursor& cursor) {
  host_->setCursor(cursor);
  Repaint();
}

}  // namespace mapexport

mapexport::Presenter* CreatePresenter(unsigned version, const char* title) {
  if (version != mapexport::kPresenterVersion) return nullptr;
  return new mapexport::WindowPresenter(title);
}
