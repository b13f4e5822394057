#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <thread>

namespace zolvar {

struct UnrefObject {
  void operator()(void* object) const { g_object_unref(object); }
};
/// Holds one reference of a GObject.
template <class Type>
using Object = std::unique_ptr<Type, UnrefObject>;

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

/// A thread with a main context of GLib that is its default one. Any thread may post.
class GlibThread {
 public:
  using Task = std::function<void()>;

  GlibThread();
  /// Lets what was posted before finish.
  ~GlibThread();
  GlibThread(const GlibThread&) = delete;
  GlibThread& operator=(const GlibThread&) = delete;

  void post(Task task) { after(0, std::move(task)); }
  /// Runs the task `seconds` from now, unless the thread has ended by then.
  void after(unsigned seconds, Task task);

 private:
  GMainContext* const context_;
  GMainLoop* const loop_;
  std::thread thread_;
};

}  // namespace zolvar
