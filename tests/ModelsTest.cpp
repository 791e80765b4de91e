// Foreign models through the whole program: those of Debian's package assimp-testmodels, the small
// room that tests/models says in each main format, and one cube said in several ways.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;

const fs::path kData = fs::path(MAPEXPORT_SOURCE_DIR) / "tests" / "models";
const fs::path kPackage = "/usr/share/assimp";

constexpr int kDone = 0;
constexpr int kRefused = 1;
constexpr int kListTooLong = 4;

// Under the sanitizers there is time for a sample only.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t kStep = 20;
#else
constexpr std::size_t kStep = 1;
#endif
constexpr std::size_t kShards = 8;

std::string FileText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

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

/// The models of the package that are refused, and pieces of the reason: any may be in the message.
Refusals ReadRefusals() {
  Refusals refusals;
  for (const std::string& row : TableRows(kData / "refusals.txt")) {
    const std::size_t tab = std::min(row.find('\t'), row.size() - 1);
    refusals.emplace(row.substr(0, tab), row.substr(tab + 1));
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

std::string Quoted(const fs::path& path) {
  return "'" + path.string() + "'";
}

/// A folder in which the program runs and that is gone afterwards.
class ProgramFolder {
 public:
  struct Run {
    int status = -1;  ///< -1: it was ended by a signal
    std::string output, errors;

    std::size_t ErrorLines() const {
      std::istringstream lines(errors);
      std::size_t count = 0;
      for (std::string line; std::getline(lines, line);) {
        count += line.starts_with("mapexport: error");
      }
      return count;
    }
  };

  explicit ProgramFolder(const std::string& name)
      : folder_(fs::path(testing::TempDir()) /
                ("models-" + std::to_string(getpid()) + "-" + name)) {
    fs::create_directories(Inside());
  }
  ~ProgramFolder() { fs::remove_all(folder_); }
  ProgramFolder(const ProgramFolder&) = delete;
  ProgramFolder& operator=(const ProgramFolder&) = delete;

  Run Call(const std::string& arguments) const {
    const std::string command = "cd " + Quoted(Inside()) +
                                " && exec '" MAPEXPORT_BIN_DIR "/mapexport' " + arguments + " >" +
                                Quoted(folder_ / "output") + " 2>" + Quoted(folder_ / "errors");
    const int end = std::system(command.c_str());
    return {WIFEXITED(end) && WEXITSTATUS(end) < 128 ? WEXITSTATUS(end) : -1,
            FileText(folder_ / "output"), FileText(folder_ / "errors")};
  }

  Run Export(const fs::path& model, const std::string& output) const {
    return Call("export " + Quoted(model) + " " + output +
                " --fresh --seed 0 --quiet --read-limit 5");
  }

  /// What stands in it, apart from the exporter's log; forgets it.
  std::set<std::string> TakeFiles() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(Inside())) {
      names.insert(entry.path().filename().string());
    }
    for (const std::string& name : names) fs::remove_all(Inside() / name);
    names.erase("ExportDebug.txt");
    return names;
  }

 private:
  fs::path Inside() const { return folder_ / "inside"; }

  fs::path folder_;
};

class PackageTest : public testing::TestWithParam<std::size_t> {};

void ExpectExportOrRefusal(const ProgramFolder& folder, const std::string& model,
                           const std::string& output, const Refusals& refusals) {
  SCOPED_TRACE(model + " to " + output);
  const auto run = folder.Export(kPackage / model, output);
  const auto [first, last] = refusals.equal_range(model);
  if (first != last) {
    EXPECT_EQ(run.status, kRefused) << "listed in refusals.txt; " << run.errors;
    EXPECT_EQ(run.ErrorLines(), 1U) << run.errors;
    EXPECT_TRUE(std::any_of(
        first, last,
        [&](const auto& row) { return run.errors.find(row.second) != std::string::npos; }))
        << "listed: " << first->second << "\n"
        << run.errors;
    EXPECT_EQ(folder.TakeFiles(), std::set<std::string>{});
    return;
  }
  EXPECT_THAT(run.status, AnyOf(kDone, kListTooLong)) << run.errors;
  EXPECT_EQ(run.ErrorLines(), 0U) << run.errors;
  const auto inspection = folder.Call("inspect --summary " + output);
  EXPECT_EQ(inspection.status, run.status) << inspection.errors;
  EXPECT_EQ(folder.TakeFiles(), std::set<std::string>{output}) << run.errors;
}

TEST_P(PackageTest, EveryModelIsExportedOrRefusedForTheKnownReason) {
  const std::vector<std::string> models = PackageModels();
  if (models.empty()) GTEST_SKIP() << "the package assimp-testmodels is not installed";
  const Refusals refusals = ReadRefusals();
  const ProgramFolder folder("package-" + std::to_string(GetParam()));
  for (std::size_t i = GetParam() * kStep; i < models.size(); i += kShards * kStep) {
    ExpectExportOrRefusal(folder, models[i], "model.qob", refusals);
    ExpectExportOrRefusal(folder, models[i], "model.kob", refusals);
  }
}

INSTANTIATE_TEST_SUITE_P(Shards, PackageTest, testing::Range<std::size_t>(0, kShards));

TEST(RefusalsTest, EveryRowIsOfAModelAndHasAReason) {
  const std::vector<std::string> models = PackageModels();
  if (models.empty()) GTEST_SKIP() << "the package assimp-testmodels is not installed";
  for (const auto& [model, reason] : ReadRefusals()) {
    EXPECT_TRUE(std::ranges::binary_search(models, model)) << model;
    EXPECT_GT(reason.size(), 8U) << model;
  }
}

/// The small room in one format: the scene that the exporter sees, and what comes out.
class RoomTest : public testing::TestWithParam<std::string> {};

TEST_P(RoomTest, SceneAndResultAreAsExpected) {
  const ProgramFolder folder("room-" + GetParam());
  const std::string file = "room." + GetParam();
  const auto scene = folder.Call("scene " + Quoted(kData / file));
  EXPECT_EQ(scene.status, kDone) << scene.errors;
  EXPECT_EQ(scene.output, FileText(kData / (file + ".scene.json")));
  const auto run = folder.Export(kData / file, "room.kob");
  EXPECT_EQ(run.status, kDone) << run.errors;
  const auto inspection = folder.Call("inspect --json room.kob");
  EXPECT_EQ(inspection.output, FileText(kData / (file + ".expected.json")));
}

INSTANTIATE_TEST_SUITE_P(Formats, RoomTest,
                         testing::Values("3ds", "ase", "dae", "fbx", "gltf", "obj"),
                         [](const auto& format) { return "In_" + format.param; });

class CubeTest : public testing::TestWithParam<std::string> {};

/// Corners over all batches, and batches, of a cube.
std::pair<std::size_t, std::size_t> CornersAndBatches(const std::string& cube) {
  const ProgramFolder folder("cube-" + cube);
  EXPECT_EQ(folder.Export(kData / "cubes" / cube, "cube.qob").status, kDone) << cube;
  const auto inspection = folder.Call("inspect --json --summary cube.qob");
  const auto document = nlohmann::json::parse(inspection.output, nullptr, false);
  std::size_t corners = 0;
  if (document.is_discarded()) return {};
  const auto& batches = document["groups"][0]["batches"];
  for (const auto& batch : batches) corners += batch["cornerCount"].get<std::size_t>();
  return {corners, batches.size()};
}

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
