#include "cli/SignalPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <utility>

namespace zolvar {
namespace {

/// A signal handler reaches nothing but a global.
std::atomic<int> pipeForSignals{-1};

void noteSignal(int) {
  const int error = errno;
  const char byte = 0;
  if (::write(pipeForSignals.load(), &byte, 1) < 0) {
    // A full pipe says all there is to say.
  }
  errno = error;
}

void handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    struct sigaction before {};
    ::sigaction(number, nullptr, &before);
    // Somebody wants us to outlive the terminal.
    if (number == SIGHUP && before.sa_handler == SIG_IGN) continue;
    ::sigaction(number, &action, nullptr);
  }
}

}  // namespace

SignalPipe::SignalPipe(RunLoop& runLoop, std::function<void()> stop) : runLoop_(runLoop) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  pipeForSignals = writeEnd_;
  watch_ =
      runLoop_.watch(readEnd_, RunLoop::Events::Readable, [end = readEnd_, stop = std::move(stop)] {
        char bytes[16];
        while (::read(end, bytes, sizeof bytes) > 0) {
        }
        stop();
      });
  handle(noteSignal);
}

SignalPipe::~SignalPipe() {
  handle(SIG_DFL);
  if (readEnd_ < 0) return;
  runLoop_.cancel(watch_);
  ::close(readEnd_);
  ::close(writeEnd_);
}

}  // namespace zolvar
