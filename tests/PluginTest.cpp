// The plug-in as its host meets it: entry points, options and dialog.

#include <cstdio>
#include <regex>

#include <dlfcn.h>
#include <unistd.h>

#include "exporter/geometry/FaceFlags.h"
#include "exporter/plugin/BrowseForFile.h"
#include "exporter/plugin/EntryPoints.h"
#include "exporter/plugin/OptionsDialog.h"
#include "exporter/plugin/OptionsStore.h"
#include "exporter/plugin/ResourceIds.h"
#include "exporter/plugin/RunExport.h"
#include "scene/HostScene.h"
#include "support/LoadedPlugin.h"
#include "system/FaceKeywords.h"

namespace mapexport {
namespace {

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
  EXPECT_TRUE(descriptor.OkToCreate(nullptr));
  EXPECT_FALSE(descriptor.HasClassParams());
  EXPECT_STREQ(descriptor.ClassName(), "OsprinMapExport");
  EXPECT_STREQ(descriptor.Category(), "Map Export");
  const std::unique_ptr<SceneExport> created(static_cast<SceneExport*>(descriptor.Create(false)));
  EXPECT_EQ(created->ExtCount(), 2);
  EXPECT_EQ(created->Version(), 100u);
  EXPECT_STREQ(created->AuthorName(), "Osprin tools group");
  EXPECT_STREQ(created->CopyrightMessage(), "All rights reserved by their owners.");
  const char* longDesc = exporter_.LongDesc();
  EXPECT_STREQ(longDesc, "Osprin MAX Map Export File");
  exporter_.ShortDesc();
  EXPECT_STREQ(longDesc, "Osprin Map Export File") << "one buffer for all texts";
  for (const auto& [index, extension] : {std::pair(0, "qob"), {1, "kob"}, {2, ""}, {-1, ""}}) {
    EXPECT_STREQ(exporter_.Ext(index), extension);
  }
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
  for (const char* const failing : {"GetTickCount", "InitCustomControls"}) {
    SCOPED_TRACE(failing);
    system_.throwing = {failing};
    void* const library = dlopen(MAPEXPORT_BIN_DIR "/mapexport-plugin.so", RTLD_NOW | RTLD_LOCAL);
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

TEST(FaceFlags, AreThoseOfTheWordsBetweenTabsAndLineEnds) {
  std::mt19937 random(5);
  const std::array<std::string, 6> others{"\t", "\r", "\n", "\r\n", " ", "3d"};
  for (int round = 0; round < 2000; ++round) {
    Scene scene;
    std::string& text = scene.root.userProperties;
    for (auto count = random() % 12; count > 0; --count) {
      const std::size_t piece = random() % (others.size() + kFaceKeywords.size());
      text += piece < others.size() ? others[piece] : kFaceKeywords[piece - others.size()];
    }
    std::uint32_t expected = 0;
    std::istringstream lines(std::regex_replace(text, std::regex("[\t\r]"), "\n"));
    for (std::string word; std::getline(lines, word);) {
      for (const FaceFlagKeyword& flag : kFaceFlagKeywords) {
        if (word == flag.keyword) expected |= flag.bit;
      }
    }
    const HostScene host(scene);
    ASSERT_EQ(FaceFlagsOf(host.GetRootNode()), expected) << testing::PrintToString(text);
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

}  // namespace
}  // namespace mapexport
