// The manual page and the completion against --help; docs/report.md against the list of codes.
#include <cstdio>
#include <regex>

#include "app/Commands.h"
#include "cli/Help.h"
#include "cli/Pages.h"
#include "support/Testing.h"
#include "system/RemarkCode.h"

namespace mapexport {
namespace {

using testing::IsSupersetOf;
using Words = std::set<std::string>;

/// The options that `text` names at the beginning of its lines' entries.
Words OptionsIn(std::string text, const std::string& lineStart) {
  std::string plain;
  std::ranges::remove_copy(text, std::back_inserter(plain), '\\');
  Words options;
  const std::regex line("(?:^|\\n)" + lineStart + "(-[^\\n]*)");
  const std::regex option("--[a-z-]+");
  for (std::sregex_iterator i(plain.begin(), plain.end(), line), end; i != end; ++i) {
    const std::string head = (*i)[1];
    for (std::sregex_iterator o(head.begin(), head.end(), option); o != end; ++o) {
      options.insert(o->str());
    }
  }
  return options;
}

std::string Output(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  std::array<char, 4096> block{};
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe.get())) {
    text.append(block.data(), count);
  }
  return text;
}

/// What bash offers behind these words, the last of which is being typed.
Words Completions(const std::string& words) {
  const TempFolder folder;
  const std::string script = folder.Path() / "mapexport.bash";
  Write(script, BashCompletion(Commands()));
  const std::string text =
      Output("bash -c '. " + script + " && COMP_WORDS=(" + words +
             ") COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _mapexport; printf \"%s\\n\" "
             "\"${COMPREPLY[@]}\"' 2>&1");
  Words offered;
  const std::regex word("[^\\n]+");
  for (std::sregex_iterator i(text.begin(), text.end(), word), end; i != end; ++i) {
    offered.insert(i->str());
  }
  return offered;
}

/// What fish offers to write behind "mapexport COMMAND --".
Words FishCompletions(const std::string& command) {
  const TempFolder folder;
  const std::string script = folder.Path() / "mapexport.fish";
  Write(script, FishCompletion(Commands()));
  return OptionsIn(Output("HOME=" + folder.Path().string() + " fish -c '. " + script +
                          "; complete -C \"mapexport " + command + " --\"' 2>&1"),
                   "");
}

TEST(Pages, TellOfTheSameOptionsAsHelp) {
  const std::string page = ManPage(Commands());
  Words commands;
  for (const CommandInfo& command : Commands()) {
    SCOPED_TRACE(command.name);
    commands.insert(command.name);
    const Words options = OptionsIn(CommandHelp(command), "  (?:[A-Z]+ *)?");
    const std::size_t begin = page.find(std::string(".SS mapexport ") + command.name + '\n');
    ASSERT_NE(begin, std::string::npos);
    Words ofPage = OptionsIn(page.substr(begin, page.find("\n.S", begin + 1) - begin), ".B ");
    ofPage.insert("--help");
    EXPECT_EQ(ofPage, options);
    EXPECT_EQ(Completions(std::string("mapexport ") + command.name + " --"), options);
    EXPECT_EQ(FishCompletions(command.name), options);
  }
  EXPECT_THAT(Completions("mapexport \"\""), IsSupersetOf(commands));
  commands.insert("--help");
  EXPECT_EQ(Completions("mapexport help \"\""), commands);
}

TEST(Pages, CompletionOffersTheWordsOfOptions) {
  const Words systems{"left-handed", "right-handed", "max", "inverse-max"};
  EXPECT_EQ(Completions("mapexport export a b --coordinates \"\""), systems);
  EXPECT_EQ(Completions("mapexport export a b --coordinates = in"), Words{"inverse-max"});
  EXPECT_EQ(Completions("mapexport inspect --layout = \"\""), (Words{"qob", "kob"}));
  EXPECT_EQ(Completions("mapexport export a b --voxel-size \"\""), Words{});
  EXPECT_FALSE(Completions("mapexport export --repeat \"/\"").empty());
}

/// The words between backquotes in what `line` takes of `text`.
Words QuotedIn(const std::string& text, const std::string& line) {
  Words words;
  const std::regex lines(line);
  const std::regex quoted("`([a-z-]+)`");
  for (std::sregex_iterator i(text.begin(), text.end(), lines), end; i != end; ++i) {
    const std::string taken = (*i)[1];
    for (std::sregex_iterator w(taken.begin(), taken.end(), quoted); w != end; ++w) {
      words.insert((*w)[1]);
    }
  }
  return words;
}

TEST(Pages, ReportDocTellsOfEveryCode) {
  std::string text = Content(MAPEXPORT_SOURCE_DIR "/docs/report.md");
  text.erase(0, text.find("## Warnings and notes"));
  text.erase(text.find("\n## "));
  Words told = QuotedIn(text, "\n\\| (`[^|]*)");
  for (const std::string& member : QuotedIn(text, "(The members of `leftOut`:[^.]*)\\.")) {
    if (member != "leftOut") told.insert("left-out-" + member);
  }
  EXPECT_EQ(told, Words(std::begin(kRemarkCodes), std::end(kRemarkCodes)));
}

TEST(Pages, ManPageIsSoundTroff) {
  const TempFolder folder;
  const std::string page = folder.Path() / "mapexport.1";
  Write(page, ManPage(Commands()));
  EXPECT_EQ(Output("groff -man -Tutf8 -ww -z " + page + " 2>&1"), "");
}

}  // namespace
}  // namespace mapexport
