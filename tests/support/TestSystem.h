// A System for tests: records what it is shown, answers what the test says.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/System.h"

namespace mapexport {

/// Installed from its construction to its destruction.
class TestSystem : public System {
 public:
  struct Box {
    std::string title;
    std::string text;

    friend bool operator==(const Box&, const Box&) = default;
  };
  struct Control {
    std::string text;
    bool checked = false;
    std::vector<std::string> rows;
    int selection = -1;
  };
  struct Value {
    RegistryType type = RegistryType::kText;
    std::string bytes;  ///< a text with its NUL
  };

  TestSystem() { InstallSystem(this); }
  ~TestSystem() override { InstallSystem(nullptr); }
  TestSystem(const TestSystem&) = delete;
  TestSystem& operator=(const TestSystem&) = delete;

  // What happened.
  std::vector<Box> messageBoxes;
  std::string debugOutput;
  std::vector<HCURSOR> cursors;     ///< in the order in which they were shown
  std::map<int, Control> controls;  ///< of the dialog shown last, by id
  int customControlsInits = 0;

  // What the test sets.
  std::uint32_t tickCount = 0;                          ///< both clocks, ms
  int dialogButton = IDOK;                              ///< the button that ends a dialog
  std::function<void(HWND, DialogProc*)> beforeButton;  ///< what else the person does in a dialog
  std::optional<std::string> pickedFile;                ///< none: the file box is cancelled
  std::set<std::string> throwing;                       ///< names of calls that throw
  bool registryOpens = true;
  bool registryEnforcesAccess = true;
  std::map<std::pair<std::string, std::string>, Value> registry;  ///< by key path and value name

  void InitCommonControls() override {}
  void InitCustomControls(HINSTANCE) override {
    MayThrow("InitCustomControls");
    ++customControlsInits;
  }

  int DialogBoxParam(HINSTANCE, int, HWND, DialogProc* proc, LPARAM parameter) override {
    const HWND dialog = reinterpret_cast<HWND>(this);
    controls.clear();
    dialogResult_ = 0;
    proc(dialog, WM_INITDIALOG, 0, parameter);
    if (beforeButton) beforeButton(dialog, proc);
    proc(dialog, WM_COMMAND, MakeCommand(dialogButton, BN_CLICKED), 0);
    return dialogResult_;
  }
  void EndDialog(HWND, int result) override { dialogResult_ = result; }
  void SetDlgItemText(HWND, int id, const char* text) override { controls[id].text = text; }
  int GetDlgItemText(HWND, int id, char* buffer, int size) override {
    const std::string text = controls[id].text.substr(0, static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
  }
  void CheckDlgButton(HWND, int id, bool checked) override { controls[id].checked = checked; }
  bool IsDlgButtonChecked(HWND, int id) override { return controls[id].checked; }
  void ListBoxAddString(HWND, int id, const char* text) override {
    controls[id].rows.emplace_back(text);
  }
  void ListBoxSetCurSel(HWND, int id, int index) override {
    Control& list = controls[id];
    list.selection = index >= 0 && std::cmp_less(index, list.rows.size()) ? index : -1;
  }
  int ListBoxGetCurSel(HWND, int id) override { return controls[id].selection; }

  void MessageBox(HWND, const char* text, const char* title) override {
    messageBoxes.push_back({title, text});
  }
  bool GetOpenFileName(OpenFileName& request) override {
    if (!pickedFile || pickedFile->size() >= request.maxFile) return false;
    std::memcpy(request.file, pickedFile->c_str(), pickedFile->size() + 1);
    return true;
  }
  HCURSOR LoadCursor(HINSTANCE, int id) override {
    return reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(id));
  }
  void SetCursor(HCURSOR cursor) override { cursors.push_back(cursor); }

  LSTATUS RegCreateKeyEx(RegistryRoot, const char* path, const char*, RegistryAccess access,
                         HKEY& key) override {
    if (!registryOpens) return kRegAccessDenied;
    keys_.push_back(std::make_unique<OpenKey>(OpenKey{path, access}));
    key = reinterpret_cast<HKEY>(keys_.back().get());
    return kRegSuccess;
  }
  LSTATUS RegQueryValueEx(HKEY key, const char* name, RegistryType type, void* data,
                          std::uint32_t& size) override {
    MayThrow("RegQueryValueEx");
    const OpenKey& open = *reinterpret_cast<OpenKey*>(key);
    if (registryEnforcesAccess && open.access != RegistryAccess::kQuery) return kRegAccessDenied;
    const auto found = registry.find({open.path, name});
    if (found == registry.end() || found->second.type != type) return kRegFileNotFound;
    const std::string& bytes = found->second.bytes;
    const std::uint32_t capacity = std::exchange(size, static_cast<std::uint32_t>(bytes.size()));
    if (size > capacity) return kRegMoreData;
    std::memcpy(data, bytes.data(), bytes.size());
    return kRegSuccess;
  }
  LSTATUS RegSetValueEx(HKEY key, const char* name, RegistryType type, const void* data,
                        std::uint32_t size) override {
    const OpenKey& open = *reinterpret_cast<OpenKey*>(key);
    if (registryEnforcesAccess && open.access != RegistryAccess::kSet) return kRegAccessDenied;
    registry[{open.path, name}] = {type, std::string(static_cast<const char*>(data), size)};
    return kRegSuccess;
  }
  void RegCloseKey(HKEY key) override {
    MayThrow("RegCloseKey");
    std::erase_if(keys_,
                  [key](const auto& open) { return reinterpret_cast<HKEY>(open.get()) == key; });
  }
  std::size_t OpenKeys() const { return keys_.size(); }

  std::uint32_t timeGetTime() override { return tickCount; }
  std::uint32_t GetTickCount() override {
    MayThrow("GetTickCount");
    return tickCount;
  }
  void OutputDebugStringA(const char* text) override {
    MayThrow("OutputDebugStringA");
    debugOutput += text;
  }

 private:
  void MayThrow(const char* call) const {
    if (throwing.contains(call)) throw std::runtime_error(std::string(call) + " failed");
  }

  struct OpenKey {
    std::string path;
    RegistryAccess access;
  };

  int dialogResult_ = 0;
  std::vector<std::unique_ptr<OpenKey>> keys_;
};

}  // namespace mapexport
