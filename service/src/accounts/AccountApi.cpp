#include "accounts/AccountApi.h"

#include <charconv>

#include "accounts/AccountBodies.h"
#include "http/DatabaseAnswer.h"

namespace vemo::service {

namespace {

using boost::beast::http::verb;

constexpr std::size_t smallBody = 64 * 1024;

/// Between the check of its token and the work, an account may end.
Answer accountIsGone() {
  return errorAnswer(401, "A valid access token is needed.");
}

std::optional<std::int64_t> identifierIn(const std::string& text) {
  std::int64_t number = 0;
  const auto end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end && number > 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

void AccountApi::addTo(Router& router) {
  using Method = void (AccountApi::*)(const Request&, AnswerCompletion);
  const auto add = [this, &router](verb method, std::string_view path, std::size_t bodyLimit,
                                   Method handler) {
    router.add({method, path, Access::Account, bodyLimit,
                [this, handler](const Request& request, std::stop_token, AnswerCompletion done) {
                  (this->*handler)(request, std::move(done));
                }});
  };
  add(verb::get, "/desktop/auth/profile", 0, &AccountApi::profile);
  add(verb::patch, "/auth/profile", smallBody, &AccountApi::rename);
  add(verb::delete_, "/desktop/auth/account", 0, &AccountApi::removeAccount);
  add(verb::get, "/dictionary", 0, &AccountApi::listDictionary);
  add(verb::post, "/dictionary", smallBody, &AccountApi::addToDictionary);
  add(verb::delete_, "/dictionary/*", 0, &AccountApi::removeFromDictionary);
}

void AccountApi::profile(const Request& request, AnswerCompletion done) {
  answerFrom(
      m_database,
      [id = *request.caller.account, now = m_now(), beta = m_beta](Database& database) {
        const auto account = Accounts(database).find(id);
        if (!account) return accountIsGone();
        return profileAnswer(*account, Usage(database).of(id, now), beta);
      },
      std::move(done));
}

void AccountApi::rename(const Request& request, AnswerCompletion done) {
  auto name = readName(request.body);
  if (!name) return done(errorAnswer(400, name.error()));
  answerFrom(
      m_database,
      [id = *request.caller.account, name = *std::move(name), now = m_now(),
       beta = m_beta](Database& database) {
        const auto account = Accounts(database).rename(id, name);
        if (!account) return accountIsGone();
        return profileAnswer(*account, Usage(database).of(id, now), beta);
      },
      std::move(done));
}

void AccountApi::removeAccount(const Request& request, AnswerCompletion done) {
  answerFrom(
      m_database,
      [id = *request.caller.account](Database& database) {
        Accounts(database).remove(id);
        return successAnswer();
      },
      std::move(done));
}

void AccountApi::listDictionary(const Request& request, AnswerCompletion done) {
  answerFrom(
      m_database,
      [id = *request.caller.account](Database& database) {
        return dictionaryAnswer(Dictionary(database, id).entries());
      },
      std::move(done));
}

void AccountApi::addToDictionary(const Request& request, AnswerCompletion done) {
  auto words = readDictionaryWords(request.body);
  if (!words) return done(errorAnswer(400, words.error()));
  answerFrom(
      m_database,
      [id = *request.caller.account, words = *std::move(words)](Database& database) {
        const auto entry = Dictionary(database, id).add(words.phrase, words.replacement);
        return entry ? entryAnswer(*entry) : errorAnswer(409, "The dictionary is full.");
      },
      std::move(done));
}

void AccountApi::removeFromDictionary(const Request& request, AnswerCompletion done) {
  const auto entry = identifierIn(request.item);
  const auto unknown = errorAnswer(404, "The dictionary has no such entry.");
  if (!entry) return done(unknown);
  answerFrom(
      m_database,
      [id = *request.caller.account, entry = *entry, unknown](Database& database) {
        return Dictionary(database, id).remove(entry) ? successAnswer() : unknown;
      },
      std::move(done));
}

}  // namespace vemo::service
