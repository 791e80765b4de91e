// The whole program, called by main.
#pragma once

namespace mapexport {

/// Runs the command line; returns the program's exit status.
int RunProgram(int argc, char** argv);

}  // namespace mapexport
