#pragma once

#include <cstdint>
#include <functional>

namespace zolvar {

/// The main thread's event loop. Everything but post and isMainThread is for the main thread only.
class RunLoop {
 public:
  using Task = std::function<void()>;
  using Id = std::uint64_t;  ///< 0 is never used

  enum class Events : unsigned { Readable = 1, Writable = 2 };

  virtual ~RunLoop() = default;
  /// Runs `task` once, `seconds` from now; 0 means on a later turn of the loop.
  virtual Id after(double seconds, Task task) = 0;
  /// Runs `task` every `seconds` until cancelled.
  virtual Id every(double seconds, Task task) = 0;
  /// Ends a timer or a watch; unknown or spent ids are ignored. Allowed inside its own callback.
  virtual void cancel(Id id) = 0;
  /// Runs `task` on the main thread, in order of posting. Any thread.
  virtual void post(Task task) = 0;
  [[nodiscard]] virtual bool isMainThread() const = 0;
  /// Calls `ready` whenever the descriptor is readable (or writable). The descriptor stays the
  /// caller's and must outlive the watch.
  virtual Id watch(int descriptor, Events events, Task ready) = 0;
};

}  // namespace zolvar
