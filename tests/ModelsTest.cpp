// Foreign models through the whole program: those of Debian's package assimp-testmodels, the small
// room that tests/models says in each main format, and one cube said in several ways.

#include <regex>

#include <nlohmann/json.hpp>

#include "support/ProgramRun.h"

namespace mapexport {
namespace {

const fs::path kData = fs::path(MAPEXPORT_SOURCE_DIR) / "tests" / "models";
const fs::path kPackage = "/usr/share/assimp";

constexpr int kDone = 0;
constexpr int kListTooLong = 4;

// Under the sanitizers there is time for a sample only.
#ifdef MAPEXPORT_SHADOW_MEMORY
constexpr std::size_t kStep = 20;
#else
constexpr std::size_t kStep = 1;
#endif
constexpr std::size_t kShards = 8;

/// The rows of a table in tests/models; `#` begins a comment line.
std::vector<std::string> TableRows(const fs::path& path) {
  std::ifstream file(path);
  std::vector<std::string> rows;
  for (std::string row; std::getline(file, row);) {
    if (!row.empty() && !row.starts_with('#')) rows.push_back(row);
  }
  return rows;
}

using Refusals = std::multimap<std::string, std::string>;

/// The models of the package that a version of the import library makes us refuse, and pieces of
/// the reason: any may be in the message.
Refusals ReadRefusals(const std::string& version) {
  Refusals refusals;
  for (const std::string& row : TableRows(kData / "refusals.txt")) {
    std::istringstream cells(row);
    std::string versions, model, reason;
    for (std::string* cell : {&versions, &model, &reason}) std::getline(cells, *cell, '\t');
    if (versions == "all" || versions == version) refusals.emplace(model, reason);
  }
  return refusals;
}

/// The files of the package that count as models, by their extension, as paths within the package.
std::vector<std::string> PackageModels() {
  std::set<std::string> extensions;
  for (const std::string& row : TableRows(fs::path(MAPEXPORT_SOURCE_DIR) / "src/cli/formats.txt")) {
    extensions.insert(row.substr(0, row.find(' ')));
  }
  std::vector<std::string> models;
  if (!fs::exists(kPackage)) return models;
  for (const auto& entry : fs::recursive_directory_iterator(kPackage)) {
    std::string extension = entry.path().extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    if (entry.is_regular_file() && extensions.contains(extension)) {
      models.push_back(entry.path().lexically_relative(kPackage).string());
    }
  }
  std::ranges::sort(models);
  return models;
}

class ForeignTest : public ProgramTest {
 protected:
  Outcome ExportModel(const fs::path& model, const std::string& output) {
    return Run({"export", model, output, "--fresh", "--seed", "0", "--quiet", "--read-limit", "5"});
  }
  /// "5.2" of the import library's version.
  std::string LibraryVersion() {
    const std::string versions = Run({"--version", "--verbose"}).out;
    std::smatch match;
    std::regex_search(versions, match, std::regex("assimp (\\d+\\.\\d+)"));
    return match.empty() ? versions : match.str(1);
  }
  /// What stands in the work folder, apart from the exporter's log; forgets it.
  std::set<std::string> TakeFiles() {
    std::set<std::string> names;
    for (const std::string& name : Names(work_)) {
      names.insert(name);
      fs::remove_all(work_ / name);
    }
    names.erase("ExportDebug.txt");
    return names;
  }
};

class PackageTest : public ForeignTest, public testing::WithParamInterface<std::size_t> {
 protected:
  /// In the second layout, whose records hold those of the first.
  void ExpectExportOrRefusal(const std::string& model, const Refusals& refusals) {
    SCOPED_TRACE(model);
    const std::string output = "model.kob";
    const Outcome run = ExportModel(kPackage / model, output);
    const auto [first, last] = refusals.equal_range(model);
    if (first != last) {
      ExpectRefusal(run, "");
      EXPECT_TRUE(std::any_of(
          first, last,
          [&](const auto& row) { return run.err.find(row.second) != std::string::npos; }))
          << "listed: " << first->second;
      EXPECT_EQ(TakeFiles(), std::set<std::string>{});
      return;
    }
    EXPECT_THAT(run.status, AnyOf(kDone, kListTooLong)) << run.err;
    EXPECT_THAT(run.err, testing::Not(testing::HasSubstr("mapexport: error")));
    const Outcome inspection = Run({"inspect", "--summary", output});
    EXPECT_EQ(inspection.status, run.status) << inspection.err;
    EXPECT_EQ(TakeFiles(), std::set<std::string>{output}) << run.err;
  }
};

TEST_P(PackageTest, EveryModelIsExportedOrRefusedForTheKnownReason) {
  const std::vector<std::string> models = PackageModels();
  if (models.empty()) GTEST_SKIP() << "the package assimp-testmodels is not installed";
  const Refusals refusals = ReadRefusals(LibraryVersion());
  for (std::size_t i = GetParam() * kStep; i < models.size(); i += kShards * kStep) {
    ExpectExportOrRefusal(models[i], refusals);
  }
}

INSTANTIATE_TEST_SUITE_P(Shards, PackageTest, testing::Range<std::size_t>(0, kShards));

/// The small room in one format: the scene that the exporter sees, and what comes out.
class RoomTest : public ForeignTest, public testing::WithParamInterface<std::string> {};

TEST_P(RoomTest, SceneAndResultAreAsExpected) {
  const std::string file = "room." + GetParam();
  const Outcome scene = Run({"scene", kData / file});
  EXPECT_EQ(scene.status, kDone) << scene.err;
  EXPECT_EQ(scene.out, Content(kData / (file + ".scene.json")));
  const Outcome run = ExportModel(kData / file, "room.kob");
  EXPECT_EQ(run.status, kDone) << run.err;
  EXPECT_EQ(Run({"inspect", "--json", "room.kob"}).out, Content(kData / (file + ".expected.json")));
}

INSTANTIATE_TEST_SUITE_P(Formats, RoomTest,
                         testing::Values("3ds", "ase", "dae", "fbx", "gltf", "obj"),
                         [](const auto& format) { return "In_" + format.param; });

class CubeTest : public ForeignTest, public testing::WithParamInterface<std::string> {
 protected:
  /// Corners over all batches, and batches, of a cube.
  std::pair<std::size_t, std::size_t> CornersAndBatches(const std::string& cube) {
    EXPECT_EQ(ExportModel(kData / "cubes" / cube, "cube.qob").status, kDone) << cube;
    const std::string json = Run({"inspect", "--json", "--summary", "cube.qob"}).out;
    const auto document = nlohmann::json::parse(json, nullptr, false);
    if (document.is_discarded()) return {};
    std::size_t corners = 0;
    const auto& batches = document["groups"][0]["batches"];
    for (const auto& batch : batches) corners += batch["cornerCount"].get<std::size_t>();
    return {corners, batches.size()};
  }
};

TEST_P(CubeTest, EdgesAreAsSmoothOrHardAsTheFileSays) {
  // All faces meet in one attribute at each of the 8 points, so that nothing keeps them apart.
  EXPECT_EQ(CornersAndBatches("smooth." + GetParam()), std::pair(8UL, 1UL));
  // Each of the 6 sides has its own 4; only opposite sides have no point in common.
  EXPECT_EQ(CornersAndBatches("hard." + GetParam()), std::pair(24UL, 3UL));
}

INSTANTIATE_TEST_SUITE_P(Formats, CubeTest,
                         testing::Values("3ds", "ase", "dae", "fbx", "gltf", "groups.obj",
                                         "normals.obj", "ply"),
                         [](const auto& format) {
                           std::string name = "In_" + format.param;
                           std::ranges::replace(name, '.', '_');
                           return name;
                         });

}  // namespace
}  // namespace mapexport
