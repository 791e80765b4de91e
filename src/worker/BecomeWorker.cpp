#include "worker/BecomeWorker.h"

#include <initializer_list>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace mapexport {
namespace {

/// Undoes what whoever started us may have done to the signals that are to end the process.
void LetSignalsEnd() {
  for (const int end : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGXCPU, SIGALRM}) {
    signal(end, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void SilenceStandardStreams() {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (null >= 0) {
      dup2(null, fd);
    } else {
      close(fd);
    }
  }
}

void LeaveNoCore() {
  rlimit limit{};
  getrlimit(RLIMIT_CORE, &limit);
  limit.rlim_cur = 0;
  setrlimit(RLIMIT_CORE, &limit);  // lowering one always succeeds
  prctl(PR_SET_DUMPABLE, 0);       // core dumps that go to a program don't heed the limit
}

}  // namespace

void BecomeWorker(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);  // it died before that
  setsid();                           // no terminal of ours can be opened as /dev/tty
  LetSignalsEnd();
  SilenceStandardStreams();
  LeaveNoCore();
}

}  // namespace mapexport
