#include "provider/ProviderPages.h"

namespace vemo::service {

namespace {

constexpr std::string_view style =
    "body{font:16px/1.5 system-ui,sans-serif;max-width:26rem;margin:12vh auto;padding:0 1.5rem;"
    "background:#fff;color:#1c1c1e}"
    "button{font:inherit;padding:.6rem 1.2rem;border-radius:.5rem;border:1px solid #767680;"
    "background:transparent;color:inherit;cursor:pointer}"
    "#continue{background:#1f5fd6;border-color:#1f5fd6;color:#fff}"
    "button:focus-visible{outline:3px solid #f2a33a;outline-offset:2px}"
    "p.small{font-size:.875rem}"
    "@media(prefers-color-scheme:dark){body{background:#1c1c1e;color:#f2f2f7}}";

std::string escaped(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    switch (letter) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += letter;
    }
  }
  return result;
}

std::string page(std::string_view title, std::string_view styleNonce, const std::string& content) {
  return "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
         escaped(title) + "</title>\n<style nonce=\"" + escaped(styleNonce) + "\">" +
         std::string(style) + "</style>\n<main>\n" + content + "</main>\n</html>\n";
}

}  // namespace

std::string written(const ConsentPage& consent) {
  return page("Sign in to Vemo", consent.styleNonce,
              "<h1>Sign in to Vemo</h1>\n<p>Vemo on this computer asks who you are.</p>\n"
              "<form method=\"post\" action=\"/consent\">\n"
              "<input type=\"hidden\" name=\"ticket\" value=\"" +
                  escaped(consent.ticket) +
                  "\">\n"
                  "<button id=\"continue\" name=\"decision\" value=\"continue\" autofocus>"
                  "Continue as " +
                  escaped(consent.name) +
                  "</button>\n"
                  "<button id=\"cancel\" name=\"decision\" value=\"cancel\">Cancel</button>\n"
                  "</form>\n<p class=\"small\">Your address here is " +
                  escaped(consent.email) +
                  ". Nothing of this leaves the service that you run yourself.</p>\n");
}

std::string errorPage(std::string_view message, std::string_view styleNonce) {
  return page("Sign in to Vemo", styleNonce,
              "<h1>This doesn’t work</h1>\n<p>" + escaped(message) + "</p>\n");
}

}  // namespace vemo::service
