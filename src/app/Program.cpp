#include "app/Program.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "app/Commands.h"
#include "app/Messages.h"
#include "cli/CommandLine.h"
#include "cli/Help.h"
#include "system/RunError.h"
#include "system/StandardError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

/// Fills standard descriptors that are closed, so that no file of ours gets their numbers. The
/// modes make reading or writing them fail as on a closed one.
void OccupyStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    // open() returns the lowest free number: this one.
    if (fcntl(fd, F_GETFD) == -1) open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

ExitStatus Print(const std::string& text) {
  const bool arrived = PrintResult([&](std::ostream& out) { out << text; });
  return arrived ? ExitStatus::kDone : ExitStatus::kFailed;
}

ExitStatus Do(const CommandLine& line) {
  switch (line.wanted) {
    case CommandLine::Wanted::kCommand:
      break;
    case CommandLine::Wanted::kHelp:
      return Print(line.command == nullptr ? ProgramHelp(Commands()) : CommandHelp(*line.command));
    case CommandLine::Wanted::kVersion:
      return Print(VersionText());
  }
  return line.command->run(line);
}

ExitStatus Run(const std::vector<std::string>& arguments) {
  const Messages messages(false);
  try {
    return Do(ParseCommandLine(Commands(), arguments));
  } catch (const UsageError& error) {
    messages.Error(error.what());
    messages.Usage(UsageLine(error.command));
    return ExitStatus::kWrongUsage;
  } catch (const std::exception& error) {
    messages.Error(ReasonOf(error));
  }
  return ExitStatus::kFailed;
}

}  // namespace

int RunProgram(int argc, char** argv) {
  OccupyStandardStreams();
  // Writing to a closed pipe, or beyond the file size limit, then fails like any other write.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  try {
    return static_cast<int>(Run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc)));
  } catch (const std::bad_alloc&) {
    // Memory ran out even for the error's text.
    WriteLines("mapexport: error: memory ran out\n");
    return static_cast<int>(ExitStatus::kFailed);
  }
}

}  // namespace mapexport
