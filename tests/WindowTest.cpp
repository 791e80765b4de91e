// The windows of --dialog, driven as a person drives them, on Qt's offscreen platform. This program
// runs mapexport's main function in its process.
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <deque>

#include "app/Program.h"
#include "app/WindowLibrary.h"
#include "app/export/DialogControls.h"
#include "console/ConsoleSystem.h"
#include "host/System.h"
#include "settings/SettingsStore.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr const char* kScene = R"({"format":"mapexport-scene","version":1,
"root":{"name":"Scene Root","children":[{"name":"Floor","mesh":{
 "vertices":[[0,0,0],[10,0,0],[10,10,0]],"faces":[[0,1,2,1]]}}]}})";

/// Does its steps one after the other, each in the modal window that is open last by then.
class Person {
 public:
  using Step = std::function<void(QWidget& window)>;

  static void Arrive() {
    QTimer::singleShot(0, [] { Act(); });
  }

  static inline std::deque<Step> steps;

 private:
  static void Act() {
    Arrive();  // a step that opens a window returns only when that is closed
    QWidget* const window = QApplication::activeModalWidget();
    if (window == nullptr) return;
    if (!window->isActiveWindow()) {
      window->activateWindow();  // which no window manager does here
      return;
    }
    if (steps.empty()) {
      ADD_FAILURE() << "a window is left: " << window->windowTitle().toStdString();
      qobject_cast<QDialog*>(window)->done(0);
      return;
    }
    const Step step = std::move(steps.front());
    steps.pop_front();
    step(*window);
  }
};

template <typename Widget>
Widget& Get(QWidget& window, int id) {
  auto* const widget = window.findChild<Widget*>(QString::number(id));
  if (widget == nullptr) throw std::runtime_error("no such control: " + std::to_string(id));
  return *widget;
}

Person::Step Press(Qt::Key key) {
  return [key](QWidget& window) { QTest::keyClick(&window, key); };
}
Person::Step Click(int id) {
  return [id](QWidget& window) {
    QTest::mouseClick(&Get<QWidget>(window, id), Qt::LeftButton, {}, QPoint(8, 8));
  };
}
Person::Step Type(int id, const char* text) {
  return [id, text](QWidget& window) {
    Get<QLineEdit>(window, id).selectAll();
    QTest::keyClicks(&Get<QLineEdit>(window, id), text);
  };
}
Person::Step Choose(const fs::path& file) {
  return [file](QWidget& window) {
    EXPECT_THAT(qobject_cast<QFileDialog*>(&window)->nameFilters(), ElementsAre("(.cxp) (*.cxp)"));
    window.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(file.string()));
    QTest::keyClick(window.findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
  };
}
/// Expects a message box and presses its button.
Person::Step Read(const char* title, const char* text) {
  return [title, text](QWidget& window) {
    auto* const box = qobject_cast<QMessageBox*>(&window);
    ASSERT_NE(box, nullptr) << window.windowTitle().toStdString();
    EXPECT_EQ(box->windowTitle(), title);
    EXPECT_THAT(box->text().toStdString(), HasSubstr(text));
    QTest::keyClick(box, Qt::Key_Return);
  };
}

class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static const bool added = (qAddPreRoutine(Person::Arrive), true);
    EXPECT_TRUE(added);
    fs::current_path(folder_);
    Write("scene.scene.json", kScene);
    Write("out.kob", "old");
    Write("some.cxp", "");
  }
  ~WindowTest() override {
    EXPECT_TRUE(Person::steps.empty()) << Person::steps.size() << " windows did not come";
    Person::steps.clear();
    fs::current_path("/");
  }

  /// Exports with --dialog and a settings file; the exit status.
  int Export(std::deque<Person::Step> steps, std::vector<std::string> options = {}) {
    Person::steps = std::move(steps);
    std::vector<std::string> words = {"mapexport", "export",   "scene.scene.json",
                                      "out.kob",   "--dialog", "--settings",
                                      "s.reg",     "--report", "r.json"};
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    arguments.reserve(words.size());
    for (std::string& word : words) arguments.push_back(word.data());
    testing::internal::CaptureStderr();
    const int status = RunProgram(static_cast<int>(arguments.size()), arguments.data());
    err_ = testing::internal::GetCapturedStderr();
    return status;
  }

  const TempFolder temporary_;
  const fs::path folder_ = temporary_.Path();
  std::string err_;
};

TEST_F(WindowTest, ShowsTheOptionsAndEscapeCancels) {
  const auto look = [](QWidget& window) {
    EXPECT_EQ(window.windowTitle(), "MAP Export Options");
    const QRect status = window.parentWidget()->frameGeometry();
    EXPECT_FALSE(status.intersects(window.frameGeometry()));
    EXPECT_TRUE(window.screen()->availableGeometry().contains(status | window.frameGeometry()));
    EXPECT_EQ(Get<QLineEdit>(window, kLightingMultiplierControl).text(), "2.5");
    EXPECT_TRUE(Get<QLineEdit>(window, kCxpControl).isReadOnly());
    EXPECT_TRUE(Get<QCheckBox>(window, kWeldControl).isChecked());
    EXPECT_FALSE(Get<QCheckBox>(window, kSnapControl).isChecked());
    EXPECT_EQ(Get<QListWidget>(window, kTextureCoordinatesControl).currentItem()->text(),
              "3D Studio Max");
    EXPECT_TRUE(Get<QPushButton>(window, IDOK).isDefault());

    std::vector<int> order;
    std::vector<std::string> names;
    for (int i = 0; i < 15; ++i) {
      QWidget& focus = *window.focusWidget();
      order.push_back(focus.objectName().toInt());
      if (!focus.accessibleName().isEmpty()) names.push_back(focus.accessibleName().toStdString());
      QTest::keyClick(&focus, Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre(kWeldControl, kWeldDistanceControl, kRemoveTVerticesControl,
                                   kMinTriangleAreaControl, kSnapControl, kSnapDimensionControl,
                                   kCleanControl, kLightingMultiplierControl, kLightFormatControl,
                                   kVoxelSizeControl, kCxpControl, kBrowseControl,
                                   kCoordinatesControl, kTextureCoordinatesControl, IDOK));
    EXPECT_THAT(names, ElementsAre("Weld Distance:", "Min Triangle Area:", "Snap Dimension:",
                                   "Lighting Multiplier:", "Voxel Size:", "CXP Filename",
                                   "Export Coordinate System", "Texture Coordinates"));
    QTest::keyClick(&window, Qt::Key_Escape);
  };
  EXPECT_EQ(Export({look}, {"--lighting-multiplier", "2.5", "--texture-coordinates", "max"}), 3);
  EXPECT_EQ(Content("out.kob"), "old");
  EXPECT_THAT(Content("r.json"), AllOf(HasSubstr(R"("status": 3)"), HasSubstr(R"("dialog": )")));
  EXPECT_THAT(err_, testing::EndsWith("out.kob: not exported: cancelled in the dialog\n"));
  for (const auto& entry : fs::directory_iterator(".")) EXPECT_FALSE(entry.is_directory());
}

TEST_F(WindowTest, WhatThePersonDoesIsExportedAndSaved) {
  const auto isInPlace = [](QWidget& window) {
    EXPECT_NE(Content("out.kob"), "old");
    Read("Text Scene Export", "Scene exported successfully.")(window);
  };
  const auto weldingIsOn = [](QWidget& dialog) {
    EXPECT_TRUE(Get<QCheckBox>(dialog, kWeldControl).isChecked());
  };
  const auto selectThird = [](QWidget& window) {
    QTest::keyClick(&Get<QListWidget>(window, kCoordinatesControl), Qt::Key_End);
    QTest::keyClick(&Get<QListWidget>(window, kCoordinatesControl), Qt::Key_Up);
  };
  EXPECT_EQ(Export({Click(kWeldControl), Click(kRemoveTVerticesControl), weldingIsOn,
                    Click(kWeldControl), weldingIsOn, Click(kCleanControl),
                    Type(kVoxelSizeControl, "abc"), Type(kWeldDistanceControl, "0.125"),
                    selectThird, Click(kBrowseControl), Choose(folder_ / "some.cxp"), Click(IDOK),
                    Read("Results", "1 faces, 3 vertices"), isInPlace},
                   {"--quiet"}),
            0);
  EXPECT_THAT(err_, Not(HasSubstr("Results")));
  EXPECT_THAT(
      Content("s.reg"),
      AllOf(HasSubstr(R"("Weld Vertices?"="TRUE")"), HasSubstr(R"("Remove t-vertices?"="TRUE")"),
            HasSubstr(R"("Clean vertex attributes?"="FALSE")"),
            HasSubstr(R"("Geometry Voxel Size"="0.000000")"),
            HasSubstr(R"("Welding Distance"="0.125000")"),
            HasSubstr(R"("Export Coordinates"=dword:00000002)"), HasSubstr("/some.cxp\"")));
}

TEST_F(WindowTest, CancelKeepsAPathAndRefusesALongOne) {
  const fs::path deep = folder_ / std::string(150, 'd');
  fs::create_directory(deep);
  Write(deep / (std::string(100, 'f') + ".cxp"), "");
  EXPECT_EQ(
      Export({Type(kVoxelSizeControl, "77"), Click(kBrowseControl), Choose(folder_ / "some.cxp"),
              Click(kBrowseControl), Choose(deep / (std::string(100, 'f') + ".cxp")),
              Read("Path Too Long", "at most 254"), Click(kBrowseControl), Press(Qt::Key_Escape),
              Click(IDCANCEL)}),
      3);
  EXPECT_THAT(Content("s.reg"), AllOf(HasSubstr("/some.cxp\""), Not(HasSubstr("77"))));
}

TEST_F(WindowTest, WithoutADisplayOneLineSaysSo) {
  setenv("QT_QPA_PLATFORM", "nosuch", 1);
  EXPECT_EQ(Export({}), 1);
  EXPECT_THAT(err_, AllOf(HasSubstr("--dialog: the dialog can't be shown: "), HasSubstr("nosuch")));
  EXPECT_EQ(std::ranges::count(err_, '\n'), 1);
}

class ScaledWindowTest : public WindowTest, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, ScaledWindowTest, testing::Values(1, 2));

/// The width that the text of a control takes up, and the one that it has.
std::pair<int, int> TextWidths(const QWidget& widget) {
  if (qobject_cast<const QPushButton*>(&widget) != nullptr) {
    return {widget.fontMetrics().horizontalAdvance(widget.property("text").toString()) + 8,
            widget.width()};
  }
  if (const auto* const list = qobject_cast<const QListWidget*>(&widget)) {
    const QRect last = list->visualItemRect(list->item(list->count() - 1));
    EXPECT_LE(last.bottom(), list->viewport()->height());
    EXPECT_GE(last.height(), widget.fontMetrics().height());
    return {list->sizeHintForColumn(0), list->viewport()->width()};
  }
  if (const auto* const edit = qobject_cast<const QLineEdit*>(&widget)) {
    if (edit->isReadOnly()) return {0, 0};  // scrolls
    EXPECT_EQ(edit->toolTip(), "");         // no number is cut
    return {edit->fontMetrics().horizontalAdvance(edit->text()), widget.width()};
  }
  return {widget.sizeHint().width(), widget.width()};
}

TEST_P(ScaledWindowTest, NothingIsClippedAndNothingOverlaps) {
  setenv("QT_SCALE_FACTOR", std::to_string(GetParam()).c_str(), 1);
  const auto look = [](QWidget& window) {
    EXPECT_EQ(window.devicePixelRatio(), GetParam());
    for (const QFont& font : {QFont("sans-serif", 9), QFont("serif", 14), QFont("monospace", 10)}) {
      window.setFont(font);
      const QFontMetricsF metrics(font);
      const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
      const double fontX = metrics.horizontalAdvance(letters) / 52 / 4;
      // Not every font of that kind says so itself.
      const bool fixedPitch = metrics.horizontalAdvance('i') == metrics.horizontalAdvance('W');
      const double x = window.width() / 279.0;  // wider only where the font's texts need it
      EXPECT_GT(x, fontX * 0.999);
      EXPECT_LT(x, fontX * (fixedPitch ? 1.4 : 1.001));
      EXPECT_NEAR(Get<QLineEdit>(window, kWeldDistanceControl).x(), 210 * x, 1);
      EXPECT_NEAR(Get<QLineEdit>(window, kWeldDistanceControl).width(), 40 * x, 1);
      const auto widgets = window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
      EXPECT_EQ(widgets.size(), 24);
      for (const QWidget* const widget : widgets) {
        const auto [needed, has] = TextWidths(*widget);
        const std::string name = widget->objectName().toStdString();
        EXPECT_LE(needed, has) << name;
        EXPECT_GE(widget->height(), widget->fontMetrics().height()) << name;
        EXPECT_TRUE(window.rect().contains(widget->geometry())) << name;
        for (const QWidget* const other : widgets) {
          EXPECT_TRUE(other == widget || !other->geometry().intersects(widget->geometry()))
              << name << " and " << other->objectName().toStdString();
        }
      }
    }
    window.close();
  };
  EXPECT_EQ(Export({look}), 3);
  unsetenv("QT_SCALE_FACTOR");
}

TEST_F(WindowTest, KeysAndLabelsReachTheControls) {
  const auto look = [](QWidget& window) {
    EXPECT_FALSE(window.windowFlags() & Qt::WindowMinMaxButtonsHint);
    for (const auto& [key, id] :
         std::vector<std::pair<Qt::Key, int>>{{Qt::Key_D, kWeldDistanceControl},
                                              {Qt::Key_N, kSnapDimensionControl},
                                              {Qt::Key_V, kVoxelSizeControl},
                                              {Qt::Key_E, kCoordinatesControl},
                                              {Qt::Key_X, kTextureCoordinatesControl}}) {
      QTest::keyClick(&window, key, Qt::AltModifier);
      ASSERT_NE(window.focusWidget(), nullptr);
      EXPECT_EQ(window.focusWidget()->objectName().toInt(), id);
      QAccessibleInterface* const control =
          QAccessible::queryAccessibleInterface(window.focusWidget());
      ASSERT_NE(control, nullptr);
      EXPECT_FALSE(control->text(QAccessible::Name).isEmpty());
      // Qt's lists have only the name.
      if (qobject_cast<QLineEdit*>(window.focusWidget()) == nullptr) continue;
      const auto labels = control->relations(QAccessible::Label);
      ASSERT_EQ(labels.size(), 1);
      EXPECT_EQ(dynamic_cast<QLabel&>(*labels[0].first->object()).buddy(), window.focusWidget());
    }
    auto& box = Get<QLineEdit>(window, kVoxelSizeControl);
    const auto labels = window.findChildren<QLabel*>();
    const auto label = std::ranges::find(labels, &box, &QLabel::buddy);
    ASSERT_NE(label, labels.end());
    EXPECT_EQ((*label)->geometry().center().y(), box.geometry().center().y());
    EXPECT_EQ(Get<QCheckBox>(window, kWeldControl).text(), "&Weld Vertices");
    box.setText("<b>100000000000000000000</b>");
    EXPECT_THAT(box.toolTip().toStdString(), HasSubstr("&lt;b&gt;"));
    QTest::keyClick(&window, Qt::Key_Escape);
  };
  EXPECT_EQ(Export({look}), 3);
}

// A dialog that has nothing to do with this exporter.
constexpr std::array kControls = {
    DialogControl{-1, ControlKind::kLabel, "&Name && more", 5, 5, 60, 8},
    DialogControl{20, ControlKind::kEdit, nullptr, 5, 15, 60, 12},
    DialogControl{-1, ControlKind::kLabel, "No &one's", 5, 30, 10, 8},
    DialogControl{10, ControlKind::kCheckBox, "&Throws", 5, 40, 60, 10},
    DialogControl{30, ControlKind::kButton, "Cursor", 5, 55, 40, 14},
    DialogControl{40, ControlKind::kListBox, nullptr, 5, 75, 60, 20},
    DialogControl{-1, ControlKind::kCheckBox, "Idle", 5, 100, 60, 10},
};
constexpr std::array kDialogs = {DialogTemplate{7, "Other", 80, 120, kControls}};
constexpr std::array<std::string_view, 2> kRows = {"Xo.", "o"};
constexpr std::array kCursors = {CursorImage{9, 1, 0, kRows}};

ConsoleSystem* running = nullptr;
HINSTANCE module = nullptr;
std::vector<int> commands;

bool OtherProcedure(HWND dialog, unsigned message, WPARAM wParam, LPARAM) {
  if (message == WM_INITDIALOG) {
    running->SetDlgItemText(dialog, 20, "\xff!");
    for (const char* row : {"zero", "one"}) running->ListBoxAddString(dialog, 40, row);
    return true;
  }
  commands.push_back(CommandId(wParam));
  if (CommandId(wParam) == 10) throw std::runtime_error("from the procedure");
  if (CommandId(wParam) == 30) running->SetCursor(running->LoadCursor(module, 9));
  if (CommandId(wParam) == 40) running->SetDlgItemText(dialog, 10, "Changed");
  std::array<char, 8> text{};
  running->GetDlgItemText(dialog, 20, text.data(), text.size());
  if (CommandId(wParam) == IDOK) running->EndDialog(dialog, std::string("\xff!") == text.data());
  return true;
}

TEST_F(WindowTest, ShowsAnyTemplate) {
  SettingsStore settings = SettingsStore::InMemory();
  const std::unique_ptr<Presenter> windows = OpenWindows("Host");
  windows->ShowStatus("Working");
  ConsoleSystem::Options options;
  options.presenter = windows.get();
  ConsoleSystem system(options, settings);
  running = &system;
  module = AttachModule({{}, kDialogs, kCursors});
  const auto show = [&] { return system.DialogBoxParam(module, 7, nullptr, OtherProcedure, 0); };
  const auto look = [](QWidget& window) {
    EXPECT_EQ(Get<QLineEdit>(window, 20).text(), QString::fromUtf8("\xff!"));
    EXPECT_EQ(Get<QLineEdit>(window, 20).accessibleName(), "Name & more");
    EXPECT_EQ(Get<QListWidget>(window, 40).selectedItems().size(), 0);
    std::vector<std::string> labels;
    for (const QLabel* label : window.findChildren<QLabel*>()) {
      labels.push_back(label->text().toStdString());
      EXPECT_GE(label->width(), label->sizeHint().width());
    }
    EXPECT_THAT(labels, ElementsAre("&Name && more", "No one's"));
    window.close();  // a procedure that does not end the dialog keeps it open
    EXPECT_TRUE(window.isVisible());
    Get<QListWidget>(window, 40).setFocus();
    QTest::keyClick(&Get<QListWidget>(window, 40), Qt::Key_Space);
    EXPECT_EQ(Get<QCheckBox>(window, 10).text(), "Changed");
    QTest::mouseClick(window.findChildren<QCheckBox*>().back(), Qt::LeftButton, {}, QPoint(8, 8));
  };
  const auto lookAtCursor = [](QWidget& window) {
    EXPECT_EQ(window.parentWidget()->cursor().hotSpot(), QPoint(1, 0));
    Get<QLineEdit>(window, 20).setFocus();
  };
  Person::steps = {look, Click(30), lookAtCursor, Press(Qt::Key_Return)};
  EXPECT_EQ(show(), 1) << "bytes that nobody edits stay";
  EXPECT_THAT(commands, ElementsAre(IDCANCEL, 40, 30, IDOK)) << "Enter without a default button";

  Person::steps = {Type(20, "typed"), Press(Qt::Key_Return)};
  EXPECT_EQ(show(), 0);
  Person::steps = {Click(10)};
  EXPECT_THROW(show(), std::runtime_error);
  DetachModule(module);
}

}  // namespace
}  // namespace mapexport
