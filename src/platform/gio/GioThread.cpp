#include "platform/gio/GioThread.h"

#include <future>

namespace vemo {

GioThread::GioThread() : m_context(g_main_context_new()) {
  m_thread = g_thread_new("vemo.gio", runLoop, this);
}

GioThread::~GioThread() {
  post([this] { m_isEnding = true; });
  g_thread_join(m_thread);
  g_main_context_unref(m_context);
}

void GioThread::post(Job job, std::chrono::milliseconds delay) {
  GSource* const source = delay.count() > 0
                              ? g_timeout_source_new(static_cast<guint>(delay.count()))
                              : g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(
      source,
      [](gpointer data) -> gboolean {
        (*static_cast<Job*>(data))();
        return G_SOURCE_REMOVE;
      },
      new Job(std::move(job)), [](gpointer data) { delete static_cast<Job*>(data); });
  g_source_attach(source, m_context);
  g_source_unref(source);
}

void GioThread::run(const Job& job) {
  std::promise<void> done;
  post([&] {
    job();
    done.set_value();
  });
  done.get_future().wait();
}

void* GioThread::runLoop(void* data) {
  auto* const self = static_cast<GioThread*>(data);
  g_main_context_push_thread_default(self->m_context);
  while (!self->m_isEnding || self->m_requestCount > 0)
    g_main_context_iteration(self->m_context, TRUE);
  g_main_context_pop_thread_default(self->m_context);
  return nullptr;
}

}  // namespace vemo
