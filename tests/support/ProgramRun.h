// Runs of the built program in temporary folders.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Testing.h"

namespace mapexport {

// A floor of two triangles, a degenerate one, and a hull that is not drawn.
inline constexpr const char* kScene = R"({"format":"mapexport-scene","version":1,
"materials":[{"name":"Grass","diffuse":[0.2,0.7,0.1]}],
"root":{"name":"Scene Root","children":[
 {"name":"Floor","material":0,"mesh":{"vertices":[[0,0,0],[10,0,0],[10,10,0],[0,10,0]],
  "faces":[[0,1,2,1],[0,2,3,1],[0,0,1]]}},
 {"name":"Hull","userProperties":"notrendered","mesh":{"vertices":[[0,0,0],[10,0,0],[0,0,10]],
  "faces":[[0,1,2]]}}]}})";

inline constexpr const char* kObject =
    "mtllib level.mtl\nv 0 0 0\nv 10 0 0\nv 0 10 0\nusemtl Red\nf 1 2 3\n";

inline long Lines(const std::string& text) {
  return std::ranges::count(text, '\n');
}

/// Runs `child` in a process of its own; what waitpid says of its end.
inline int InChild(const std::function<void()>& child) {
  const pid_t pid = fork();
  if (pid == 0) {
    child();
    _exit(0);
  }
  int end = 0;
  waitpid(pid, &end, 0);
  return end;
}

class ProgramTest : public testing::Test {
 protected:
  struct Outcome {
    int status;  ///< 128 and the signal when one ended the program
    std::string out;
    std::string err;
  };

  ProgramTest() {
    fs::create_directory(work_);
    Write(scene_, kScene);
  }

  /// Runs mapexport in `work_`; `prepare` acts in its process before it starts.
  Outcome Run(std::vector<std::string> arguments, const std::function<void()>& prepare = {}) {
    arguments.insert(arguments.begin(), MAPEXPORT_BIN_DIR "/mapexport");
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const int end = InChild([&] {
      setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
      const auto redirect = [&](const char* name, int fd) {
        dup2(open((root_ / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), fd);
      };
      redirect("out", STDOUT_FILENO);
      redirect("err", STDERR_FILENO);
      if (chdir(work_.c_str()) == 0) {
        if (prepare) prepare();
        execv(argv[0], argv.data());
      }
      _exit(99);
    });
    return {WIFEXITED(end) ? WEXITSTATUS(end) : 128 + WTERMSIG(end), Content(root_ / "out"),
            Content(root_ / "err")};
  }

  /// Of a run that ended with 1: one line of standard error, which holds the pieces, and no output.
  static void ExpectRefusal(const Outcome& outcome, const std::string& piece,
                            const std::string& other = "") {
    using testing::HasSubstr;
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(Lines(outcome.err), 1);
    EXPECT_THAT(outcome.err, testing::StartsWith("mapexport: error: "));
    EXPECT_THAT(outcome.err, testing::AllOf(HasSubstr(piece), HasSubstr(other)));
  }

  Outcome Export(const std::string& output, std::vector<std::string> options = {},
                 const std::function<void()>& prepare = {}) {
    options.insert(options.begin(), {"export", scene_, output});
    return Run(options, prepare);
  }

  const TempFolder folder_;
  const fs::path root_ = folder_.Path();
  const fs::path work_ = root_ / "work";  ///< the program's current directory
  std::string scene_ = root_ / "scene.scene.json";
};

}  // namespace mapexport
