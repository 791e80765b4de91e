#include "console/ConsoleSystem.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "console/ControlStates.h"
#include "console/Person.h"
#include "console/Presenter.h"
#include "settings/SettingsStore.h"

namespace mapexport {
namespace {

struct Dialog {
  explicit Dialog(const DialogTemplate& dialog) : controls(dialog) {}

  ControlStates controls;
  std::optional<int> result;  ///< set by EndDialog
};

const char* OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

FileBox FileBoxOf(const OpenFileName& request) {
  FileBox box;
  if (request.initialDir != nullptr) box.initialDir = request.initialDir;
  if (request.filter != nullptr && *request.filter != '\0') {
    box.display = request.filter;
    box.pattern = request.filter + box.display.size() + 1;
  }
  return box;
}

std::uint32_t Milliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace

struct ConsoleSystem::State {
  State(Options theOptions, SettingsStore& theSettings)
      : options(std::move(theOptions)), settings(theSettings) {}

  Options options;
  SettingsStore& settings;
  std::map<HWND, Dialog> dialogs;  ///< the open ones
  std::uintptr_t lastWindow = 0;
  std::optional<std::string> pickedFile;  ///< the next answer of the file-open box
  /// The loaded cursors, by module and id; null stands for the wait cursor. A handle is the address
  /// of one.
  std::map<std::pair<HINSTANCE, int>, const CursorImage*> cursors;

  Dialog* FindDialog(HWND window) {
    const auto found = dialogs.find(window);
    return found == dialogs.end() ? nullptr : &found->second;
  }
  ControlState* FindControl(HWND window, int id) {
    Dialog* const dialog = FindDialog(window);
    return dialog == nullptr ? nullptr : dialog->controls.Find(id);
  }
  ControlState* FindControl(HWND window, int id, ControlKind kind) {
    Dialog* const dialog = FindDialog(window);
    return dialog == nullptr ? nullptr : dialog->controls.Find(id, kind);
  }
  void ShowChange(HWND window) const {
    if (options.presenter != nullptr) options.presenter->UpdateDialog(window);
  }
};

/// Opens a dialog and closes it at the end of the scope.
class ConsoleSystem::OpenDialog {
 public:
  OpenDialog(State& state, const DialogTemplate& dialog)
      : state_(state),
        // Handles are never reused: one that a procedure kept from an earlier dialog is invalid in
        // this one.
        handle_(reinterpret_cast<HWND>(++state.lastWindow)),
        dialog_(state.dialogs.try_emplace(handle_, dialog).first->second) {}
  OpenDialog(const OpenDialog&) = delete;
  OpenDialog& operator=(const OpenDialog&) = delete;
  ~OpenDialog() {
    state_.dialogs.erase(handle_);
    state_.pickedFile.reset();
  }

  HWND Handle() const { return handle_; }
  Dialog& Get() const { return dialog_; }

 private:
  State& state_;
  HWND handle_;
  Dialog& dialog_;
};

ConsoleSystem::ConsoleSystem(Options options, SettingsStore& settings)
    : state_(std::make_unique<State>(std::move(options), settings)) {}

ConsoleSystem::~ConsoleSystem() = default;

void ConsoleSystem::InitCommonControls() {}

void ConsoleSystem::InitCustomControls(HINSTANCE /*module*/) {}

int ConsoleSystem::DialogBoxParam(HINSTANCE module, int id, HWND /*owner*/, DialogProc* proc,
                                  LPARAM parameter) {
  const DialogTemplate* const found = FindDialog(module, id);
  if (found == nullptr || proc == nullptr) return -1;

  const OpenDialog open(*state_, *found);
  Dialog& dialog = open.Get();
  proc(open.Handle(), WM_INITDIALOG, 0, parameter);
  Person person({open.Handle(), proc, dialog.controls, dialog.result}, state_->pickedFile);
  for (const DialogAction& action : state_->options.actions) {
    if (dialog.result) break;
    person.Do(action);
  }
  if (!dialog.result) {
    if (state_->options.presenter == nullptr) {
      person.Press(IDOK);
    } else {
      state_->options.presenter->ShowDialog(open.Handle(), *found, person);
    }
  }
  return dialog.result.value_or(0);
}

void ConsoleSystem::EndDialog(HWND dialog, int result) {
  if (Dialog* const open = state_->FindDialog(dialog)) open->result = result;
}

void ConsoleSystem::SetDlgItemText(HWND dialog, int id, const char* text) {
  ControlState* const control = state_->FindControl(dialog, id);
  if (control == nullptr) return;
  control->text = OrEmpty(text);
  state_->ShowChange(dialog);
}

int ConsoleSystem::GetDlgItemText(HWND dialog, int id, char* buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  const ControlState* const control = state_->FindControl(dialog, id);
  const std::size_t length =
      control == nullptr ? 0 : control->text.copy(buffer, static_cast<std::size_t>(size) - 1);
  buffer[length] = '\0';
  return static_cast<int>(length);
}

void ConsoleSystem::CheckDlgButton(HWND dialog, int id, bool checked) {
  ControlState* const box = state_->FindControl(dialog, id, ControlKind::kCheckBox);
  if (box == nullptr) return;
  box->checked = checked;
  state_->ShowChange(dialog);
}

bool ConsoleSystem::IsDlgButtonChecked(HWND dialog, int id) {
  const ControlState* const box = state_->FindControl(dialog, id, ControlKind::kCheckBox);
  return box != nullptr && box->checked;
}

void ConsoleSystem::ListBoxAddString(HWND dialog, int id, const char* text) {
  ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  if (list == nullptr) return;
  list->rows.emplace_back(OrEmpty(text));
  state_->ShowChange(dialog);
}

void ConsoleSystem::ListBoxSetCurSel(HWND dialog, int id, int index) {
  ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  if (list == nullptr) return;
  list->selected = index >= 0 && std::cmp_less(index, list->rows.size()) ? index : -1;
  state_->ShowChange(dialog);
}

int ConsoleSystem::ListBoxGetCurSel(HWND dialog, int id) {
  const ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  return list == nullptr ? -1 : list->selected;
}

void ConsoleSystem::MessageBox(HWND /*owner*/, const char* text, const char* title) {
  if (state_->options.onMessageBox) state_->options.onMessageBox(OrEmpty(title), OrEmpty(text));
}

bool ConsoleSystem::GetOpenFileName(OpenFileName& request) {
  std::optional<std::string> path = std::exchange(state_->pickedFile, std::nullopt);
  Presenter* const presenter = state_->options.presenter;
  if (!path && presenter != nullptr) {
    path = presenter->PickFile(FileBoxOf(request));
    if (path && path->size() >= request.maxFile) {
      presenter->ShowMessageBox(
          "Path Too Long",
          fmt::format("{}\n\nThis path is {} bytes long; at most {} can be taken.", *path,
                      path->size(), std::max<std::uint32_t>(request.maxFile, 1) - 1));
    }
  }
  if (!path || path->empty() || request.file == nullptr || path->size() >= request.maxFile) {
    return false;
  }
  std::memcpy(request.file, path->c_str(), path->size() + 1);
  return true;
}

HCURSOR ConsoleSystem::LoadCursor(HINSTANCE module, int id) {
  const CursorImage* const image = FindCursor(module, id);
  if (image == nullptr && (module != nullptr || id != IDC_WAIT)) return nullptr;
  const CursorImage*& loaded = state_->cursors[{module, id}];
  loaded = image;
  return reinterpret_cast<HCURSOR>(&loaded);
}

void ConsoleSystem::SetCursor(HCURSOR cursor) {
  Presenter* const presenter = state_->options.presenter;
  if (presenter == nullptr) return;
  if (cursor == nullptr) {
    presenter->HideCursor();
    return;
  }
  for (auto& [key, image] : state_->cursors) {
    if (reinterpret_cast<HCURSOR>(&image) != cursor) continue;
    if (image == nullptr) {
      presenter->ShowWaitCursor();
    } else {
      presenter->ShowCursor(*image);
    }
  }
}

LSTATUS ConsoleSystem::RegCreateKeyEx(RegistryRoot root, const char* path, const char* keyClass,
                                      RegistryAccess access, HKEY& key) {
  return state_->settings.CreateKey(root, path, keyClass, access, key);
}

LSTATUS ConsoleSystem::RegQueryValueEx(HKEY key, const char* name, RegistryType type, void* data,
                                       std::uint32_t& size) {
  return state_->settings.QueryValue(key, name, type, data, size);
}

LSTATUS ConsoleSystem::RegSetValueEx(HKEY key, const char* name, RegistryType type,
                                     const void* data, std::uint32_t size) {
  return state_->settings.SetValue(key, name, type, data, size);
}

void ConsoleSystem::RegCloseKey(HKEY key) {
  state_->settings.CloseKey(key);
}

std::uint32_t ConsoleSystem::timeGetTime() {
  return Milliseconds();
}

std::uint32_t ConsoleSystem::GetTickCount() {
  return state_->options.tickCount.value_or(Milliseconds());
}

void ConsoleSystem::OutputDebugStringA(const char* text) {
  if (state_->options.onDebugOutput) state_->options.onDebugOutput(OrEmpty(text));
}

}  // namespace mapexport
