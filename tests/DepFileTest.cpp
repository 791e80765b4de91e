// The rules of --depfile as GNU make and ninja read them.
#include <chrono>

#include <fmt/format.h>

#include "output/DepFile.h"
#include "support/Testing.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

/// The rule, nothing when it is refused.
std::optional<std::string> RuleOf(const std::string& output,
                                  const std::vector<std::string>& files) {
  try {
    return DepFileText(output, files);
  } catch (const RunError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("a --depfile cannot hold"));
    return std::nullopt;
  }
}

class DepFileTest : public testing::Test {
 protected:
  void Write(const std::string& file, const std::string& text) {
    mapexport::Write(folder_ / file, text);
  }
  void Age(const std::string& file, int hours) {
    fs::last_write_time(folder_ / file, now_ - std::chrono::hours(hours));
  }
  bool Runs(const std::string& command) {
    const std::string line = fmt::format("cd '{}' && {} >log 2>&1", folder_.string(), command);
    return std::system(line.c_str()) == 0;
  }
  std::string Log() { return Content(folder_ / "log"); }
  /// Whether make and ninja take the output for older than its files. They must be of one mind.
  bool IsOld() {
    const bool byMake = !Runs("xargs -0a goal make -qf makefile --");
    const bool byNinja = Runs("ninja -n -d explain") && Log().find("no work") == std::string::npos;
    EXPECT_EQ(byMake, byNinja) << Log();
    return byNinja;
  }

  /// Both read back what the rule names: with each file alone newer than the output it is old, and
  /// with none it isn't.
  void ExpectReadBack(const std::string& rule, const std::string& output,
                      const std::vector<std::string>& files) {
    SCOPED_TRACE(rule);
    Write("rule", rule);
    Write("makefile", rule + "\t@true\n");
    Write("goal", output);
    std::string escaped;
    for (const char c : output) {
      if (c == '$' || c == ' ' || c == ':') escaped += '$';
      escaped += c;
    }
    // A generator's output is not old for want of a log.
    Write("build.ninja", "rule r\n  command = true\n  depfile = rule\n  generator = 1\nbuild " +
                             escaped + ": r\n");
    Write(output, "");
    Age(output, 2);
    for (const std::string& file : files) {
      Write(file, "");
      Age(file, 3);
    }
    EXPECT_FALSE(IsOld());
    for (const std::string& file : files) {
      Age(file, 1);
      EXPECT_TRUE(IsOld()) << file;
      Age(file, 3);
    }
    fs::remove(folder_ / output);
    for (const std::string& file : files) fs::remove(folder_ / file);
  }

  const TempFolder temporary_;
  const fs::path folder_ = temporary_.Path();
  const fs::file_time_type now_ = fs::file_time_type::clock::now();
};

TEST_F(DepFileTest, MakeAndNinjaReadBackWhatIsNotRefused) {
  ASSERT_TRUE(Runs("make --version") && Runs("ninja --version")) << Log();
  std::vector<std::string> pieces{"\\#", "\\:", "\\$", "\\ ",   "\\\\ ", "\\~",      ": ",   ":)",
                                  "$(",  "${",  "#\\", "a\\\\", "\xC3",  "\xC2\xA0", "\xFF", "  "};
  for (char c = 1; c != '0'; ++c) pieces.emplace_back(1, c);
  for (char c = ':'; c != 'A'; ++c) pieces.emplace_back(1, c);
  for (char c = '['; c != 'a'; ++c) pieces.emplace_back(1, c);
  for (char c = '{'; c > 0 && c <= '\x7E'; ++c) pieces.emplace_back(1, c);
  pieces.emplace_back("\x7F");
  for (const std::string& piece : pieces) {
    if (piece == "/") continue;
    std::vector<std::string> files;
    for (const std::string& name : {piece + "x.y", "x" + piece + "y", "x.y" + piece}) {
      if (RuleOf("o.map", {name})) files.push_back(name);
      if (const auto rule = RuleOf(name, {"scene.obj"})) ExpectReadBack(*rule, name, {"scene.obj"});
    }
    if (!files.empty()) ExpectReadBack(RuleOf("o.map", files).value(), "o.map", files);
  }
  // Names that mean something as a whole, or together with others.
  for (const char* const names :
       {"m(1)", "a(b c d)", "define x", "export undefine x", "a =b", "a :=b", "~root", "./~root",
        ".WAIT a", "private x", "-lm", "include a", "(a).x b(c).y"}) {
    std::istringstream words(names);
    const std::vector<std::string> files(std::istream_iterator<std::string>(words), {});
    if (const auto rule = RuleOf("o.map", files)) ExpectReadBack(*rule, "o.map", files);
  }
  for (const std::string output : {"lib(x)", "lib(x).map", "export", "define x", ".PHONY", ".c.o",
                                   "./.SUFFIXES", "~", "./~root", "-include x", "%x", ".hidden"}) {
    if (const auto rule = RuleOf(output, {"s.obj"})) ExpectReadBack(*rule, output, {"s.obj"});
  }
}

TEST_F(DepFileTest, UsualNamesAreNotRefused) {
  const std::vector<std::string> usual{
      "a b/level (1).obj",      "C:\\maps\\level.fbx",       "#1$.cxp",
      "100%, {x} @ 2+2!-_.mtl", "\xC3\xA4\xE2\x82\xAC~.bin", "]"};
  EXPECT_EQ(RuleOf("maps.v2/a: b#$].map", usual),
            "maps.v2/a\\:\\ b\\#$$].map: a\\ b/level\\ (1).obj \\\n  C\\:\\maps\\level.fbx \\\n"
            "  \\#1$$.cxp \\\n  100%,\\ {x}\\ @\\ 2+2!-_.mtl \\\n  \xC3\xA4\xE2\x82\xAC~.bin \\\n"
            "  ]\n");
  EXPECT_EQ(RuleOf("a.map", {""}), std::nullopt);
}

}  // namespace
}  // namespace mapexport
