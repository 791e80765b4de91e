// Small scenes, one per feature, through the whole program: what `inspect --json` says of the
// result must equal the file that stands beside the scene. scripts/renew-golden.sh writes these
// files anew.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mapexport {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = fs::path(MAPEXPORT_SOURCE_DIR) / "tests" / "golden";

std::vector<std::string> SceneNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(kGolden)) {
    const std::string file = entry.path().filename().string();
    if (file.ends_with(".scene.json")) names.push_back(file.substr(0, file.size() - 11));
  }
  std::ranges::sort(names);
  return names;
}

std::string FileText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(GoldenFolder, HoldsScenes) {
  EXPECT_FALSE(SceneNames().empty());
}

class GoldenTest : public testing::TestWithParam<std::string> {};

TEST_P(GoldenTest, InspectSaysWhatItSaidBefore) {
  const fs::path folder =
      fs::path(testing::TempDir()) / ("golden-" + std::to_string(getpid()) + "-" + GetParam());
  fs::create_directories(folder);
  const std::string command = "'" +
                              (fs::path(MAPEXPORT_SOURCE_DIR) / "scripts/golden-one.sh").string() +
                              "' '" MAPEXPORT_BIN_DIR "/mapexport' '" + GetParam() + "' '" +
                              folder.string() + "' > '" + (folder / "json").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  const std::string expected = FileText(kGolden / (GetParam() + ".expected.json"));
  EXPECT_FALSE(expected.empty());
  EXPECT_EQ(FileText(folder / "json"), expected);
  fs::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(Scenes, GoldenTest, testing::ValuesIn(SceneNames()),
                         [](const auto& scene) {
                           std::string name = scene.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace mapexport
