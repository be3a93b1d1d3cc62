// A browser in which the test signs in. A page that nobody answers stays open until its stop.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "base/Completion.h"
#include "ports/WebAuthentication.h"

namespace vemo {

class FakeWebAuthentication : public WebAuthentication {
 public:
  explicit FakeWebAuthentication(MainThread& mainThread) : m_mainThread(mainThread) {}

  struct Page {
    QUrl url;
    QString callbackScheme;
    Completion<Redirect> end;
  };

  Task<Redirect> authenticate(QUrl page, QString callbackScheme, std::stop_token stop) override {
    const Completion<Redirect> end(m_mainThread);
    m_pages.push_back({page, callbackScheme, end});
    const std::stop_callback onStop(stop, [&end] {
      end.complete(
          std::unexpected(WebAuthenticationError{.kind = WebAuthenticationError::Kind::Cancelled}));
    });
    co_return co_await end;
  }

  const std::vector<Page>& pages() const { return m_pages; }

  /// Ends the latest page.
  void redirectTo(const QUrl& url) { finish(url); }
  void redirectNowhere() { finish(std::nullopt); }
  void fail(WebAuthenticationError error) { finish(std::unexpected(std::move(error))); }

 private:
  void finish(Redirect redirect) {
    ASSERT_FALSE(m_pages.empty()) << "no page is open";
    m_pages.back().end.complete(std::move(redirect));
  }

  MainThread& m_mainThread;
  std::vector<Page> m_pages;
};

}  // namespace vemo
