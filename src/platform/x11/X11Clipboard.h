// The CLIPBOARD selection of an X server.
//
// Main thread only; one for the program, made in the composition root. Changes are counted by
// XFixes' notifications. A snapshot is read from whoever owns the selection; while that is this
// program, it's our own content, without a question to the server. After replace() with content
// this program owns the selection and serves it until somebody else copies; at destruction the
// content is handed to the desktop's clipboard manager, unless it's marked as a secret.
//
// A content that equals the latest snapshot is a restored one: it's offered exactly as its first
// owner offered it. Any other gets its plain text offered under all the names that programs ask
// for.
#pragma once

#include <QStringList>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "base/MainThread.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11IncrementalSender.h"
#include "platform/x11/X11SelectionOffer.h"
#include "ports/Clipboard.h"

namespace vemo {

class X11SelectionReader;

class X11Clipboard : public Clipboard {
 public:
  /// Null when there's no X server, or one without XFixes.
  static std::unique_ptr<X11Clipboard> create(MainThread& mainThread,
                                              const QByteArray& displayName = {});
  ~X11Clipboard() override;

  Task<ClipboardContents> snapshot() override;
  bool replace(ClipboardContents contents) override;
  std::uint64_t changeCount() const override;

 private:
  /// What an entry of a snapshot was, beyond its name and bytes.
  struct Form {
    QString name;
    qsizetype size;
    xcb_atom_t type;
    int format;
  };
  struct Ownership {
    ClipboardContents contents;
    std::vector<Form> forms;  ///< of a restored snapshot; empty for content of our own making
    X11SelectionOffer offer;
  };

  X11Clipboard(std::unique_ptr<X11Connection> connection, MainThread& mainThread,
               std::uint8_t ownerChangeEvent);

  void handleEvent(const xcb_generic_event_t& event);
  void handleOwnerChange(const xcb_generic_event_t& event);
  std::optional<xcb_timestamp_t> serverTime();
  bool takeSelection(const ClipboardContents& contents, const std::vector<Form>& forms,
                     xcb_timestamp_t time);
  bool isLatestSnapshot(const std::vector<ClipboardEntry>& entries) const;
  std::vector<X11Representation> representations(const std::vector<ClipboardEntry>& entries,
                                                 const std::vector<Form>& forms);
  void handToClipboardManager();

  std::unique_ptr<X11Connection> m_connection;
  MainThread& m_mainThread;
  const std::uint8_t m_ownerChangeEvent;
  const xcb_atom_t m_clipboard;
  const xcb_atom_t m_timestampProperty;
  const xcb_atom_t m_clipboardManager;
  X11IncrementalSender m_sender;
  std::optional<Ownership> m_ownership;
  std::vector<Form> m_snapshotForms;
  std::vector<X11SelectionReader*> m_readers;
  std::uint64_t m_changeCount = 0;
  std::optional<std::uint32_t> m_ownRequest;  ///< sequence of our taking, until it's been notified
  std::optional<xcb_timestamp_t> m_serverTime;
  bool m_isHandedOver = false;
};

}  // namespace vemo
