// An account, signed in or not, beside the lists that follow it.
#pragma once

#include <QUrlQuery>

#include "account/AccountFixture.h"

namespace vemo {

class EntryListFixture : public AccountFixture {
 protected:
  EntryListFixture() { http.answerAlways(profilePath, 500); }

  void startSignedIn() {
    holdToken();
    startUp();
  }

  void signIn() {
    http.answer(tokenPath, 200, R"({"id_token":"the id token"})");
    http.answer(signInPath, 200, R"({"token":"session","user":{}})");
    http.answer(languagesPath, 500);
    scope.start([this](std::stop_token stop) { return auth->signInWithGoogle(stop); });
    settle();
    const QString state = QUrlQuery(browser.pages().back().url).queryItemValue(u"state"_s);
    browser.redirectTo(QUrl(u"x:/oauth2redirect?code=c0de&state="_s + state));
    settle();
    ASSERT_TRUE(auth->isSignedIn());
  }

  std::vector<std::string> requestsTo(const QString& path) const {
    std::vector<std::string> found;
    for (const auto& request : http.requests()) {
      if (request.url.path().startsWith(path))
        found.push_back((request.method + ' ' + request.url.path().toUtf8()).toStdString());
    }
    return found;
  }
};

}  // namespace vemo
