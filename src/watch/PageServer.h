// Serves one page on this machine, and tells the browsers that show it when there is another one.
#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <poll.h>

#include "system/Descriptor.h"

namespace mapexport {

/// A server of HTTP/1.1 on a free port of 127.0.0.1, for the thread that owns it. It serves
///   /                        the page
///   /events?shown=VERSION    an event once the page's version is another
/// and nothing else, only to those that name this machine as the host: a web site whose name leads
/// here (DNS rebinding) gets nothing. Clients are not trusted: how many there are, what they may
/// send and how long they may take is limited.
class PageServer {
 public:
  /// Throws RunError.
  PageServer();

  std::string Url() const;

  /// From now on serves `page`, and sends the event to those that wait for it. `version` consists
  /// of letters, digits and "-".
  void SetPage(std::string page, std::string version);

  /// Appends what to wait for.
  void AddTo(std::vector<pollfd>& descriptors) const;
  /// Does what can be done without waiting. To be called when one of these is ready, and at least
  /// every second.
  void Serve();

  /// Lets go of all descriptors, in a child process.
  void Abandon();

 private:
  struct Connection {
    Descriptor socket;
    std::chrono::steady_clock::time_point deadline;
    std::string received = {};  ///< of the head of its request
    bool answered = false;      ///< it gets `head` and `body`, then is closed
    bool waits = false;         ///< it gets an event, then is closed
    std::string head = {};
    std::shared_ptr<const std::string> body = {};
    std::size_t sent = 0;
  };

  void Accept();
  /// Returns false once the connection is to be closed.
  bool Advance(Connection& connection) const;
  bool Receive(Connection& connection) const;
  bool Send(Connection& connection) const;
  void Answer(Connection& connection) const;
  void AnswerRequest(std::string_view head, Connection& connection) const;

  Descriptor listener_;
  std::uint16_t port_ = 0;
  std::shared_ptr<const std::string> page_;  ///< null: none yet
  std::string version_;
  std::list<Connection> connections_;
};

}  // namespace mapexport
