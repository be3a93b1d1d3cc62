#include "platform/xdg/BrowserSignIn.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <algorithm>
#include <utility>

#include "platform/xdg/SchemeHandler.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

std::unexpected<WebAuthenticationError> failure(WebAuthenticationError::Kind kind,
                                                const QString& description = {}) {
  return std::unexpected(WebAuthenticationError{kind, description});
}

}  // namespace

/// A wait is known for as long as its coroutine lives.
struct BrowserSignIn::Registration {
  Registration(BrowserSignIn& signIn, const Wait& wait) : owner(signIn), entry(wait) {
    owner.m_waits.push_back(&entry);
  }
  ~Registration() { std::erase(owner.m_waits, &entry); }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  BrowserSignIn& owner;
  const Wait& entry;
};

BrowserSignIn::BrowserSignIn(MainThread& mainThread, QString program)
    : m_mainThread(mainThread), m_program(std::move(program)) {}

Task<WebAuthentication::Redirect> BrowserSignIn::authenticate(QUrl page, QString callbackScheme,
                                                              std::stop_token stop) {
  using Kind = WebAuthenticationError::Kind;
  if (!claimScheme(callbackScheme, m_program))
    co_return failure(
        Kind::Failed,
        QCoreApplication::translate("Account", "The desktop doesn't let Vemo receive the sign-in"));
  const Wait wait{callbackScheme, Completion<Redirect>(m_mainThread)};
  const Registration registration(*this, wait);
  if (!QDesktopServices::openUrl(page)) co_return failure(Kind::CannotOpen);
  const std::stop_callback onStop(
      stop, [&wait] { wait.end.complete(failure(WebAuthenticationError::Kind::Cancelled)); });
  co_return co_await wait.end;
}

bool BrowserSignIn::deliver(const QUrl& address) {
  const auto wait = std::find_if(m_waits.rbegin(), m_waits.rend(), [&](const Wait* candidate) {
    return candidate->scheme.compare(address.scheme(), Qt::CaseInsensitive) == 0;
  });
  if (wait == m_waits.rend()) return false;
  (*wait)->end.complete(address);
  return true;
}

}  // namespace vemo
