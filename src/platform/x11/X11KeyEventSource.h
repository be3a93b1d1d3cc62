// Hears every key of the login session through XInput 2's raw events, which reach whoever asks,
// whichever window has the focus and whoever has a grab. It grabs nothing and holds nothing back.
//
// Main thread only; one for the program. It has a connection of its own, so that nothing else that
// Vemo does with the server delays a key. What is held is kept by keyboard and key from the events
// themselves: two keyboards may hold the same modifier, and a key goes up as what it went down,
// though the layout have changed meanwhile.
//
// A key-up may be lost: a keyboard is unplugged or switched off (as all are when another user comes
// to the screen), or the connection breaks. So while something is held, it is compared with what
// the server says each second and whenever keyboards come or go; nothing runs while nothing is
// held. A connection that broke is made again as soon as the server lets it.
#pragma once

#include <QByteArray>
#include <QTimer>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "platform/x11/X11KeySymbols.h"
#include "platform/x11/X11OwnKeys.h"
#include "platform/x11/X11RawInput.h"
#include "platform/x11/X11VirtualKeys.h"
#include "ports/KeyEventSource.h"

namespace vemo {

class X11KeyEventSource : public KeyEventSource {
 public:
  /// Keys announced at that window are the program's own and not told of.
  explicit X11KeyEventSource(xcb_window_t ownKeysWindow = XCB_WINDOW_NONE,
                             QByteArray displayName = {});
  ~X11KeyEventSource() override;

  /// Whether start() would have something to listen to. Connects where it isn't connected, and
  /// asks the server nothing where it is.
  bool canListen();

  bool start() override;
  void stop() override;
  ModifierFlags modifierFlags() const override;

 private:
  struct Link;
  struct HeldKey {
    X11VirtualKey key;
    std::uint32_t pressedAt;  ///< the sequence that the press came with
    bool isLifted = false;    ///< we made it go up for the time of a paste
  };
  using Place = std::pair<std::uint16_t, std::uint32_t>;  ///< keyboard and key code

  bool connect();
  void listen();
  void loseConnection();
  void handleEvent(const xcb_generic_event_t& event);
  void handleKey(const X11RawInput::KeyEvent& event);
  bool isOwn(const X11RawInput::KeyEvent& event);
  X11VirtualKey virtualKey(const Place& place);
  void noteVirtualKeyboards(const std::vector<X11RawInput::Keyboard>& keyboards);
  void compareWithServer();

  ModifierFlags heldFlags() const;
  void tellKey(Strike strike, const X11VirtualKey& key);
  void tellInterrupted();
  void deliver();

  const xcb_window_t m_ownKeysWindow;
  const QByteArray m_displayName;
  std::unique_ptr<Link> m_link;
  bool m_isStarted = false;
  std::uint32_t m_listeningSince = 0;  ///< keys that came earlier are from before a stop
  std::map<Place, HeldKey> m_held;
  std::set<std::uint16_t> m_virtualKeyboards;
  std::deque<std::optional<KeyEvent>> m_news;  ///< to be told; nothing stands for an interruption
  mutable bool m_isReadingAhead = false;       ///< news is kept for a turn of its own
  QTimer m_comparison;
  QTimer m_recovery;
  QTimer m_delivery;
};

}  // namespace vemo
