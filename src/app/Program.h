// The whole program behind main.
#pragma once

namespace mapexport {

/// Runs what the command line asks for; the result is the program's exit status.
int RunProgram(int argc, char** argv);

}  // namespace mapexport
