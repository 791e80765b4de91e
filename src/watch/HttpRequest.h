// The head of a request of HTTP/1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

struct HttpRequest {
  std::string method;
  std::string target;  ///< as sent: "/path?query"
  std::string host;    ///< the value of the header Host, in lower case
};

/// Parses all up to the empty line, that line included. Nothing unless it is of the form, ASCII,
/// for HTTP/1.0 or 1.1, and has one header Host.
std::optional<HttpRequest> ParseHttpRequest(std::string_view head);

}  // namespace mapexport
