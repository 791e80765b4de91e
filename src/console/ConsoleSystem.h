// A System for the command line: it holds the states of a dialog's controls, and sends the dialog
// procedure the messages that a user's clicks and typing would send. A presenter may show the
// states.
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

/// Handles that are null, or that don't refer to an open dialog, are safe: operations on them do
/// the same as for a control that a dialog doesn't have.
class ConsoleSystem : public System {
 public:
  struct Options {
    /// Actions in every dialog before OK is pressed, in this order.
    std::vector<DialogAction> actions;
    /// Shows dialogs, the file-open box and cursors; it must outlive the system. Without one, only
    /// the actions operate dialogs.
    Presenter* presenter = nullptr;
    /// The result of GetTickCount; without it, the system's clock.
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

  // Only windows have window classes, so these two do nothing.
  void InitCommonControls() override;
  void InitCustomControls(HINSTANCE module) override;

  /// Sends WM_INITDIALOG and runs the actions until the procedure ends the dialog. If it has not
  /// ended then, the presenter shows the dialog; without a presenter, OK is pressed. A dialog that
  /// has not ended even then is closed with the result 0. Throws std::logic_error when an action is
  /// not possible in the dialog: it has no such control of the right kind, or no such row.
  int DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                     LPARAM parameter) override;
  /// Before the procedure returns, a later result replaces an earlier one.
  void EndDialog(HWND dialog, int result) override;
  void SetDlgItemText(HWND dialog, int id, const char* text) override;
  int GetDlgItemText(HWND dialog, int id, char* buffer, int size) override;
  void CheckDlgButton(HWND dialog, int id, bool checked) override;
  bool IsDlgButtonChecked(HWND dialog, int id) override;
  void ListBoxAddString(HWND dialog, int id, const char* text) override;
  void ListBoxSetCurSel(HWND dialog, int id, int index) override;
  int ListBoxGetCurSel(HWND dialog, int id) override;

  void MessageBox(HWND owner, const char* text, const char* title) override;
  /// Answers once with the path of the PickFile whose button is being pressed. Otherwise the
  /// presenter asks the user; without a presenter the box is cancelled. A path of the user's that
  /// is too long is refused with a message box. Only the first pair of the filter is offered.
  bool GetOpenFileName(OpenFileName& request) override;
  HCURSOR LoadCursor(HINSTANCE module, int id) override;
  /// Does nothing without a presenter.
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
