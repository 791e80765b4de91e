// The platform under the host: windows, settings registry, clock and debugger output, as one
// interface.
//
// The program installs its System before it loads a plug-in; a plug-in calls TheSystem() and never
// the platform itself. All calls happen on the host's user-interface thread.
#pragma once

#include <cstdint>

#include "host/Resources.h"
#include "host/Types.h"

namespace mapexport {

// Messages a dialog procedure is sent.
inline constexpr unsigned WM_INITDIALOG = 0x0110;
/// wParam: the control's id in the low 16 bits, the notification in the high 16 bits.
inline constexpr unsigned WM_COMMAND = 0x0111;

// Notifications of WM_COMMAND.
inline constexpr unsigned BN_CLICKED = 0;
inline constexpr unsigned LBN_SELCHANGE = 1;

// Ids that every dialog's OK and Cancel buttons have.
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;

using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;

constexpr int CommandId(WPARAM wParam) {
  return static_cast<int>(wParam & 0xFFFF);
}
constexpr unsigned CommandNotification(WPARAM wParam) {
  return static_cast<unsigned>((wParam >> 16) & 0xFFFF);
}
constexpr WPARAM MakeCommand(int id, unsigned notification) {
  return (static_cast<WPARAM>(notification) << 16) | (static_cast<WPARAM>(id) & 0xFFFF);
}

/// Handles one message of a dialog; returns whether it did.
using DialogProc = bool(HWND dialog, unsigned message, WPARAM wParam, LPARAM lParam);

/// A cursor of a module or of the system. The System alone knows what it points to.
struct CursorHandle;
using HCURSOR = CursorHandle*;
/// The system's wait cursor: LoadCursor returns it without a module.
inline constexpr int IDC_WAIT = 32514;

/// A file-open box. `filter` is pairs of NUL-terminated texts, display text then pattern, ended by
/// an empty text. `file` receives the chosen path, at most `maxFile` - 1 bytes and a NUL.
struct OpenFileName {
  HWND owner = nullptr;
  const char* filter = nullptr;
  const char* initialDir = nullptr;  ///< null: the system's choice
  unsigned flags = 0;
  char* file = nullptr;
  std::uint32_t maxFile = 0;
};

/// An open key of the settings registry. The System alone knows what it points to.
struct RegistryKey;
using HKEY = RegistryKey*;

enum class RegistryRoot { kLocalMachine };
enum class RegistryAccess { kQuery, kSet };
enum class RegistryType : std::uint32_t { kText = 1, kNumber = 4 };

/// Result of a registry call: 0 or one of the codes below.
using LSTATUS = int;
inline constexpr LSTATUS kRegSuccess = 0;
inline constexpr LSTATUS kRegFileNotFound = 2;       ///< no such value
inline constexpr LSTATUS kRegAccessDenied = 5;       ///< the key is not open for this, or can't be
inline constexpr LSTATUS kRegInvalidParameter = 87;  ///< a name, size or type that can't be
inline constexpr LSTATUS kRegMoreData = 234;         ///< the value is longer than the buffer

class System {
 public:
  virtual ~System() = default;

  // Common controls

  virtual void InitCommonControls() = 0;
  /// The host's own controls, made available to the library `module`.
  virtual void InitCustomControls(HINSTANCE module) = 0;

  // Dialogs

  /// Shows the module's dialog `id` and does not return before it ends: sends `proc` WM_INITDIALOG,
  /// then a WM_COMMAND for each thing the person does, until EndDialog. Escape and the window's
  /// close button are the command IDCANCEL, Enter is the default button or IDOK. The result is
  /// EndDialog's; 0 when the system closes the window; -1 when the dialog can't be shown.
  virtual int DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                             LPARAM parameter) = 0;
  virtual void EndDialog(HWND dialog, int result) = 0;
  // Operations on the control `id` of an open dialog; on an id that the dialog does not have they
  // do nothing and answer empty, false or -1. None of them sends the dialog a message.
  virtual void SetDlgItemText(HWND dialog, int id, const char* text) = 0;
  /// The control's text, at most `size` - 1 bytes and a NUL; returns its length in `buffer`.
  virtual int GetDlgItemText(HWND dialog, int id, char* buffer, int size) = 0;
  virtual void CheckDlgButton(HWND dialog, int id, bool checked) = 0;
  virtual bool IsDlgButtonChecked(HWND dialog, int id) = 0;
  virtual void ListBoxAddString(HWND dialog, int id, const char* text) = 0;
  /// Selects row `index`; selects none when there is no such row.
  virtual void ListBoxSetCurSel(HWND dialog, int id, int index) = 0;
  /// The selected row, -1 for none.
  virtual int ListBoxGetCurSel(HWND dialog, int id) = 0;

  // Message box, file box, cursors

  /// Shows a message with an OK button and waits for it.
  virtual void MessageBox(HWND owner, const char* text, const char* title) = 0;
  /// Lets the person choose a file; false when they cancel.
  virtual bool GetOpenFileName(OpenFileName& request) = 0;
  /// The module's cursor `id`, or the system's own without a module; null when there is none.
  virtual HCURSOR LoadCursor(HINSTANCE module, int id) = 0;
  /// Shows a cursor until the next call; null shows none.
  virtual void SetCursor(HCURSOR cursor) = 0;

  // Settings registry

  /// Opens the key `path` (backslashes between its parts), creating it with class `keyClass` when
  /// it is missing. On success `key` is open with that access alone.
  virtual LSTATUS RegCreateKeyEx(RegistryRoot root, const char* path, const char* keyClass,
                                 RegistryAccess access, HKEY& key) = 0;
  /// Reads a value of that type into `data`. `size` gives the buffer's bytes and receives the
  /// value's; a text counts its NUL. A value of another type is not found.
  virtual LSTATUS RegQueryValueEx(HKEY key, const char* name, RegistryType type, void* data,
                                  std::uint32_t& size) = 0;
  /// Stores a value, `size` bytes; a text with its NUL.
  virtual LSTATUS RegSetValueEx(HKEY key, const char* name, RegistryType type, const void* data,
                                std::uint32_t size) = 0;
  virtual void RegCloseKey(HKEY key) = 0;

  // Clock and debugger

  /// Milliseconds of the system's timer; wraps around.
  virtual std::uint32_t timeGetTime() = 0;
  /// Milliseconds since the system started; wraps around.
  virtual std::uint32_t GetTickCount() = 0;
  virtual void OutputDebugStringA(const char* text) = 0;
};

/// Makes `system` the one that TheSystem returns; it must live until another is installed. Null
/// uninstalls.
void InstallSystem(System* system);
/// The installed System. One must be installed before a plug-in is loaded.
System& TheSystem();

}  // namespace mapexport
