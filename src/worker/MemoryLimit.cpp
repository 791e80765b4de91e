#include "worker/MemoryLimit.h"

#include <algorithm>
#include <fstream>
#include <string_view>

#include <unistd.h>

namespace mapexport {
namespace {

/// The process's group as a path that begins with '/', without one at its end; empty for the
/// outermost.
std::string OwnGroup(const std::string& proc) {
  constexpr std::string_view kVersion2 = "0::";
  std::ifstream in(proc);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(kVersion2)) return line == "0::/" ? "" : line.substr(kVersion2.size());
  }
  return {};
}

}  // namespace

std::uint64_t MemoryLimit(const std::string& proc, const std::string& groups) {
  std::uint64_t limit = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                        static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  for (std::string group = OwnGroup(proc);; group.erase(group.rfind('/'))) {
    std::uint64_t bytes = 0;
    std::ifstream in(groups + group + "/memory.max");
    if (in >> bytes) limit = std::min(limit, bytes);  // it may say "max"
    if (group.find('/') == std::string::npos) return limit;
  }
}

}  // namespace mapexport
