// A System for the command line: it holds the state of a dialog's controls and sends the dialog
// procedure the messages that a person's clicks and typing send. It has no pixels of its own; a
// presenter may show what it holds.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console/DialogAction.h"
#include "host/System.h"

namespace mapexport {

class Presenter;
class SettingsStore;

/// Handles that are null, or no longer mean an open dialog, are safe: operations on them do what
/// they do on a control that a dialog doesn't have.
class ConsoleSystem : public System {
 public:
  struct Options {
    /// What is done in every dialog before OK is pressed, in this order.
    std::vector<DialogAction> actions;
    /// Shows dialogs, the file-open box and cursors; it must outlive the system. Without one nobody
    /// is there but the actions.
    Presenter* presenter = nullptr;
    /// What GetTickCount answers; without it the system's clock.
    std::optional<std::uint32_t> tickCount;
    /// Receives each message box, which it may show. Each of the callbacks may be empty.
    std::function<void(const std::string& title, const std::string& text)> onMessageBox;
    /// Receives each text of the debugger output.
    std::function<void(const std::string& text)> onDebugOutput;
  };

  /// `settings` is the registry; it must outlive the system.
  ConsoleSystem(Options options, SettingsStore& settings);
  ConsoleSystem(const ConsoleSystem&) = delete;
  ConsoleSystem& operator=(const ConsoleSystem&) = delete;
  ~ConsoleSystem() override;

  // Without pixels there is no class of windows to make known: these two do nothing.
  void InitCommonControls() override;
  void InitCustomControls(HINSTANCE module) override;

  /// Sends WM_INITDIALOG and does what the options say until the procedure ends the dialog. If it
  /// has not by then, the presenter shows the dialog; without one, OK is pressed. When the dialog
  /// has not ended even then, it is closed and the result is 0. Throws std::logic_error when an
  /// action is not possible in the dialog: it has no such control of the right kind, or no such
  /// row.
  int DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                     LPARAM parameter) override;
  /// Of several results the last one counts, as long as the procedure has not returned.
  void EndDialog(HWND dialog, int result) override;
  void SetDlgItemText(HWND dialog, int id, const char* text) override;
  int GetDlgItemText(HWND dialog, int id, char* buffer, int size) override;
  void CheckDlgButton(HWND dialog, int id, bool checked) override;
  bool IsDlgButtonChecked(HWND dialog, int id) override;
  void ListBoxAddString(HWND dialog, int id, const char* text) override;
  void ListBoxSetCurSel(HWND dialog, int id, int index) override;
  int ListBoxGetCurSel(HWND dialog, int id) override;

  void MessageBox(HWND owner, const char* text, const char* title) override;
  /// Answers with the path of the PickFile whose button is being pressed, once; else it is the
  /// presenter's to ask for one, and a cancel without a presenter. A path of the person's that is
  /// too long is refused with a message box. Of the filter's pairs the first is offered.
  bool GetOpenFileName(OpenFileName& request) override;
  HCURSOR LoadCursor(HINSTANCE module, int id) override;
  /// Does nothing without a presenter: there is no screen to show a cursor on.
  void SetCursor(HCURSOR cursor) override;

  // The registry is the settings store's.
  LSTATUS RegCreateKeyEx(RegistryRoot root, const char* path, const char* keyClass,
                         RegistryAccess access, HKEY& key) override;
  LSTATUS RegQueryValueEx(HKEY key, const char* name, RegistryType type, void* data,
                          std::uint32_t& size) override;
  LSTATUS RegSetValueEx(HKEY key, const char* name, RegistryType type, const void* data,
                        std::uint32_t size) override;
  void RegCloseKey(HKEY key) override;

  std::uint32_t timeGetTime() override;
  std::uint32_t GetTickCount() override;
  void OutputDebugStringA(const char* text) override;

 private:
  struct State;
  class OpenDialog;
  std::unique_ptr<State> state_;
};

}  // namespace mapexport
