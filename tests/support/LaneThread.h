#pragma once

#include <ucontext.h>

#include <array>
#include <cstddef>
#include <exception>
#include <functional>

namespace zolvar {

/// Work with a stack of its own that runs between resume() and its next pause(), while whoever
/// resumed it stands still: many of them run one after the other, on one thread of the system and
/// in an order that a test decides.
class LaneThread {
 public:
  using Work = std::function<void()>;

  LaneThread();
  ~LaneThread();
  LaneThread(const LaneThread&) = delete;
  LaneThread& operator=(const LaneThread&) = delete;

  /// Begins with a piece of work and comes back when that pauses or is done; throws what it threw.
  void start(Work work);
  /// Goes on with work that has paused.
  void resume();
  /// Ends work that has paused: its pause() throws SimulatedCrash.
  void abandon();
  [[nodiscard]] bool isWorking() const { return work_ != nullptr; }

  /// Comes back when somebody resumes. Only inside of the work, and not in a destructor, since it
  /// throws when the work is abandoned.
  void pause();
  /// Whose work runs; none outside.
  static LaneThread* current();

 private:
  /// A place where something can go on, with what belongs to it besides its registers.
  struct Place {
    ucontext_t context{};
    std::array<void*, 2> exceptions{};  ///< those being handled and thrown, as C++ keeps them
    const void* stack = nullptr;        ///< for the sanitizers, which look into stacks
    std::size_t stackSize = 0;
    void* fakeStack = nullptr;
    void* sanitizersThread = nullptr;
  };

  static void begin();
  static void changeOver(Place& from, Place& to, bool isForGood = false);
  void loop();
  void goThere();

  void* stack_;
  Place lane_;
  Place outside_;
  LaneThread* before_ = nullptr;  ///< whose work resumed this
  bool isEnding_ = false;
  bool isAbandoned_ = false;
  Work work_;
  std::exception_ptr thrown_;
};

}  // namespace zolvar
