// Whole exports as the host runs them: what they show and log, and how they fail.
#include <locale>

#include <sys/stat.h>

#include "exporter/base/StopWatch.h"
#include "scene/HostScene.h"
#include "support/LoadedPlugin.h"

namespace mapexport {
namespace {

/// Runs whole exports of a scene.
class ExportTest : public PluginTest {
 protected:
  void Export(const char* name) {
    HostScene host(scene_);
    EXPECT_EQ(exporter_.DoExport(name, nullptr, &host, true), 1);
    EXPECT_EQ(State().currentScene, nullptr);
  }
  std::vector<std::string> BoxTitles() const {
    std::vector<std::string> titles;
    for (const auto& box : system_.messageBoxes) titles.push_back(box.title);
    return titles;
  }

  Scene scene_;
};

TEST_F(ExportTest, ShowsLogsAndSavesInOrder) {
  scene_.root.name = "Level";
  Export("level");
  EXPECT_THAT(BoxTitles(), ElementsAre("Results", "Text Scene Export"));
  EXPECT_EQ(system_.messageBoxes[0].text,
            "0 faces, 0 vertices, 0 attributes -> 0 faces, 0 vertices, 0 attributes\n"
            "(Change = 0 faces, 0 vertices, 0 attributes)");
  EXPECT_EQ(system_.messageBoxes[1].text, "Scene exported successfully.\n");
  EXPECT_EQ(Content("ExportDebug.txt"),
            "Could not load CXP file \n"
            "\t\tWeldVertices() took 0 msec.\n"
            "\t\tCleanVertexAttributes() took 0 msec.\n"
            "\t\tPostProcessing() took 0 msec.\n"
            "\t\tTotal PostProcessing() took 0 msec.\n");
  EXPECT_THAT(system_.cursors,
              ElementsAre(system_.LoadCursor(nullptr, 104), system_.LoadCursor(nullptr, 109),
                          system_.LoadCursor(nullptr, IDC_WAIT)));
  EXPECT_EQ(system_.registry.size(), 12u);
  EXPECT_THAT(Content("level.map"), StartsWith(std::string("\x0b\0\0\0BeginModel\0", 15)));
}

TEST_F(ExportTest, ACancelledOrRefusedExportSavesTheOptionsAndSaysNothing) {
  system_.dialogButton = IDCANCEL;
  Export("level.kob");
  EXPECT_FALSE(fs::exists("level.kob"));
  EXPECT_TRUE(system_.messageBoxes.empty());
  EXPECT_EQ(system_.registry.size(), 12u);
  system_.dialogButton = IDOK;
  system_.registry.clear();
  Export("missing/level.kob");
  EXPECT_THAT(BoxTitles(), ElementsAre("Results"));
  EXPECT_EQ(system_.registry.size(), 12u);
}

/// A host whose main window fails.
template <typename Exception>
class FailingHost : public HostScene {
 public:
  explicit FailingHost(const Scene& scene) : HostScene(scene) {}
  HWND GetMAXHWnd() const override { throw Exception("the window is gone"); }
};

struct NoStandardException {
  explicit NoStandardException(const char*) {}
};

TEST_F(ExportTest, NoExceptionLeavesTheLibrary) {
  FailingHost<std::runtime_error> standard(scene_);
  EXPECT_EQ(exporter_.DoExport("level.kob", nullptr, &standard, false), 1);
  EXPECT_EQ(Content("ExportDebug.txt"), "Export ended by an exception: the window is gone\n");
  FailingHost<NoStandardException> other(scene_);
  EXPECT_EQ(exporter_.DoExport("level.kob", nullptr, &other, false), 1);
  EXPECT_THAT(Content("ExportDebug.txt"), StartsWith("Export ended by an exception"));
  EXPECT_EQ(State().currentScene, nullptr);
  EXPECT_TRUE(system_.registry.empty()) << "options are not saved";
  EXPECT_TRUE(system_.messageBoxes.empty());
  EXPECT_FALSE(fs::exists("level.kob"));
}

TEST_F(ExportTest, AHostThatThrowsAsAKeyIsClosedEndsTheExport) {
  for (const auto& [throwing, reason] :
       {std::pair{std::set<std::string>{"RegCloseKey"}, "RegCloseKey"},
        std::pair{std::set<std::string>{"RegCloseKey", "RegQueryValueEx"}, "RegQueryValueEx"}}) {
    system_.throwing = throwing;
    Export("level.kob");
    EXPECT_THAT(system_.debugOutput,
                EndsWith(std::string("ended by an exception: ") + reason + " failed\n"));
  }
}

TEST_F(ExportTest, ALineIsLoggedOnceAndWholeWhateverTheHostThrows) {
  system_.throwing = {"OutputDebugStringA"};
  Export("level.kob");
  EXPECT_EQ(Content("ExportDebug.txt"),
            "Could not load CXP file \n"
            "Export ended by an exception: OutputDebugStringA failed\n");
}

/// A locale that groups digits.
std::locale OddLocale() {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  return {std::locale::classic(), new Grouping};
}

TEST_F(ExportTest, WritesTheSameWhateverTheHostsLocale) {
  std::ofstream("a.cxp") << "material glass alphablend end\n";
  Store("CXP Filename", Text("a.cxp"));
  Export("plain.kob");
  const std::locale former = std::locale::global(OddLocale());
  State().debugLog.reset();
  Export("odd.kob");
  StopWatch watch;
  watch.Start();
  system_.tickCount += 1234567;
  watch.Stop();
  watch.Report("label");
  std::locale::global(former);
  EXPECT_EQ(Content("odd.kob"), Content("plain.kob"));
  EXPECT_THAT(Content("ExportDebug.txt"), EndsWith(" took 0 msec.\nlabel took 1234567 msec.\n"));
  EXPECT_TRUE(State().transparentTextures.Contains("glass"));
}

TEST_F(PluginTest, TheLogCutsLongLinesAndWorksWithoutAFile) {
  DebugLog& log = DebugLog::Instance();
  log.Open("missing/log.txt");
  EXPECT_EQ(system_.debugOutput, "Unable to open the file [missing/log.txt]\n");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  log.Open("pipe");
  EXPECT_THAT(system_.debugOutput, HasSubstr("[pipe]")) << "nobody reads it: opening would hang";
  log.Open("/dev/full");
  log.Line() << "line\n" << std::flush;
  log.Emit();
  EXPECT_THAT(system_.debugOutput, EndsWith("line\nUnable to write the file [/dev/full]\n"));
  log.Open("log.txt");
  system_.debugOutput.clear();
  log.Line() << std::string(5000, 'x') << '\n' << std::flush;
  log.Emit();
  const std::string cut = std::string(4094, 'x') + "\n";
  EXPECT_EQ(system_.debugOutput, cut);
  EXPECT_EQ(Content("log.txt"), cut);
  log.Line() << "no text: " << static_cast<const char*>(nullptr);
  StopWatch().Report("label");
  EXPECT_EQ(system_.debugOutput, cut + "label took 0 msec.\n");
}

}  // namespace
}  // namespace mapexport
