// An owner of the clipboard that does what the test says, misbehaviour included. It lives on a
// connection of its own and answers while the event loop runs.
#pragma once

#include <QByteArray>
#include <QString>
#include <deque>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

class ScriptedOwner {
 public:
  enum class Manner {
    AtOnce,
    InPieces,
    Refuse,
    NeverAnswer,
    AnnouncePiecesAndStall,
    StallAfterTheFirstPiece,
    NameATypeAndNothingElse,
  };
  struct Target {
    QByteArray name;
    QByteArray data;
    Manner manner = Manner::AtOnce;
    QByteArray type = {};  ///< the target's name when empty
    int format = 8;
  };

  /// Takes the clipboard.
  explicit ScriptedOwner(std::vector<Target> targets);

  static constexpr qsizetype pieceBytes = 100'000;

  void answerTargetsWith(Manner manner) { m_targetsManner = manner; }
  /// Gives the clipboard up and leaves the server.
  void die() {
    m_connection->synchronize();
    m_connection.reset();
  }
  /// Dies when this target is asked for.
  void dieAt(const QByteArray& name) { m_lastWish = name; }
  bool isDead() const { return !m_connection; }

  std::size_t requestCount() const { return m_requestCount; }

 private:
  struct Transfer {
    QByteArray rest;
    xcb_atom_t type;
    bool stallsAfterNext = false;
  };

  void handleEvent(const xcb_generic_event_t& event);
  void answer(const xcb_selection_request_event_t& request);
  void answerTargets(const xcb_selection_request_event_t& request);
  void sendNextPiece(xcb_window_t requestor, xcb_atom_t property);
  void notify(const xcb_selection_request_event_t& request, xcb_atom_t property);

  std::unique_ptr<X11Connection> m_connection;
  std::vector<Target> m_targets;
  Manner m_targetsManner = Manner::AtOnce;
  QByteArray m_lastWish;
  std::map<std::pair<xcb_window_t, xcb_atom_t>, Transfer> m_transfers;
  std::size_t m_requestCount = 0;
};

}  // namespace vemo
