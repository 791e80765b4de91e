#include "watch/HttpRequest.h"

#include <algorithm>

#include "system/Ascii.h"

namespace mapexport {
namespace {

/// Removes all up to the next `end` from the front of `text`; nothing when there is none.
std::optional<std::string_view> Take(std::string_view& text, std::string_view end) {
  const std::size_t at = text.find(end);
  if (at == text.npos) return std::nullopt;
  const std::string_view taken = text.substr(0, at);
  text.remove_prefix(at + end.size());
  return taken;
}

bool IsVisible(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c > ' ' && c < '\x7f'; });
}

std::string_view Trimmed(std::string_view text) {
  while (text.starts_with(' ') || text.starts_with('\t')) text.remove_prefix(1);
  while (text.ends_with(' ') || text.ends_with('\t')) text.remove_suffix(1);
  return text;
}

}  // namespace

std::optional<HttpRequest> ParseHttpRequest(std::string_view head) {
  auto line = Take(head, "\r\n");
  if (!line) return std::nullopt;
  const auto method = Take(*line, " ");
  const auto target = Take(*line, " ");
  if (!method || !target || !IsVisible(*method) || !IsVisible(*target)) return std::nullopt;
  if (*line != "HTTP/1.1" && *line != "HTTP/1.0") return std::nullopt;
  HttpRequest request{std::string(*method), std::string(*target), {}};
  int hosts = 0;
  while ((line = Take(head, "\r\n")) && !line->empty()) {
    const auto name = Take(*line, ":");
    if (!name || !IsVisible(*name)) return std::nullopt;
    if (LowerCase(*name) != "host") continue;
    request.host = LowerCase(Trimmed(*line));
    ++hosts;
  }
  if (!line || !head.empty() || hosts != 1) return std::nullopt;
  return request;
}

}  // namespace mapexport
