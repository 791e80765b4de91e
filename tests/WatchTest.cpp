// Exports that are repeated at every change, and the page that is served meanwhile.
#include <chrono>
#include <thread>

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>

#include "support/ProgramRun.h"
#include "view/WritePage.h"
#include "watch/HttpRequest.h"

namespace mapexport {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WatchTest : public ProgramTest {
 protected:
  ~WatchTest() override { Stop(); }

  void Start(std::vector<std::string> options) {
    options.insert(options.begin(), {"export", "level.obj", "l.kob", "--watch", "--seed", "1"});
    program_ = std::thread([this, options] {
      outcome_ = Run(options, [this] { Write(root_ / "pid", std::to_string(getpid())); });
    });
  }

  void Stop() {
    if (!program_.joinable()) return;
    kill(std::stoi(Content(root_ / "pid")), SIGINT);
    program_.join();
  }

  /// Whether the condition comes true in time.
  static bool Becomes(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }

  /// Waits until standard error has `count` lines of exports; returns it.
  std::string AfterLines(long count) {
    EXPECT_TRUE(Becomes([&] {
      return fs::exists(root_ / "err") && Lines(Content(root_ / "err")) >= count;
    })) << Content(root_ / "err");
    return Content(root_ / "err");
  }

  /// What the server answers, until it closes the connection.
  std::string Ask(const std::string& request) const {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port_)));
    EXPECT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(send(client, request.data(), request.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(request.size()));
    std::string answer;
    std::array<char, 4096> piece;
    for (ssize_t count = 0; (count = recv(client, piece.data(), piece.size(), 0)) > 0;) {
      answer.append(piece.data(), static_cast<std::size_t>(count));
    }
    close(client);
    return answer;
  }
  std::string Get(const std::string& path, const std::string& host) const {
    return Ask("GET " + path + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
  }

  std::thread program_;
  Outcome outcome_{};
  std::string port_;
};

TEST_F(WatchTest, ExportsAgainAfterEachChangeAndKeepsTheLastGoodOutput) {
  const std::string triangle = "v 0 0 0\nv 10 0 0\nv 0 10 0\nusemtl Red\nf 1 2 3\n";
  Start({"--depfile", "l.d", "--textures", "."});
  EXPECT_THAT(AfterLines(1), HasSubstr("level.obj"));  // there is no scene yet
  Write(work_ / "side", "x");
  AfterLines(2);
  Write(work_ / "side", "xy");  // perhaps a file that the scene is read from
  AfterLines(3);
  Write(work_ / "level.obj", kObject);
  EXPECT_THAT(AfterLines(5), HasSubstr("\"level.mtl\" that the scene names can't be opened"));
  Write(work_ / "level.mtl", "newmtl Red\nKd 1 0 0\n");
  AfterLines(6);
  const std::string good = Content(work_ / "l.kob");
  EXPECT_THAT(Content(work_ / "l.d"), HasSubstr("level.mtl"));
  Write(work_ / "new", "f 1 2 99\n");
  fs::rename(work_ / "new", work_ / "level.obj");
  EXPECT_THAT(AfterLines(7), HasSubstr("there is no vertex 99"));
  EXPECT_EQ(Content(work_ / "l.kob"), good);
  Write(work_ / "new", std::string(kObject) + triangle);
  fs::rename(work_ / "new", work_ / "level.obj");
  AfterLines(8);
  EXPECT_NE(Content(work_ / "l.kob"), good);
  Write(work_ / "level.mtl", "newmtl Red\nKd 0 1 0\nmap_Kd red.png\n");
  EXPECT_THAT(AfterLines(10), HasSubstr("red.png"));
  Write(work_ / "RED.tga", "x");  // where an engine finds it
  AfterLines(11);
  Write(work_ / "mapexport.toml", "weld = 3\n");
  EXPECT_THAT(AfterLines(12), HasSubstr("mapexport.toml: line 1"));
  fs::create_directory(work_ / "later");
  Write(work_ / "mapexport.toml", "keywords = \"later/k\"\n");
  AfterLines(13);
  Write(work_ / "later/k", "*: climbable\n");
  AfterLines(14);
  fs::remove(work_ / "mapexport.toml");
  const std::string lines = AfterLines(15);
  Stop();
  EXPECT_EQ(outcome_.status, 128 + SIGINT);
  EXPECT_EQ(outcome_.err, lines);
  EXPECT_EQ(Run({"export", "level.obj", "a.kob", "--fresh", "--seed", "1", "--quiet"}).status, 0);
  EXPECT_EQ(Content(work_ / "a.kob"), Content(work_ / "l.kob"));
}

TEST_F(WatchTest, ServesThePageAndNothingElse) {
  if (!CanWritePage()) GTEST_SKIP() << "built without the page";
  Write(work_ / "level.mtl", "newmtl Red\n");
  Write(work_ / "level.obj", kObject);
  Start({"--view"});
  AfterLines(1);
  ASSERT_TRUE(Becomes([&] { return Content(root_ / "out").ends_with("/\n"); }));
  port_ = Content(root_ / "out").substr(std::string("page: http://127.0.0.1:").size());
  port_.resize(port_.size() - 2);
  const std::string own = "127.0.0.1:" + port_;
  std::string page;
  ASSERT_TRUE(Becomes([&] { return (page = Get("/", own)).starts_with("HTTP/1.1 200"); }));
  EXPECT_THAT(page, AllOf(HasSubstr("connect-src 'self'"), HasSubstr("new EventSource(")));
  EXPECT_THAT(Content(work_ / "l.kob.html"),
              AllOf(StartsWith("<!doctype html>"), Not(HasSubstr("connect-src")),
                    Not(HasSubstr("EventSource"))));
  EXPECT_THAT(Get("/", "LocalHost:" + port_), StartsWith("HTTP/1.1 200"));
  for (const std::string& host : {"evil.example:" + port_, std::string("127.0.0.1"), own + "0"}) {
    EXPECT_THAT(Get("/", host), AllOf(StartsWith("HTTP/1.1 403"), Not(HasSubstr("<html"))));
  }
  for (const char* path : {"/l.kob", "/..", "//", "/?a", "/events"}) {
    EXPECT_THAT(Get(path, own), StartsWith("HTTP/1.1 404"));
  }
  EXPECT_THAT(Ask("POST / HTTP/1.1\r\nHost: " + own + "\r\n\r\n"), StartsWith("HTTP/1.1 405"));
  EXPECT_THAT(Ask(std::string(70 << 10, 'a')), testing::AnyOf("", StartsWith("HTTP/1.1 400")));
  const std::size_t at = page.find("data-version=\"") + std::strlen("data-version=\"");
  const std::string events = "/events?shown=" + page.substr(at, page.find('"', at) - at);
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // or before: both must do
    Write(work_ / "level.mtl", "newmtl Red\nKd 0 1 0\n");
  });
  EXPECT_THAT(Get(events, own), HasSubstr("event: exported\n"));
  writer.join();
  EXPECT_THAT(Get(events, own), HasSubstr("event: exported\n"));  // that version is old
}

TEST_F(WatchTest, WrongCommandLinesAndRequests) {
  Write(work_ / "level.obj", kObject);
  for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
           {"--dialog"}, {"--report", "-"}, {"--report", "/dev/stdout"}}) {
    std::vector<std::string> line{"export", "level.obj", "l.kob", "--watch"};
    line.insert(line.end(), options.begin(), options.end());
    EXPECT_EQ(Run(line).status, 2);
  }
  EXPECT_EQ(Run({"export", "level.obj", "--output-folder", "o", "--watch"}).status, 2);
  ExpectRefusal(Run({"export", "-", "l.kob", "--watch"}), "-: can't be watched");
  ExpectRefusal(Run({"export", ".", "l.kob", "--watch"}), ".: can't be watched");
  ExpectRefusal(Run({"export", "level.obj", "-", "--watch"}), "-: a model file can't be");
  ExpectRefusal(Run({"export", "level.obj", "none/l.kob", "--watch"}), "none/l.kob: cannot be");
  EXPECT_EQ(ParseHttpRequest("GET / HTTP/1.1\r\nA: b\r\nhOst: \tX \r\n\r\n").value().host, "x");
  for (const char* head :
       {"", "\r\n\r\n", "GET /\r\nHost: x\r\n\r\n", "GET / HTTP/2\r\nHost: x\r\n\r\n",
        "GET / HTTP/1.1\r\n\r\n", "GET / HTTP/1.1\r\nHost: x\r\nHost: x\r\n\r\n",
        "GET  / HTTP/1.1\r\nHost: x\r\n\r\n", "GET / HTTP/1.1\r\n Host: x\r\n\r\n",
        "GET / HTTP/1.1\r\nHost: x\r\n", "GET /\x80 HTTP/1.1\r\nHost: x\r\n\r\n"}) {
    EXPECT_FALSE(ParseHttpRequest(head)) << head;
  }
}

}  // namespace
}  // namespace mapexport
