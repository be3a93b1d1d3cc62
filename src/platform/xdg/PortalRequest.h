// One question to the desktop's portal: the call, and the signal that brings the user's answer.
//
// Main thread only; lives for as long as the answer is wanted. Destroying it while the question
// stands takes the question back.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <expected>

#include "base/Completion.h"

namespace vemo {

class PortalRequest : public QObject {
  Q_OBJECT

 public:
  /// What the user's decision came with; empty for a decision against it.
  using Results = QVariantMap;
  struct Unavailable {};
  using Answer = std::expected<Results, Unavailable>;

  explicit PortalRequest(MainThread& mainThread);
  ~PortalRequest() override;

  /// Calls the method of the portal's interface with the parent window, the title and the options.
  /// Once.
  void ask(const QString& interface, const QString& method, const QString& title,
           QVariantMap options);

  /// Ends the question without a result.
  void takeBack();

  const Completion<Answer>& answer() const { return m_answer; }

  Q_SLOT void response(uint code, const QVariantMap& results);

 private:
  void listenAt(const QString& path);

  const QString m_token;
  QString m_path;  ///< of the portal's object that stands for this question
  Completion<Answer> m_answer;
};

}  // namespace vemo
