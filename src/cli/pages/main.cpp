// Writes the pages that are installed beside the program: "man" or "bash-completion".
#include <iostream>
#include <string_view>

#include "cli/BashCompletion.h"
#include "cli/ManPage.h"

int main(int argc, char** argv) {
  const std::string_view page = argc == 2 ? argv[1] : "";
  if (page == "man") {
    std::cout << mapexport::ManPage();
  } else if (page == "bash-completion") {
    std::cout << mapexport::BashCompletion();
  } else {
    std::cerr << "usage: mapexport-pages man|bash-completion\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
