#include "support/LaneThread.h"

#include <cxxabi.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "support/Faults.h"

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace zolvar {

namespace {

constexpr std::size_t StackSize = 1U << 20;  // bytes; only those that are used cost memory

LaneThread* running = nullptr;

}  // namespace

LaneThread* LaneThread::current() { return running; }

LaneThread::LaneThread()
    : stack_(mmap(nullptr, StackSize, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
  if (stack_ == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  // What needs more than the stack ends here and not in somebody else's memory.
  mprotect(stack_, static_cast<std::size_t>(sysconf(_SC_PAGESIZE)), PROT_NONE);
  getcontext(&lane_.context);
  lane_.context.uc_stack.ss_sp = stack_;
  lane_.context.uc_stack.ss_size = StackSize;
  lane_.stack = stack_;
  lane_.stackSize = StackSize;
#ifdef __SANITIZE_THREAD__
  lane_.sanitizersThread = __tsan_create_fiber(0);
#endif
  makecontext(&lane_.context, &LaneThread::begin, 0);
}

LaneThread::~LaneThread() {
  abandon();
  isEnding_ = true;
  goThere();
#ifdef __SANITIZE_THREAD__
  __tsan_destroy_fiber(lane_.sanitizersThread);
#endif
  munmap(stack_, StackSize);
}

void LaneThread::start(Work work) {
  if (isWorking()) throw std::logic_error("A lane does one thing at a time.");
  work_ = std::move(work);
  resume();
}

void LaneThread::resume() {
  if (!isWorking()) throw std::logic_error("Nothing has paused on this lane.");
  goThere();
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

void LaneThread::abandon() {
  if (!isWorking()) return;
  isAbandoned_ = true;
  goThere();
  thrown_ = nullptr;
  isAbandoned_ = false;
}

void LaneThread::pause() {
  if (!isAbandoned_) changeOver(lane_, outside_);
  if (isAbandoned_) throw SimulatedCrash{"abandoned"};
}

void LaneThread::goThere() {
  before_ = std::exchange(running, this);
  changeOver(outside_, lane_);
  running = before_;
}

void LaneThread::changeOver(Place& from, Place& to, bool isForGood) {
  static_assert(sizeof(from.exceptions) == 16, "the two words of __cxa_eh_globals");
  void* const exceptions = abi::__cxa_get_globals();
  std::memcpy(from.exceptions.data(), exceptions, sizeof from.exceptions);
  std::memcpy(exceptions, to.exceptions.data(), sizeof to.exceptions);
#ifdef __SANITIZE_THREAD__
  from.sanitizersThread = __tsan_get_current_fiber();
  __tsan_switch_to_fiber(to.sanitizersThread, 0);
#endif
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_start_switch_fiber(isForGood ? nullptr : &from.fakeStack, to.stack, to.stackSize);
#endif
  (void)isForGood;
  swapcontext(&from.context, &to.context);
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_finish_switch_fiber(from.fakeStack, &to.stack, &to.stackSize);
#endif
}

void LaneThread::begin() {
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_finish_switch_fiber(nullptr, &running->outside_.stack, &running->outside_.stackSize);
#endif
  running->loop();
}

void LaneThread::loop() {
  while (!isEnding_) {
    // Whatever ends the work goes on with whom it was done for.
    try {
      work_();
    } catch (...) {
      thrown_ = std::current_exception();
    }
    work_ = nullptr;  // with all it holds
    if (!isEnding_) changeOver(lane_, outside_);
  }
  changeOver(lane_, outside_, true);
}

}  // namespace zolvar
