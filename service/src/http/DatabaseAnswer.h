// An answer that the database gives, or a 503 when it gives none.
#pragma once

#include "database/DatabaseWorkers.h"
#include "http/Answer.h"

namespace vemo::service {

/// `question` makes an Answer of a Database&, as DatabaseWorkers::ask asks for.
template <typename Question>
void answerFrom(DatabaseWorkers& database, Question question, AnswerCompletion done) {
  database.ask(std::move(question),
               [done = std::move(done)](std::expected<Answer, DatabaseFailure> answer) mutable {
                 done(answer ? *std::move(answer) : unavailableAnswer());
               });
}

}  // namespace vemo::service
