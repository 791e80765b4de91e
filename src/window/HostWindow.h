// The window that stands for the host application.
#pragma once

#include <QLabel>
#include <QWidget>

namespace mapexport {

/// Owns dialogs and boxes, says what is being done, and shows the cursors while it is. The person
/// can't close it: what it shows goes on.
class HostWindow : public QWidget {
 public:
  explicit HostWindow(const QString& title);

  void ShowStatus(const QString& status);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QLabel& status_;
};

}  // namespace mapexport
