// Tests of the System without pixels, with a dialog and a dialog procedure of their own.

#include "console/ConsoleSystem.h"
#include "settings/SettingsStore.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr int kDialog = 7;
constexpr int kLeader = 10;    // a check box that checks kFollower
constexpr int kFollower = 11;  // a check box that stays checked as long as kLeader is
constexpr int kEdit = 20;
constexpr int kFile = 21;
constexpr int kBrowse = 30;
constexpr int kList = 40;

constexpr std::array kControls = {
    DialogControl{-1, ControlKind::kLabel, "a label", 0, 0, 10, 10},
    DialogControl{kFollower, ControlKind::kCheckBox, "Follower", 0, 0, 10, 10},
    DialogControl{kLeader, ControlKind::kCheckBox, "Leader", 0, 0, 10, 10},
    DialogControl{kEdit, ControlKind::kEdit, nullptr, 0, 0, 10, 10},
    DialogControl{kFile, ControlKind::kReadOnlyEdit, "none", 0, 0, 10, 10},
    DialogControl{kBrowse, ControlKind::kButton, "Browse", 0, 0, 10, 10},
    DialogControl{kList, ControlKind::kListBox, nullptr, 0, 0, 10, 10},
    DialogControl{IDOK, ControlKind::kDefaultButton, "OK", 0, 0, 10, 10},
};
constexpr std::array kDialogs = {DialogTemplate{kDialog, "Title", 100, 100, kControls}};

class ConsoleTest;
ConsoleTest* running = nullptr;  // a dialog procedure is a plain function

class ConsoleTest : public testing::Test {
 public:
  void TearDown() override { DetachModule(module_); }

  int Show(std::vector<DialogAction> actions, DialogProc* proc = Procedure) {
    running = this;
    options_.actions = std::move(actions);
    commands_.clear();
    system_ = std::make_unique<ConsoleSystem>(options_, settings_);
    return system_->DialogBoxParam(module_, kDialog, nullptr, proc, 42);
  }

  std::string Text(HWND dialog, int id, int size = 100) const {
    std::string buffer(100, '?');
    const int length = system_->GetDlgItemText(dialog, id, buffer.data(), size);
    EXPECT_EQ(buffer[static_cast<std::size_t>(length)], '\0');
    return buffer.substr(0, static_cast<std::size_t>(length));
  }

  /// Asks for a file with room for 15 bytes and a NUL.
  bool Pick() {
    std::array<char, 16> path = {"unused"};
    OpenFileName request;
    request.file = path.data();
    request.maxFile = path.size();
    const bool picked = system_->GetOpenFileName(request);
    picked_ = path.data();
    return picked;
  }

  /// Behaves as dialogs do whose controls act at each click and whose boxes are read on OK.
  static bool Procedure(HWND dialog, unsigned message, WPARAM wParam, LPARAM lParam) {
    return running->Handle(dialog, message, wParam, lParam);
  }

  bool Handle(HWND dialog, unsigned message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
      window_ = dialog;
      EXPECT_EQ(lParam, 42);
      system_->CheckDlgButton(dialog, kFollower, true);
      system_->SetDlgItemText(dialog, kEdit, "0.5");
      for (const char* row : {"zero", "one", "two"}) system_->ListBoxAddString(dialog, kList, row);
      system_->ListBoxSetCurSel(dialog, kList, 1);
      return true;
    }
    const int id = CommandId(wParam);
    commands_.emplace_back(id, CommandNotification(wParam));
    if (id == endAt_) system_->EndDialog(dialog, 5);
    if ((id == kLeader || id == kFollower) && system_->IsDlgButtonChecked(dialog, kLeader)) {
      system_->CheckDlgButton(dialog, kFollower, true);
    }
    if (id == kBrowse && Pick()) system_->SetDlgItemText(dialog, kFile, picked_.c_str());
    if (id == IDOK) {
      atOk_ = {Text(dialog, kEdit), Text(dialog, kFile)};
      rowAtOk_ = system_->ListBoxGetCurSel(dialog, kList);
      EXPECT_FALSE(Pick()) << "no button is being pressed";
      if (endAt_ != -1) system_->EndDialog(dialog, 1);
    }
    return true;
  }

  using Command = std::pair<int, unsigned>;

  SettingsStore settings_ = SettingsStore::InMemory();
  HINSTANCE module_ = AttachModule({{}, kDialogs, {}});
  ConsoleSystem::Options options_;
  std::unique_ptr<ConsoleSystem> system_;
  HWND window_ = nullptr;
  int endAt_ = 0;  ///< the command that ends the dialog with 5; -1: not even OK ends it
  std::string picked_;
  std::vector<Command> commands_;
  std::vector<std::string> atOk_;
  int rowAtOk_ = -2;
};

TEST_F(ConsoleTest, BoxesAreClickedOnlyWhenTheyDifferAsTheirTurnComes) {
  // The procedure checks the follower at the leader's click, and again when it is clicked.
  EXPECT_EQ(Show({SetCheck{kFollower, false}, SetCheck{kLeader, true}, SetCheck{kFollower, true},
                  SetCheck{kFollower, false}}),
            1);
  EXPECT_THAT(commands_, ElementsAre(Command{kFollower, BN_CLICKED}, Command{kLeader, BN_CLICKED},
                                     Command{kFollower, BN_CLICKED}, Command{IDOK, BN_CLICKED}));
}

TEST_F(ConsoleTest, TypingSelectingAndBrowsingReachTheProcedure) {
  EXPECT_EQ(Show({TypeText{kEdit, "-0.25"}, SelectRow{kList, 1}, SelectRow{kList, 2},
                  PickFile{kBrowse, "/fifteen/bytes_"}}),
            1);
  EXPECT_THAT(commands_, ElementsAre(Command{kList, LBN_SELCHANGE}, Command{kBrowse, BN_CLICKED},
                                     Command{IDOK, BN_CLICKED}));
  EXPECT_THAT(atOk_, ElementsAre("-0.25", "/fifteen/bytes_"));
  EXPECT_EQ(rowAtOk_, 2);

  for (const char* path : {"/sixteen/bytes__", ""}) {
    EXPECT_EQ(Show({PickFile{kBrowse, path}}), 1);
    EXPECT_THAT(atOk_, ElementsAre("0.5", "none")) << "what the procedure and the template set";
    EXPECT_EQ(rowAtOk_, 1);
    EXPECT_EQ(picked_, "unused");
  }
}

TEST_F(ConsoleTest, WindowsAndControlsThatAreNotThereAreSafe) {
  Show({});
  const auto useOthers = [](HWND dialog, unsigned message, WPARAM, LPARAM) {
    ConsoleSystem& system = *running->system_;
    EXPECT_EQ(running->Text(dialog, kFile, 3), "no");
    EXPECT_EQ(system.GetDlgItemText(dialog, kFile, nullptr, 3), 0);
    const std::vector<std::pair<HWND, int>> places = {
        {running->window_, kLeader}, {nullptr, kLeader}, {dialog, 99}, {dialog, -1}};
    for (const auto& [window, id] : places) {
      system.SetDlgItemText(window, id, "x");
      system.CheckDlgButton(window, id, true);
      system.ListBoxAddString(window, id, "x");
      system.ListBoxSetCurSel(window, id, 0);
      EXPECT_EQ(running->Text(window, id), "");
      EXPECT_FALSE(system.IsDlgButtonChecked(window, id));
      EXPECT_EQ(system.ListBoxGetCurSel(window, id), -1);
      if (window != dialog) system.EndDialog(window, 9);
    }
    EXPECT_FALSE(system.IsDlgButtonChecked(dialog, kLeader));
    system.ListBoxAddString(dialog, kList, nullptr);
    for (const int row : {0, 9, -2}) {
      system.ListBoxSetCurSel(dialog, kList, row);
      EXPECT_EQ(system.ListBoxGetCurSel(dialog, kList), row == 0 ? 0 : -1);
    }
    if (message == WM_COMMAND) system.EndDialog(dialog, 2);
    return true;
  };
  EXPECT_EQ(system_->DialogBoxParam(module_, kDialog, window_, useOthers, 0), 2);
}

}  // namespace
}  // namespace mapexport
