// Small scenes, one per feature, through the whole program: what `inspect --json` says of the
// result must equal the file that stands beside the scene. scripts/renew-golden.sh writes these
// files anew.

#include "support/Testing.h"

namespace mapexport {
namespace {

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

class GoldenTest : public testing::TestWithParam<std::string> {};

TEST_P(GoldenTest, InspectSaysWhatItSaidBefore) {
  const TempFolder folder;
  const std::string command = "'" MAPEXPORT_SOURCE_DIR "/scripts/golden-one.sh' '" MAPEXPORT_BIN_DIR
                              "/mapexport' '" +
                              GetParam() + "' '" + folder.Path().string() + "' > '" +
                              (folder.Path() / "json").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  const std::string expected = Content(kGolden / (GetParam() + ".expected.json"));
  EXPECT_FALSE(expected.empty());
  EXPECT_EQ(Content(folder.Path() / "json"), expected);
}

INSTANTIATE_TEST_SUITE_P(Scenes, GoldenTest, testing::ValuesIn(SceneNames()),
                         [](const auto& scene) {
                           std::string name = scene.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace mapexport
