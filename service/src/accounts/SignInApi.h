// The endpoint that turns an identity provider's ID token into a bearer token of this service.
//
// Network thread only; owned by AccountServices. The steps run on the database's workers and on the
// threads of the checks; nothing is kept here between them.
#pragma once

#include "accounts/AccountBodies.h"
#include "database/DatabaseWorkers.h"
#include "http/Router.h"
#include "identity/IdTokenChecks.h"
#include "setup/Configuration.h"

namespace vemo::service {

class SignInApi {
 public:
  /// `report` takes a line for the log, on any thread. The configuration outlives this.
  SignInApi(const Configuration& configuration, DatabaseWorkers& database, IdTokenChecks& checks,
            Now now, std::function<void(std::string_view)> report);

  void addTo(Router& router);

 private:
  void signIn(const Request& request, AnswerCompletion done);
  void check(SignInBody body, AnswerCompletion done);
  void admit(const std::string& compact, const IdToken& idToken, AnswerCompletion done);
  Answer refusal(const IdTokenChecks::Failure& failure) const;

  const Configuration& m_configuration;
  DatabaseWorkers& m_database;
  IdTokenChecks& m_checks;
  const Now m_now;
  const std::function<void(std::string_view)> m_report;
};

}  // namespace vemo::service
