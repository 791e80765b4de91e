// The program `mapexport`.
#include "app/Program.h"

int main(int argc, char** argv) {
  return mapexport::RunProgram(argc, argv);
}
