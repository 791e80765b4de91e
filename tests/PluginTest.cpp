// The plug-in as its host meets it: entry points, options and dialog, the export run, log and
// failures.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "exporter/base/NumberText.h"
#include "exporter/base/PathString.h"
#include "exporter/base/ProcessState.h"
#include "exporter/base/StopWatch.h"
#include "exporter/geometry/FaceFlags.h"
#include "exporter/geometry/GatherMesh.h"
#include "exporter/plugin/BrowseForFile.h"
#include "exporter/plugin/EntryPoints.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/MapExporter.h"
#include "exporter/plugin/OptionsDialog.h"
#include "exporter/plugin/OptionsStore.h"
#include "exporter/plugin/ResourceIds.h"
#include "exporter/plugin/Resources.h"
#include "exporter/plugin/RunExport.h"
#include "scene/HostScene.h"
#include "support/FailingAllocations.h"
#include "support/TestSystem.h"
#include "system/FaceKeywords.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kKey = R"(Software\Corvantis\Talvern\Exporter)";

std::string FileText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TestSystem::Value Text(const std::string& text) {
  return {RegistryType::kText, text + '\0'};
}

/// Everything starts from a freshly loaded library, in an empty folder.
class PluginTest : public testing::Test {
 protected:
  PluginTest() {
    State().options = ExportOptions();
    folder_ = fs::path(testing::TempDir()) /
              ("plugin-" + std::to_string(getpid()) + "-" +
               testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(folder_);
    fs::current_path(folder_);
    LibraryEntry(AttachModule(kResources));
  }
  ~PluginTest() override {
    DetachModule(State().module);
    fs::current_path("/");
    fs::remove_all(folder_);
  }

  void Store(const char* name, TestSystem::Value value) {
    system_.registry[{kKey, name}] = std::move(value);
  }
  std::string Stored(const char* name) { return system_.registry[{kKey, name}].bytes; }

  TestSystem system_;
  MapExporter exporter_;
  fs::path folder_;
};

TEST_F(PluginTest, TellsTheHostWhatItIs) {
  const int inits = system_.customControlsInits;
  EXPECT_TRUE(LibraryEntry(State().module));
  EXPECT_EQ(system_.customControlsInits, inits) << "controls are made available once";
  EXPECT_STREQ(LibDescription(), ".MAP Osprin Max File Export DLL - Version 1.0");
  EXPECT_EQ(LibNumberClasses(), 1);
  EXPECT_EQ(LibVersion(), 0x9C40500u);
  EXPECT_EQ(LibClassDesc(1), nullptr);
  EXPECT_EQ(LibClassDesc(-1), nullptr);
  ClassDesc& descriptor = *LibClassDesc(0);
  EXPECT_EQ(descriptor.SuperClassID(), 0xA20u);
  EXPECT_EQ(descriptor.ClassID(), (Class_ID{0x12B50709, 0x1DC2636B}));
  EXPECT_EQ(descriptor.IsPublic(), 1);
  EXPECT_EQ(descriptor.BeginCreate(nullptr) + descriptor.EndCreate(nullptr), 0);
  EXPECT_STREQ(descriptor.ClassName(), "OsprinMapExport");
  EXPECT_STREQ(descriptor.Category(), "Map Export");
  EXPECT_TRUE(descriptor.OkToCreate(nullptr));
  EXPECT_FALSE(descriptor.HasClassParams());
  EXPECT_EQ(descriptor.Reserved13() | descriptor.Reserved14(1) | descriptor.Reserved15(1), 0);
  const std::unique_ptr<SceneExport> created(static_cast<SceneExport*>(descriptor.Create(false)));
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(created->ExtCount(), 2);
  EXPECT_EQ(created->Version(), 100u);
  EXPECT_STREQ(created->AuthorName(), "Osprin tools group");
  EXPECT_STREQ(created->CopyrightMessage(), "All rights reserved by their owners.");
  EXPECT_STREQ(created->OtherMessage1(), "");
  EXPECT_STREQ(created->OtherMessage2(), "");
  const char* longDesc = exporter_.LongDesc();
  EXPECT_STREQ(longDesc, "Osprin MAX Map Export File");
  exporter_.ShortDesc();
  EXPECT_STREQ(longDesc, "Osprin Map Export File") << "one buffer for all texts";
  EXPECT_STREQ(exporter_.Ext(0), "qob");
  EXPECT_STREQ(exporter_.Ext(1), "kob");
  EXPECT_STREQ(exporter_.Ext(2), "");
  EXPECT_STREQ(exporter_.Ext(-1), "");
  EXPECT_EQ(GetResourceString(1), nullptr);
}

TEST(PluginLibrary, ShowsNothingButItsFourFunctions) {
  const std::string command = std::string("nm -D --defined-only --format=posix '") +
                              MAPEXPORT_BIN_DIR + "/mapexport-plugin.so'";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::vector<std::string> names;
  char line[4096];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::istringstream(line) >> names.emplace_back();
  }
  ASSERT_EQ(pclose(pipe), 0);
  EXPECT_THAT(names, testing::UnorderedElementsAre("LibDescription", "LibNumberClasses",
                                                   "LibClassDesc", "LibVersion"));
}

TEST_F(PluginTest, ALibraryThatCannotBeSetUpIsLoadedAndHasNoClass) {
  const int inits = system_.customControlsInits;
  for (const char* const failing : {"memory", "GetTickCount", "InitCustomControls"}) {
    SCOPED_TRACE(failing);
    system_.throwing = {failing};
    failing_allocations::left = std::string_view(failing) == "memory" ? 0 : -1;
    void* const library = dlopen(MAPEXPORT_BIN_DIR "/mapexport-plugin.so", RTLD_NOW | RTLD_LOCAL);
    failing_allocations::left = -1;
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(reinterpret_cast<int (*)()>(dlsym(library, "LibNumberClasses"))(), 0);
    EXPECT_EQ(reinterpret_cast<const char* (*)()>(dlsym(library, "LibDescription"))(), nullptr);
    system_.throwing.clear();
    ASSERT_EQ(dlclose(library), 0);
    EXPECT_EQ(system_.customControlsInits, inits) << "made available as the library went away";
  }
}

TEST_F(PluginTest, AnEmptyRegistryKeepsTheInitialValuesAndIsFilledBySaving) {
  const SettingsKey settings(RegistryRoot::kLocalMachine);
  LoadOptions(settings);
  EXPECT_EQ(State().options.weldingDistance, 0.2f);
  EXPECT_TRUE(State().options.weldVertices);
  EXPECT_EQ(State().options.cxpFilename, "");
  EXPECT_TRUE(system_.registry.empty());
  State().options.coordinateSystem = 2;
  SaveOptions(settings);
  EXPECT_EQ(system_.registry.size(), 12u);
  EXPECT_EQ(Stored("Welding Distance"), std::string("0.200000\0", 9));
  EXPECT_EQ(Stored("Weld Vertices?"), std::string("TRUE\0", 5));
  EXPECT_EQ(Stored("Export Coordinates"), std::string("\2\0\0\0", 4));
  EXPECT_EQ(system_.OpenKeys(), 0u);
}

TEST_F(PluginTest, ARegistryThatTakesDefaultsStoresThemAllAndTheOptionsFollow) {
  system_.registryEnforcesAccess = false;
  LoadOptions(SettingsKey(RegistryRoot::kLocalMachine));
  const std::pair<const char*, const char*> texts[] = {
      {"Welding Distance", "0.100000"},
      {"T-Vertex Distance", "10.000000"},
      {"Weld Vertices?", "FALSE"},
      {"Remove t-vertices?", "FALSE"},
      {"Snap Distance", "1.000000"},
      {"Lighting Multiplier", "1.000000"},
      {"Geometry Voxel Size", "1000.000000"},
      {"Snap To Grid?", "FALSE"},
      {"Clean vertex attributes?", "FALSE"},
      {"CXP Filename", "C:\\Develop\\Osprin\\release\\data\\textures\\osprin.cxp"}};
  for (const auto& [name, text] : texts) EXPECT_EQ(Stored(name), std::string(text) + '\0') << name;
  EXPECT_EQ(Stored("Export Coordinates"), std::string(4, '\0'));
  EXPECT_EQ(Stored("Export Texture Coordinates"), std::string(4, '\0'));
  EXPECT_EQ(system_.registry.size(), 12u);
  const ExportOptions& options = State().options;
  EXPECT_EQ(options.weldingDistance, 0.1f);
  EXPECT_EQ(options.tVertexDistance, 10.0f);
  EXPECT_FALSE(options.weldVertices || options.cleanVertexAttributes);
  EXPECT_EQ(options.cxpFilename.View(), texts[9].second);
}

TEST_F(PluginTest, StoredValuesAreReadByTheirEncodings) {
  Store("Weld Vertices?", Text("false"));
  Store("Clean vertex attributes?", Text("no"));
  Store("Welding Distance", Text("abc"));
  Store("Geometry Voxel Size", Text("  25.5 units"));
  Store("Snap Distance", Text(std::string(255, ' ') + "3"));
  Store("Export Coordinates", {RegistryType::kNumber, std::string("\7\0\0\0", 4)});
  Store("CXP Filename", Text("C:\\a.cxp"));
  const SettingsKey settings(RegistryRoot::kLocalMachine);
  LoadOptions(settings);
  const ExportOptions& options = State().options;
  EXPECT_FALSE(options.weldVertices);
  EXPECT_TRUE(options.cleanVertexAttributes);
  EXPECT_EQ(options.weldingDistance, 0.0f);
  EXPECT_EQ(options.geometryVoxelSize, 25.5f);
  EXPECT_EQ(options.snapDistance, 1.0f) << "more than 256 bytes count as missing";
  EXPECT_EQ(options.coordinateSystem, 7);
  EXPECT_EQ(options.cxpFilename, "C:\\a.cxp");
  system_.registryOpens = false;
  LoadOptions(settings);
  EXPECT_EQ(options.coordinateSystem, 7);
  EXPECT_EQ(options.cxpFilename, "");
}

TEST(NumberText, IsTheSameInEveryLocale) {
  const struct {
    const char* text;
    double value;
  } numbers[] = {
      {"", 0},           {"abc", 0},    {"-1.5e2x", -150},
      {" \t+7", 7},      {".5", 0.5},   {"5.", 5},
      {".", 0},          {"-", 0},      {"Inf", 0},
      {"infinity", 0},   {"nano", 0},   {"1.#INF00", 1},
      {"0x10", 0},       {"1,5", 1},    {"- 3", 0},
      {"1e-9999999", 0}, {"1e-400", 0}, {"3e5000", std::numeric_limits<double>::infinity()}};
  for (const auto& number : numbers)
    EXPECT_EQ(LeadingNumber(number.text), number.value) << number.text;
  EXPECT_EQ(LeadingInteger(" -12abc"), -12);
  EXPECT_EQ(LeadingInteger("99999999999999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(LeadingInteger("-99999999999"), std::numeric_limits<int>::min());
  EXPECT_EQ(LeadingInteger("x1"), 0);
  EXPECT_EQ(FormatFloat(-0.0f), "-0.000000");
  EXPECT_EQ(FormatFloat(3.4028235e38f), "340282346638528859811704183484516925440.000000");
}

TEST_F(PluginTest, WhatIsNoFiniteNumberIsReadBackAsItWasWritten) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  ExportOptions& options = State().options;
  const SettingsKey settings(RegistryRoot::kLocalMachine);
  for (const float value : {kInfinity, -kInfinity, kNaN, -kNaN, -0.0f, 3.4028235e38f}) {
    SCOPED_TRACE(value);
    options.weldingDistance = options.geometryVoxelSize = value;
    SaveOptions(settings);
    options = ExportOptions();
    LoadOptions(settings);
    const auto bits = std::bit_cast<std::uint32_t>(value);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(options.weldingDistance), bits);
    OptionsDialogProc(nullptr, WM_INITDIALOG, 0, 0);
    options.geometryVoxelSize = 1.0f;
    OptionsDialogProc(nullptr, WM_COMMAND, MakeCommand(IDOK, BN_CLICKED), 0);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(options.geometryVoxelSize), bits) << "in the dialog";
  }
}

TEST_F(PluginTest, TheControlsOfTheDialogNeitherOverlapNorLeaveIt) {
  const DialogTemplate* dialog = FindDialog(State().module, 102);
  ASSERT_NE(dialog, nullptr);
  EXPECT_STREQ(dialog->title, "MAP Export Options");
  for (const DialogControl& a : dialog->controls) {
    EXPECT_TRUE(a.x + a.width <= dialog->width && a.y + a.height <= dialog->height) << a.id;
    for (const DialogControl& b : dialog->controls) {
      const bool apart = a.x + a.width <= b.x || b.x + b.width <= a.x || a.y + a.height <= b.y ||
                         b.y + b.height <= a.y;
      EXPECT_TRUE(&a == &b || apart) << a.id << " and " << b.id;
    }
  }
}

/// Shows the dialog through a run that ends with it.
class DialogTest : public PluginTest {
 protected:
  bool Show(int button, std::function<void(HWND, DialogProc*)> person = {}) {
    system_.dialogButton = button;
    system_.beforeButton = std::move(person);
    HostScene host(scene_);
    State().currentInterface = &host;
    return RunExport(PathString("out.kob"), host.GetRootNode(), 0);
  }
  void Click(HWND dialog, DialogProc* proc, int id) {
    system_.controls[id].checked = !system_.controls[id].checked;
    proc(dialog, WM_COMMAND, MakeCommand(id, BN_CLICKED), 0);
  }

  Scene scene_;
};

TEST_F(DialogTest, OpensWithTheOptionsAndTakesTheEditsOnOk) {
  State().options.cxpFilename = "a.cxp";
  State().options.textureCoordinateMode = 2;
  State().options.talvernLightFormat = true;
  Show(IDOK, [&](HWND, DialogProc* proc) {
    auto& controls = system_.controls;
    EXPECT_EQ(controls[kWeldDistanceEdit].text, "0.200000");
    EXPECT_EQ(controls[kVoxelSizeEdit].text, "1000.000000");
    EXPECT_EQ(controls[kCxpFilenameEdit].text, "a.cxp");
    EXPECT_TRUE(controls[kWeldVerticesBox].checked);
    EXPECT_TRUE(controls[kCleanAttributesBox].checked);
    EXPECT_FALSE(controls[kTalvernLightFormatBox].checked);
    EXPECT_THAT(controls[kCoordinateSystemList].rows,
                ElementsAre("Left-handed ( talvern )", "Right-handed", "3D Studio Max",
                            "Inverse 3D Studio Max"));
    EXPECT_THAT(controls[kTextureCoordinatesList].rows,
                ElementsAre("Invert Y ( talvern )", "Invert X", "Invert X & Y", "3D Studio Max"));
    EXPECT_EQ(controls[kTextureCoordinatesList].selection, 2);
    EXPECT_FALSE(proc(nullptr, 0x1234, 0, 0));
    controls[kWeldDistanceEdit].text = "1.5";
    controls[kMinTriangleAreaEdit].text = "2";
    controls[kSnapDimensionEdit].text = "3";
    controls[kLightingMultiplierEdit].text = "4";
    controls[kVoxelSizeEdit].text = "abc";
    controls[kCoordinateSystemList].selection = 3;
    proc(nullptr, WM_COMMAND, MakeCommand(kCoordinateSystemList, LBN_SELCHANGE), 0);
  });
  const ExportOptions& options = State().options;
  EXPECT_EQ(options.weldingDistance, 1.5f);
  EXPECT_EQ(options.tVertexDistance, 2.0f);
  EXPECT_EQ(options.snapDistance, 3.0f);
  EXPECT_EQ(options.lightingMultiplier, 4.0f);
  EXPECT_EQ(options.geometryVoxelSize, 0.0f);
  EXPECT_EQ(options.coordinateSystem, 3);
}

TEST_F(DialogTest, ClicksTakeEffectAtOnceAndOutliveCancel) {
  system_.pickedFile = "/new.cxp";
  const bool run = Show(IDCANCEL, [&](HWND dialog, DialogProc* proc) {
    Click(dialog, proc, kWeldVerticesBox);
    EXPECT_FALSE(State().options.weldVertices);
    Click(dialog, proc, kRemoveTVerticesBox);
    EXPECT_TRUE(State().options.weldVertices);
    EXPECT_TRUE(system_.controls[kWeldVerticesBox].checked);
    Click(dialog, proc, kWeldVerticesBox);
    EXPECT_TRUE(State().options.weldVertices) << "welding stays on with Remove T-Vertices";
    EXPECT_TRUE(system_.controls[kWeldVerticesBox].checked);
    Click(dialog, proc, kSnapToGridBox);
    Click(dialog, proc, kCleanAttributesBox);
    Click(dialog, proc, kTalvernLightFormatBox);
    proc(dialog, WM_COMMAND, MakeCommand(kBrowseButton, BN_CLICKED), 0);
    EXPECT_EQ(system_.controls[kCxpFilenameEdit].text, "/new.cxp");
    system_.controls[kWeldDistanceEdit].text = "9";
  });
  EXPECT_FALSE(run);
  EXPECT_FALSE(fs::exists("out.kob"));
  const ExportOptions& options = State().options;
  EXPECT_TRUE(options.removeTVertices && options.snapToGrid && options.talvernLightFormat);
  EXPECT_FALSE(options.cleanVertexAttributes);
  EXPECT_EQ(options.cxpFilename, "/new.cxp");
  EXPECT_EQ(options.weldingDistance, 0.2f) << "edits wait for OK";
}

/// What the box is asked for with two extensions: two texts and the empty one that ends them.
const std::string kFilter = std::string("(.cxp,.txt)") + '\0' + "*.cxp;*.txt" + '\0' + '\0';

/// Keeps what the file box is asked for.
class FilterSystem : public TestSystem {
 public:
  bool GetOpenFileName(OpenFileName& request) override {
    filter.assign(request.filter, kFilter.size());
    maxFile = request.maxFile;
    return TestSystem::GetOpenFileName(request);
  }
  std::string filter;
  std::uint32_t maxFile = 0;
};

TEST(FaceFlags, AreTheKeywordsThatTheProgramKnows) {
  static_assert(kFaceFlagKeywords.size() == kFaceKeywords.size());
  for (const FaceFlagKeyword& flag : kFaceFlagKeywords) {
    const auto place = static_cast<std::size_t>(std::countr_zero(flag.bit));
    EXPECT_EQ(flag.keyword, kFaceKeywords.at(place));
  }
}

TEST(BrowseForFile, BuildsTheFilterFromTheExtensions) {
  FilterSystem system;
  const char* const extensions[] = {"cxp", "txt"};
  EXPECT_FALSE(BrowseForFile(nullptr, extensions, nullptr));
  EXPECT_EQ(system.filter, kFilter);
  EXPECT_EQ(system.maxFile, 255u);
  system.pickedFile = "x.cxp";
  EXPECT_EQ(BrowseForFile(nullptr, extensions, nullptr)->View(), "x.cxp");
}

TEST(PathString, CutsTheExtensionAtTheLastDotOfTheWholePath) {
  const auto extension = [](const char* path) {
    return std::string(PathString(path).Extension().Text());
  };
  EXPECT_EQ(extension("level"), "");
  EXPECT_EQ(extension("level."), "");
  EXPECT_EQ(extension("C:\\maps.v2\\level"), "v2\\level");
  EXPECT_EQ(extension("a.b.QOB"), "QOB");
}

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
  EXPECT_EQ(FileText("ExportDebug.txt"),
            "Could not load CXP file \n"
            "\t\tWeldVertices() took 0 msec.\n"
            "\t\tCleanVertexAttributes() took 0 msec.\n"
            "\t\tPostProcessing() took 0 msec.\n"
            "\t\tTotal PostProcessing() took 0 msec.\n");
  EXPECT_THAT(system_.cursors,
              ElementsAre(system_.LoadCursor(nullptr, 104), system_.LoadCursor(nullptr, 109),
                          system_.LoadCursor(nullptr, IDC_WAIT)));
  EXPECT_EQ(system_.registry.size(), 12u);
  EXPECT_THAT(FileText("level.map"), StartsWith(std::string("\x0b\0\0\0BeginModel\0", 15)));
}

TEST_F(ExportTest, WithoutWeldingThereIsNeitherBoxNorLine) {
  State().options.weldVertices = false;
  State().options.cleanVertexAttributes = false;
  Export("level.kob");
  EXPECT_THAT(BoxTitles(), ElementsAre("Text Scene Export"));
  EXPECT_THAT(FileText("ExportDebug.txt"), testing::Not(HasSubstr("Vert")));
}

TEST_F(ExportTest, TheExtensionChoosesTheLayout) {
  Export("a.QOB");
  Export("b.kob");
  const std::string qob = FileText("a.QOB");
  const std::string kob = FileText("b.kob");
  const std::string header("\x08\0\0\0Version\0", 12);
  EXPECT_THAT(kob, HasSubstr(std::string("\x23\0\0\0", 4) + header));
  EXPECT_THAT(qob, testing::Not(HasSubstr(std::string("\x23\0\0\0", 4) + header)));
  fs::create_directories("maps.v2");
  Export("maps.v2/level");
  EXPECT_EQ(FileText("maps.v2/level"), kob);
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
  EXPECT_EQ(FileText("ExportDebug.txt"), "Export ended by an exception: the window is gone\n");
  FailingHost<NoStandardException> other(scene_);
  EXPECT_EQ(exporter_.DoExport("level.kob", nullptr, &other, false), 1);
  EXPECT_THAT(FileText("ExportDebug.txt"), StartsWith("Export ended by an exception"));
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
  EXPECT_EQ(FileText("ExportDebug.txt"),
            "Could not load CXP file \n"
            "Export ended by an exception: OutputDebugStringA failed\n");
  system_.throwing.clear();
  DebugLog& log = DebugLog::Instance();
  log.Open("missing/log.txt");
  EXPECT_EQ(system_.debugOutput, "Unable to open the file [missing/log.txt]\n");

  log.Line() << "no text: " << static_cast<const char*>(nullptr);
  StopWatch().Report("label");
  EXPECT_THAT(system_.debugOutput, EndsWith("]\nlabel took 0 msec.\n"));
}

/// A node that has no name when it is asked again.
class ForgetfulNode : public INode {
 public:
  const char* GetName() const override { throw std::runtime_error("the name is gone"); }
  int NumberOfChildren() const override { return 0; }
  INode* GetChildNode(int) const override { return nullptr; }
  Object* EvalWorldState(TimeValue, bool) override { return nullptr; }
  Matrix3 GetObjectTM(TimeValue) const override { return {}; }
  Mtl* GetMtl() const override { return nullptr; }
  void GetUserPropBuffer(CStr&) const override {}
  std::uint32_t GetWireColor() const override { return 0; }
};

TEST_F(PluginTest, ANodeThatThrowsLeavesNoHalfALineInTheLog) {
  Mesh mesh;
  mesh.verts.resize(3);
  mesh.faces.resize(1);
  GroupList list;
  GeometryGroup group;
  ForgetfulNode node;
  DebugLog& log = DebugLog::Instance();
  log.Open("missing/log.txt");
  system_.debugOutput.clear();
  MaterialsList materials;
  const GatherContext context{0, 0, 0, State().transparentTextures, materials};
  EXPECT_THROW(GatherMesh(list, group, node, mesh, context), std::runtime_error);
  log.Emit();
  EXPECT_EQ(system_.debugOutput, "");
}

/// A locale that groups digits and writes every character as "?".
std::locale OddLocale() {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  struct Converting : std::codecvt<char, char, std::mbstate_t> {
    bool do_always_noconv() const noexcept override { return false; }
    result do_out(std::mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext,
                  char* to, char* toEnd, char*& toNext) const override {
      for (; from != fromEnd && to != toEnd; ++from) *to++ = '?';
      fromNext = from;
      toNext = to;
      return from == fromEnd ? ok : partial;
    }
    result do_in(std::mbstate_t& state, const char* from, const char* fromEnd,
                 const char*& fromNext, char* to, char* toEnd, char*& toNext) const override {
      return do_out(state, from, fromEnd, fromNext, to, toEnd, toNext);
    }
  };
  return {std::locale(std::locale::classic(), new Grouping), new Converting};
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
  EXPECT_EQ(FileText("odd.kob"), FileText("plain.kob"));
  EXPECT_THAT(FileText("ExportDebug.txt"), EndsWith(" took 0 msec.\nlabel took 1234567 msec.\n"));
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
  EXPECT_EQ(FileText("log.txt"), cut);
  StopWatch().Report("label");
  EXPECT_EQ(system_.debugOutput, cut + "label took 0 msec.\n");
}

}  // namespace
}  // namespace mapexport
