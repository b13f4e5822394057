#include "addressbook/eds/GlibThread.h"

namespace zolvar {

GlibThread::GlibThread() : context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)) {
  thread_ = std::thread([this] {
    g_main_context_push_thread_default(context_);
    g_main_loop_run(loop_);
    g_main_context_pop_thread_default(context_);
  });
}

GlibThread::~GlibThread() {
  post([this] { g_main_loop_quit(loop_); });
  thread_.join();
  g_main_loop_unref(loop_);
  g_main_context_unref(context_);
}

void GlibThread::after(unsigned seconds, Task task) {
  GSource* const source =
      seconds == 0 ? g_idle_source_new() : g_timeout_source_new_seconds(seconds);
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(
      source,
      [](gpointer data) -> gboolean {
        (*static_cast<Task*>(data))();
        return G_SOURCE_REMOVE;
      },
      new Task(std::move(task)), [](gpointer data) { delete static_cast<Task*>(data); });
  g_source_attach(source, context_);
  g_source_unref(source);
}

}  // namespace zolvar
