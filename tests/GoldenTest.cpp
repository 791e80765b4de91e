// Small scenes, one per feature, through the whole program: what `inspect --json` says of each
// case of tests/golden/cases.txt must equal its file there. scripts/renew-golden.sh writes these
// files anew.

#include "support/Testing.h"

namespace mapexport {
namespace {

const fs::path kGolden = fs::path(MAPEXPORT_SOURCE_DIR) / "tests" / "golden";

std::vector<std::string> CaseNames() {
  std::vector<std::string> names;
  std::ifstream cases(kGolden / "cases.txt");
  for (std::string line; std::getline(cases, line);) {
    if (line[0] != '#') names.push_back(line.substr(0, line.find(' ')));
  }
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

INSTANTIATE_TEST_SUITE_P(Cases, GoldenTest, testing::ValuesIn(CaseNames()), [](const auto& golden) {
  std::string name = golden.param;
  std::ranges::replace(name, '-', '_');
  return name;
});

}  // namespace
}  // namespace mapexport
