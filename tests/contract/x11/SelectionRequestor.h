// A program that pastes: asks the clipboard's owner for targets, one by one or several at once.
#pragma once

#include <QByteArray>
#include <memory>
#include <optional>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

class SelectionRequestor {
 public:
  SelectionRequestor();

  struct Answer {
    QByteArray type;
    int format;
    QByteArray data;
  };
  /// What the owner answers, pieces put together; absent when it refuses.
  std::optional<Answer> request(const QByteArray& target);
  /// The names of the targets in the owner's order, TARGETS and its like included.
  std::vector<QByteArray> targets();
  /// The answers to several targets, asked for in one request.
  std::vector<std::optional<Answer>> requestMultiple(const std::vector<QByteArray>& targets);
  /// Asks for a target, takes the announcement of pieces and goes.
  void requestAndVanish(const QByteArray& target);

 private:
  void convert(const QByteArray& target);
  std::optional<X11Property> readPieces(const QByteArray& property);
  Answer answerOf(const X11Property& property);

  std::unique_ptr<X11Connection> m_connection;
  std::optional<xcb_atom_t> m_notifiedProperty;
  int m_newValues = 0;
};

}  // namespace vemo
