// Writes a page that is installed beside the program.
#include <iostream>
#include <string>
#include <string_view>

#include "app/Commands.h"
#include "cli/Pages.h"

namespace {

struct Page {
  std::string_view name;
  std::string (*make)(std::span<const mapexport::CommandInfo> commands);
};

constexpr Page kPages[] = {
    {"man", mapexport::ManPage},
    {"bash", mapexport::BashCompletion},
    {"fish", mapexport::FishCompletion},
    {"zsh", mapexport::ZshCompletion},
};

}  // namespace

int main(int argc, char** argv) {
  for (const Page& page : kPages) {
    if (argc != 2 || page.name != argv[1]) continue;
    std::cout << page.make(mapexport::Commands());
    return std::cout.flush() ? 0 : 1;
  }
  std::cerr << "usage: mapexport-pages man|bash|fish|zsh\n";
  return 2;
}
