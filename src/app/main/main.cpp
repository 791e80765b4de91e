// The program `mapexport`.
#include "app/Program.h"
#include "app/main/LargeBlocks.h"

int main(int argc, char** argv) {
  mapexport::PutHeapOnLargePages();
  return mapexport::RunProgram(argc, argv);
}
