#include "app/Program.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "app/BuiltIn.h"
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
      return Print(VersionText() + (line.verbose ? BuiltInText() : ""));
  }
  return line.command->run(line);
}

/// Whether JSON is wanted, also for the messages about a wrong command line.
bool WantsJson(const std::vector<std::string>& arguments) {
  bool wanted = false;
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    const std::string& argument = arguments[i];
    if (argument.starts_with("--messages=")) wanted = argument == "--messages=json";
    if (argument == "--messages") wanted = i + 1 < arguments.size() && arguments[i + 1] == "json";
  }
  return wanted;
}

/// Ends the program when memory runs out in a function that lets no exception pass.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
  } catch (const std::bad_alloc&) {
    WriteWithoutMemory("error", "failed", "memory ran out");
    std::_Exit(static_cast<int>(ExitStatus::kFailed));
  } catch (...) {  // a fault of the program
  }
  std::abort();
}

CommandLine Parse(const std::vector<std::string>& arguments) {
  // CLI11 2.4 has such functions.
  struct Handler {
    const std::terminate_handler before = std::set_terminate(EndWithoutMemory);
    ~Handler() { std::set_terminate(before); }
  } const handler;
  return ParseCommandLine(Commands(), arguments);
}

ExitStatus Run(const std::vector<std::string>& arguments) {
  if (WantsJson(arguments)) MakeMessagesJson();
  const Messages messages(false);
  try {
    return Do(Parse(arguments));
  } catch (const UsageError& error) {
    messages.Error("wrong-usage", error.what());
    messages.Usage(UsageLine(error.command));
    return ExitStatus::kWrongUsage;
  } catch (const std::exception& error) {
    messages.Error("failed", ReasonOf(error));
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
    WriteWithoutMemory("error", "failed", "memory ran out");
    return static_cast<int>(ExitStatus::kFailed);
  }
}

}  // namespace mapexport
