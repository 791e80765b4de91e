// The command `formats`.
#include <ostream>

#include "app/Commands.h"
#include "cli/Formats.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

ExitStatus Run(const CommandLine& /*line*/) {
  const bool arrived = PrintResult([](std::ostream& out) { out << FormatsText(); });
  return arrived ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

CommandInfo FormatsCommand() {
  return {.name = "formats", .summary = "lists the formats that scenes are read from", .run = Run};
}

}  // namespace mapexport
