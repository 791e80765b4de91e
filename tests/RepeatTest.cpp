// Runs that are repeated from their reports.
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

/// `text` with `from`, which it must hold, replaced by `to`.
std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST_F(ProgramTest, AReportRepeatsItsRunOrSaysWhatChanged) {
  fs::copy_file(MAPEXPORT_SOURCE_DIR "/examples/yard.scene.json", work_ / "yard.scene.json");
  fs::copy_file(MAPEXPORT_SOURCE_DIR "/examples/yard.cxp", work_ / "yard.cxp");
  Write(work_ / "k.txt", "Bench*: climbable\n");
  scene_ = "yard.scene.json";
  // Remembered options shape the output as given ones do, and so does the clock's seed.
  EXPECT_EQ(Export("a.kob", {"--voxel-size", "90", "--cxp", "yard.cxp", "--no-clean"}).status, 0);
  EXPECT_EQ(Export("a.kob", {"--keywords", "k.txt", "--split", "--longest-list", "900",
                             "--coordinates", "max", "--report", "r.json"})
                .status,
            0);
  const Outcome repeated = Run({"export", "--repeat", "r.json", "b.kob", "--quiet"});
  EXPECT_EQ(repeated.status, 0) << repeated.err;
  EXPECT_TRUE(Content(work_ / "a.kob") == Content(work_ / "b.kob"));

  const std::string report = Content(work_ / "r.json");
  const auto expectRefused = [&](const std::string& from, const std::string& to,
                                 const std::string& piece) {
    SCOPED_TRACE(from + " -> " + to);
    Write(work_ / "bad.json", Replaced(report, from, to));
    const Outcome outcome = Run({"export", "--repeat", "bad.json", "b.kob", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("mapexport: error: " + piece));
    EXPECT_TRUE(Content(work_ / "a.kob") == Content(work_ / "b.kob"));
  };
  expectRefused("mapexport-report", "mapexport-report-list", "bad.json: is not the report");
  expectRefused("\"90\"", "\"9x\"", "bad.json: options: --voxel-size: \"9x\" is not");
  expectRefused("\"clean\"", "\"cleen\"", "bad.json: options.cleen: ");
  expectRefused("\"clean\": false", "\"clean\": 0", "bad.json: options.clean: must be");
  expectRefused("\"90\"", "\"200\"", "b.kob: not exported: the same inputs");
  expectRefused("\"seed\": ", "\"seed\": -", "bad.json: seed: ");
  expectRefused("\"inputs\"", "\"inputz\"", "bad.json: holds too little");
  expectRefused("\"path\": \"k.txt\"", "\"path\": \"/dev/zero\"", "/dev/zero: is not a regular");
  expectRefused("\"path\": \"k.txt\"", "\"path\": \"r.json\"", "r.json: has changed");
  expectRefused("\"keywords\": \"k.txt\"", "\"keywords\": \"./k.txt\"", "./k.txt: was not read");
  Write(work_ / "k.txt", "Bench*: climbable\n\n");
  expectRefused("", "", "k.txt: has changed since the run that bad.json reports");

  for (const auto& [options, status] :
       std::vector<std::pair<std::vector<std::string>, int>>{{{"b.kob", "--weld"}, 2},
                                                             {{"b.kob", "--seed", "1"}, 2},
                                                             {{scene_, "b.kob"}, 2},
                                                             {{"b.qob"}, 1},
                                                             {{"r.json"}, 1},
                                                             {{"yard.cxp"}, 1}}) {
    std::vector<std::string> arguments{"export", "--repeat", "r.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(Run(arguments).status, status) << testing::PrintToString(options);
  }
  EXPECT_EQ(Content(work_ / "r.json"), report);
}

}  // namespace
}  // namespace mapexport
