// HTTP by Qt Network. Each session has connections of its own, made with its first request.
//
// Main thread only, with a running event loop; outlives the requests sent through it. Speaks
// HTTP/1.1, so that each request under way has a connection to itself. A request goes out once:
// when its connection breaks it fails, also where Qt would have sent it again.
#pragma once

#include <memory>

#include "base/MainThread.h"
#include "ports/HttpSession.h"

namespace vemo {

class QtHttpSession : public HttpSession {
 public:
  explicit QtHttpSession(MainThread& mainThread, HttpSessionLimits limits = {});
  ~QtHttpSession() override;

  Task<HttpResult> send(HttpRequest request, std::stop_token stop) override;

 private:
  struct Retirement;

  MainThread& m_mainThread;
  const HttpSessionLimits m_limits;
  struct Connections;
  std::shared_ptr<Connections> m_connections;  ///< made when needed
};

}  // namespace vemo
