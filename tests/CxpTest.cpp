// The CXP database: what its entries mean, where reading stops, and files that can't be read.

#include <sys/stat.h>

#include "exporter/base/ProcessState.h"
#include "exporter/materials/LoadCxp.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

using Names = std::vector<std::string>;

Names Listed(const TextureNames& list) {
  Names names;
  for (std::size_t i = 0; i < list.Count(); ++i) names.emplace_back(list[i]);
  return names;
}

Names NamesOf(const std::string& text) {
  std::istringstream input(text);
  TextureNames list;
  ReadCxp(input, list);
  return Listed(list);
}

TEST(Cxp, ListsTheTransparentTexturesOfItsEntries) {
  const struct {
    const char* text;
    Names names;
  } cases[] = {
      {"", {}},
      {"only words, no entry\n", {}},
      {"material C:\\Textures\\Glass.BMP\nalphablend\nend\n", {"glass"}},
      {"SURFACE a ColorKey 1 2 3 END Material b ALPHABLEND end\n", {"a", "b"}},
      {"material \"Chain Link.tga\" colorkey 0 0 0 7 alphablend end", {"chain link", "chain link"}},
      {"material Dir/A.B.c alphablend end", {"dir/a.b"}},
      {"material x.y\\wall alphablend end", {"x"}},
      {"material \"\" alphablend end", {""}},
      {"material a mipmap 1 1 x animated 1 2 0 alphablend gunpass grenadepass end", {"a"}},
      // Arguments are tokens like any other, so the keywords among them are eaten.
      {"material a mipmap 0 2 alphablend end colorkey 1 2 3 end", {"a"}},
      {"material a animated 1 0.5 1 end alphablend end", {"a"}},
      {"material a colorkey 1 2 end alphablend end", {"a", "a"}},
      {"material a scrolling 1 2 end alphablend end", {"a"}},
      {"material a mipmap 0 -2 alphablend end", {"a"}},
      {"material a mipmap 0 none alphablend end", {"a"}},
      {"material a alphablend mipmap 0 2147483647 alphablend end\nmaterial b alphablend", {"a"}},
      {"material end alphablend end", {"end"}},
      {"stray material a 12 alphablend words end\nend\nmaterial b alphablend end\n", {"a"}},
      {"material a colorkey", {"a"}},
      {"material a colorkey 1 2", {"a"}},
      {"material a", {}},
      {"material", {}},
      // The stream is at its end once a last line without line feed was read; the end of the token
      // before it decides when that is.
      {"material a alphablend end\nmaterial b alphablend end", {"a"}},
      {"material a alphablend end \nmaterial b alphablend end", {"a", "b"}},
      {"material a alphablend end\n\nmaterial b alphablend end", {"a", "b"}},
      {"material a alphablend end\nmaterial b alphablend end\n", {"a", "b"}},
      {"material a alphablend\nend", {"a"}},
  };
  for (const auto& c : cases) EXPECT_EQ(NamesOf(c.text), c.names) << c.text;
}

class LoadCxpTest : public testing::Test {
 protected:
  void SetUp() override { State().transparentTextures.Clear(); }

  void Load(const std::string& path) {
    State().options.cxpFilename = path.c_str();
    LoadCxp();
  }

  TestSystem system_;
  const TempFolder temporary_;
  const std::string folder_ = temporary_.Path();
};

TEST_F(LoadCxpTest, TellsTheLogOfAFileThatCannotBeRead) {
  ASSERT_EQ(mkfifo((folder_ + "/pipe").c_str(), 0600), 0);
  // The last one can be opened all the same.
  for (const std::string& path :
       {folder_ + "/missing.cxp", folder_, folder_ + "/pipe", std::string("/dev/zero"),
        std::string(), std::string("/proc/self/mem")}) {
    system_.debugOutput.clear();
    Load(path);
    EXPECT_EQ(system_.debugOutput, "Could not load CXP file " + path + "\n");
  }
  EXPECT_EQ(State().transparentTextures.Count(), 0u);
  EXPECT_FALSE(std::filesystem::exists(folder_ + "/missing.cxp"));
}

}  // namespace
}  // namespace mapexport
