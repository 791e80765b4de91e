#include "system/StandardError.h"

#include <array>
#include <cstdlib>
#include <mutex>
#include <span>

#include <fmt/format.h>
#include <unistd.h>

#include "system/Descriptor.h"

namespace mapexport {
namespace {

constexpr std::string_view kErase = "\r\x1b[K";

std::mutex mutex;
bool statusIsShown = false;
bool isJson = false;

void Write(std::string_view text) {
  static_cast<void>(WriteAll(STDERR_FILENO, text));
}

}  // namespace

void MakeMessagesJson() {
  isJson = true;
}

bool MessagesAreJson() {
  return isJson;
}

bool StandardErrorIsTerminal() {
  static const bool isTerminal = [] {
    const char* const term = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && term != nullptr && std::string_view(term) != "dumb";
  }();
  return isTerminal && !isJson;
}

void WriteLines(std::string_view lines) {
  const std::scoped_lock lock(mutex);
  if (statusIsShown) Write(kErase);
  statusIsShown = false;
  Write(lines);
}

void WriteWithoutMemory(std::string_view severity, std::string_view code, std::string_view text) {
  const std::scoped_lock lock(mutex);
  if (statusIsShown) Write(kErase);
  statusIsShown = false;
  const std::array inText{std::string_view("mapexport: "), severity, std::string_view(": "), text,
                          std::string_view("\n")};
  const std::array inJson{std::string_view("{\"severity\": \""),
                          severity,
                          std::string_view("\", \"code\": \""),
                          code,
                          std::string_view("\", \"text\": \""),
                          text,
                          std::string_view("\"}\n")};
  for (const std::string_view part : isJson ? std::span<const std::string_view>(inJson) : inText) {
    Write(part);
  }
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
