// The endpoints of a signed-in account: its profile, its dictionary, its end.
//
// Network thread only; owned by AccountServices. Answers come from the database's workers.
#pragma once

#include "accounts/AccountAnswers.h"
#include "database/DatabaseWorkers.h"
#include "http/Router.h"

namespace vemo::service {

class AccountApi {
 public:
  AccountApi(DatabaseWorkers& database, BetaUpdates beta, Now now)
      : m_database(database), m_beta(beta), m_now(std::move(now)) {}

  void addTo(Router& router);

 private:
  void profile(const Request& request, AnswerCompletion done);
  void rename(const Request& request, AnswerCompletion done);
  void removeAccount(const Request& request, AnswerCompletion done);
  void listDictionary(const Request& request, AnswerCompletion done);
  void addToDictionary(const Request& request, AnswerCompletion done);
  void removeFromDictionary(const Request& request, AnswerCompletion done);

  DatabaseWorkers& m_database;
  const BetaUpdates m_beta;
  const Now m_now;
};

}  // namespace vemo::service
