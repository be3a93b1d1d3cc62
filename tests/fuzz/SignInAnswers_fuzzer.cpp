// Any redirect and any answer of the token endpoint are read without harm, and no code is taken
// from a redirect that doesn't carry the state of this sign-in.
#include "Fuzzing.h"
#include "account/SignInAnswers.h"
#include "ports/HttpSession.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  const QByteArray bytes = bytesOf(data, size);
  for (const int status : {200, 400}) {
    const auto idToken = idTokenIn(HttpResponse{.status = status, .body = bytes});
    require(!idToken || status == 200);
    if (!idToken) idToken.error().description();
  }
  const QUrl redirect = QUrl::fromEncoded("x:/oauth2redirect?" + bytes);
  const auto code = authorizationCodeIn(redirect, QStringLiteral("the expected state"));
  require(!code || bytes.contains("state"));
  return 0;
}
