#include "watch/PageServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "system/RunError.h"
#include "watch/HttpRequest.h"

namespace mapexport {
namespace {

using std::chrono::steady_clock;

constexpr std::size_t kMostConnections = 32;
// Browsers send the cookies of all local servers, whatever their ports.
constexpr std::size_t kLongestHead = 64 << 10;
constexpr std::chrono::seconds kPatience{10};  ///< for the request, and for each part of the answer

constexpr std::string_view kHeadEnd = "\r\n\r\n";
constexpr std::string_view kEventPath = "/events?shown=";
constexpr std::string_view kEvent = "event: exported\ndata:\n\n";

std::string HeadOf(std::string_view status, std::string_view more) {
  return fmt::format(
      "HTTP/1.1 {}\r\nConnection: close\r\nCache-Control: no-store\r\n"
      "X-Content-Type-Options: nosniff\r\nCross-Origin-Resource-Policy: same-origin\r\n"
      "Content-Security-Policy: frame-ancestors 'none'\r\n{}\r\n",
      status, more);
}

std::string PlainAnswer(std::string_view status, std::string_view more = {}) {
  return HeadOf(status, fmt::format("Content-Type: text/plain; charset=utf-8\r\n"
                                    "Content-Length: {}\r\n{}",
                                    status.size() + 1, more)) +
         fmt::format("{}\n", status);
}

}  // namespace

PageServer::PageServer()
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (!listener_.IsOpen() || bind(listener_.Get(), generic, size) != 0 ||
      listen(listener_.Get(), SOMAXCONN) != 0 ||
      getsockname(listener_.Get(), generic, &size) != 0) {
    throw RunError("127.0.0.1: the page can't be served: " + ErrnoText(errno));
  }
  port_ = ntohs(address.sin_port);
}

std::string PageServer::Url() const {
  return fmt::format("http://127.0.0.1:{}/", port_);
}

void PageServer::SetPage(std::string page, std::string version) {
  page_ = std::make_shared<const std::string>(std::move(page));
  version_ = std::move(version);
  for (Connection& connection : connections_) {
    if (!connection.waits) continue;
    connection.head += kEvent;
    Answer(connection);
  }
  Serve();
}

void PageServer::AddTo(std::vector<pollfd>& descriptors) const {
  // Further clients wait until one has gone.
  if (connections_.size() < kMostConnections) descriptors.push_back({listener_.Get(), POLLIN, 0});
  for (const Connection& connection : connections_) {
    const short events = connection.answered ? POLLOUT : POLLIN;
    descriptors.push_back({connection.socket.Get(), events, 0});
  }
}

void PageServer::Serve() {
  Accept();
  connections_.remove_if([this](Connection& connection) { return !Advance(connection); });
}

void PageServer::Abandon() {
  connections_.clear();
  listener_ = Descriptor();
}

void PageServer::Accept() {
  while (connections_.size() < kMostConnections) {
    Descriptor client(accept4(listener_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client.IsOpen()) return;
    connections_.push_back({std::move(client), steady_clock::now() + kPatience});
  }
}

bool PageServer::Advance(Connection& connection) const {
  const bool inTime = connection.waits || steady_clock::now() < connection.deadline;
  return inTime && (connection.answered || Receive(connection)) && Send(connection);
}

bool PageServer::Receive(Connection& connection) const {
  std::array<char, 4096> bytes;
  for (;;) {
    const ssize_t count = recv(connection.socket.Get(), bytes.data(), bytes.size(), 0);
    if (count < 0) return errno == EAGAIN || errno == EINTR;
    if (count == 0 || connection.waits) return false;  // there is nothing more to ask for
    std::string& received = connection.received;
    const std::size_t searched = std::max(received.size(), kHeadEnd.size()) - kHeadEnd.size();
    received.append(bytes.data(), static_cast<std::size_t>(count));
    const std::size_t end = received.find(kHeadEnd, searched);
    if (end == received.npos && received.size() <= kLongestHead) continue;
    AnswerRequest(
        std::string_view(received).substr(0, end == received.npos ? 0 : end + kHeadEnd.size()),
        connection);
    if (connection.answered) return true;
  }
}

bool PageServer::Send(Connection& connection) const {
  for (;;) {
    const std::size_t headSize = connection.head.size();
    const bool inHead = connection.sent < headSize;
    std::string_view rest = inHead || !connection.body ? connection.head : *connection.body;
    rest.remove_prefix(inHead || !connection.body ? connection.sent : connection.sent - headSize);
    if (rest.empty()) return !connection.answered;
    const ssize_t count = send(connection.socket.Get(), rest.data(), rest.size(), MSG_NOSIGNAL);
    if (count < 0) return errno == EAGAIN || errno == EINTR;
    connection.sent += static_cast<std::size_t>(count);
    connection.deadline = steady_clock::now() + kPatience;
  }
}

void PageServer::Answer(Connection& connection) const {
  connection.waits = false;
  connection.answered = true;
  connection.deadline = steady_clock::now() + kPatience;
}

void PageServer::AnswerRequest(std::string_view head, Connection& connection) const {
  const std::optional<HttpRequest> request = ParseHttpRequest(head);
  Answer(connection);
  if (!request) {
    connection.head = PlainAnswer("400 Bad Request");
  } else if (request->host != fmt::format("127.0.0.1:{}", port_) &&
             request->host != fmt::format("localhost:{}", port_)) {
    connection.head = PlainAnswer("403 Forbidden");
  } else if (request->method != "GET") {
    connection.head = PlainAnswer("405 Method Not Allowed", "Allow: GET\r\n");
  } else if (request->target.starts_with(kEventPath)) {
    connection.head = HeadOf("200 OK", "Content-Type: text/event-stream\r\n");
    connection.waits = request->target.substr(kEventPath.size()) == version_;
    connection.answered = !connection.waits;
    connection.head += connection.waits ? ":\n\n" : kEvent;
  } else if (request->target != "/") {
    connection.head = PlainAnswer("404 Not Found");
  } else if (!page_) {
    connection.head = PlainAnswer("503 Service Unavailable", "Refresh: 1\r\n");
  } else {
    connection.head = HeadOf("200 OK", fmt::format("Content-Type: text/html; charset=utf-8\r\n"
                                                   "Content-Length: {}\r\n",
                                                   page_->size()));
    connection.body = page_;
  }
}

}  // namespace mapexport
