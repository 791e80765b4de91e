// Writes the pages that are installed beside the program: "man" or "bash-completion".
#include <iostream>
#include <string_view>

#include "app/Commands.h"
#include "cli/Pages.h"

int main(int argc, char** argv) {
  const std::string_view page = argc == 2 ? argv[1] : "";
  if (page == "man") {
    std::cout << mapexport::ManPage(mapexport::Commands());
  } else if (page == "bash-completion") {
    std::cout << mapexport::BashCompletion(mapexport::Commands());
  } else {
    std::cerr << "usage: mapexport-pages man|bash-completion\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
