#include "system/StandardError.h"

#include <cstdlib>
#include <mutex>

#include <fmt/format.h>
#include <unistd.h>

#include "system/Descriptor.h"

namespace mapexport {
namespace {

constexpr std::string_view kErase = "\r\x1b[K";

std::mutex mutex;
bool statusIsShown = false;

void Write(std::string_view text) {
  static_cast<void>(WriteAll(STDERR_FILENO, text));
}

}  // namespace

bool StandardErrorIsTerminal() {
  static const bool isTerminal = [] {
    const char* const term = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && term != nullptr && std::string_view(term) != "dumb";
  }();
  return isTerminal;
}

void WriteLines(std::string_view lines) {
  const std::scoped_lock lock(mutex);
  if (statusIsShown) Write(kErase);
  statusIsShown = false;
  Write(lines);
}

void ShowStatusLine(std::string_view status) {
  const std::scoped_lock lock(mutex);
  Write(fmt::format("{}{}", kErase, status));
  statusIsShown = true;
}

void EraseStatusLine() {
  WriteLines({});
}

}  // namespace mapexport
