#include "console/ConsoleSystem.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "console/ControlStates.h"
#include "settings/SettingsStore.h"

namespace mapexport {
namespace {

struct Dialog {
  explicit Dialog(const DialogTemplate& dialog) : controls(dialog) {}

  ControlStates controls;
  std::optional<int> result;  ///< set by EndDialog
};

/// A dialog's procedure with the window that it is called for.
struct Procedure {
  DialogProc* proc;
  HWND window;

  void Notify(int id, unsigned notification) const {
    proc(window, WM_COMMAND, MakeCommand(id, notification), 0);
  }
};

const char* OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

std::uint32_t Milliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

/// The control that an action is done to, which must be there.
ControlState& Require(ControlState* control, int id, const char* kind) {
  if (control == nullptr) throw std::logic_error(fmt::format("the dialog has no {} {}", kind, id));
  return *control;
}

/// Does one action, and sends the procedure what a person's doing so would send.
class Person {
 public:
  Person(ControlStates& controls, Procedure procedure, std::optional<std::string>& pickedFile)
      : controls_(controls), procedure_(procedure), pickedFile_(pickedFile) {}

  void operator()(const SetCheck& action) const {
    ControlState& box =
        Require(controls_.Find(action.id, ControlKind::kCheckBox), action.id, "check box");
    if (box.checked == action.checked) return;
    box.checked = action.checked;
    procedure_.Notify(action.id, BN_CLICKED);
  }

  void operator()(const TypeText& action) const {
    Require(controls_.Find(action.id, ControlKind::kEdit), action.id, "edit box to type into")
        .text = action.text;
  }

  void operator()(const SelectRow& action) const {
    ControlState& list =
        Require(controls_.Find(action.id, ControlKind::kListBox), action.id, "list box");
    if (action.row < 0 || std::cmp_greater_equal(action.row, list.rows.size())) {
      throw std::logic_error(fmt::format("the list box {} has {} rows and none of index {}",
                                         action.id, list.rows.size(), action.row));
    }
    if (list.selected == action.row) return;
    list.selected = action.row;
    procedure_.Notify(action.id, LBN_SELCHANGE);
  }

  void operator()(const PickFile& action) const {
    ControlState* button = controls_.Find(action.id, ControlKind::kButton);
    if (button == nullptr) button = controls_.Find(action.id, ControlKind::kDefaultButton);
    Require(button, action.id, "button");
    pickedFile_ = action.path;
    procedure_.Notify(action.id, BN_CLICKED);
    pickedFile_.reset();
  }

 private:
  ControlStates& controls_;
  Procedure procedure_;
  std::optional<std::string>& pickedFile_;
};

}  // namespace

struct ConsoleSystem::State {
  State(Options theOptions, SettingsStore& theSettings)
      : options(std::move(theOptions)), settings(theSettings) {}

  Options options;
  SettingsStore& settings;
  std::map<HWND, Dialog> dialogs;  ///< the open ones
  std::uintptr_t lastWindow = 0;
  std::optional<std::string> pickedFile;  ///< what the next file-open box answers

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
};

/// Opens a dialog, and closes it however its procedure is left.
class ConsoleSystem::OpenDialog {
 public:
  OpenDialog(State& state, const DialogTemplate& dialog)
      : state_(state),
        // The handle is a number that is never used again: one that a procedure kept from an
        // earlier dialog means nothing in this one.
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
  const Procedure procedure{proc, open.Handle()};
  proc(open.Handle(), WM_INITDIALOG, 0, parameter);
  const Person person(dialog.controls, procedure, state_->pickedFile);
  for (const DialogAction& action : state_->options.actions) {
    if (dialog.result) break;
    std::visit(person, action);
  }
  if (!dialog.result) procedure.Notify(IDOK, BN_CLICKED);
  return dialog.result.value_or(0);
}

void ConsoleSystem::EndDialog(HWND dialog, int result) {
  if (Dialog* const open = state_->FindDialog(dialog)) open->result = result;
}

void ConsoleSystem::SetDlgItemText(HWND dialog, int id, const char* text) {
  if (ControlState* const control = state_->FindControl(dialog, id)) control->text = OrEmpty(text);
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
  if (box != nullptr) box->checked = checked;
}

bool ConsoleSystem::IsDlgButtonChecked(HWND dialog, int id) {
  const ControlState* const box = state_->FindControl(dialog, id, ControlKind::kCheckBox);
  return box != nullptr && box->checked;
}

void ConsoleSystem::ListBoxAddString(HWND dialog, int id, const char* text) {
  ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  if (list != nullptr) list->rows.emplace_back(OrEmpty(text));
}

void ConsoleSystem::ListBoxSetCurSel(HWND dialog, int id, int index) {
  ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  if (list == nullptr) return;
  list->selected = index >= 0 && std::cmp_less(index, list->rows.size()) ? index : -1;
}

int ConsoleSystem::ListBoxGetCurSel(HWND dialog, int id) {
  const ControlState* const list = state_->FindControl(dialog, id, ControlKind::kListBox);
  return list == nullptr ? -1 : list->selected;
}

void ConsoleSystem::MessageBox(HWND /*owner*/, const char* text, const char* title) {
  if (state_->options.onMessageBox) state_->options.onMessageBox(OrEmpty(title), OrEmpty(text));
}

bool ConsoleSystem::GetOpenFileName(OpenFileName& request) {
  const std::string path = std::exchange(state_->pickedFile, std::nullopt).value_or("");
  if (path.empty() || request.file == nullptr || path.size() >= request.maxFile) return false;
  std::memcpy(request.file, path.c_str(), path.size() + 1);
  return true;
}

HCURSOR ConsoleSystem::LoadCursor(HINSTANCE module, int id) {
  const bool exists = module == nullptr ? id == IDC_WAIT : FindCursor(module, id) != nullptr;
  // Nothing stands behind a cursor here; its id, which is not 0, tells it from others.
  return exists ? reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(id)) : nullptr;
}

void ConsoleSystem::SetCursor(HCURSOR /*cursor*/) {}

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
