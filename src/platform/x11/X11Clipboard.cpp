#include "platform/x11/X11Clipboard.h"

#include <xcb/xfixes.h>

#include <algorithm>

#include "platform/x11/X11SelectionReader.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int maximumAttempts = 3;
constexpr std::chrono::seconds serverTimeLimit{2};
constexpr std::chrono::seconds handOverLimit{2};
constexpr std::uint8_t sentEventBit = 0x80;

std::vector<ClipboardEntry> entriesOf(const ClipboardContents& contents) {
  std::vector<ClipboardEntry> entries;
  for (const ClipboardItem& item : contents) {
    for (const ClipboardEntry& entry : item.contents) {
      if (std::ranges::count(entries, entry.type, &ClipboardEntry::type) == 0)
        entries.push_back(entry);
    }
  }
  return entries;
}

bool isConcealed(const ClipboardContents& contents) {
  return std::ranges::any_of(entriesOf(contents), [](const ClipboardEntry& entry) {
    return entry.type == u"org.nspasteboard.ConcealedType"_s ||
           (entry.type == u"x-kde-passwordManagerHint"_s && entry.data == "secret");
  });
}

/// The names under which plain text is asked for, beside its MIME type. STRING is Latin-1 by
/// definition and missing for a text that has other characters.
std::vector<ClipboardEntry> textAliases(const QByteArray& utf8) {
  std::vector<ClipboardEntry> aliases{
      {u"UTF8_STRING"_s, utf8}, {u"TEXT"_s, utf8}, {u"text/plain"_s, utf8}};
  const QString text = QString::fromUtf8(utf8);
  const bool isLatin1 =
      std::ranges::all_of(text, [](QChar character) { return character.unicode() < 0x100; });
  if (isLatin1) aliases.push_back({u"STRING"_s, text.toLatin1()});
  return aliases;
}

}  // namespace

std::unique_ptr<X11Clipboard> X11Clipboard::create(MainThread& mainThread,
                                                   const QByteArray& displayName) {
  auto connection = X11Connection::create(displayName);
  if (!connection) return nullptr;
  const auto extension = connection->extension(xcb_xfixes_id);
  if (!extension) return nullptr;
  const auto version = connection->reply<xcb_xfixes_query_version_reply_t>(
      xcb_xfixes_query_version(connection->xcb(), 1, 0).sequence);
  if (!version) return nullptr;
  return std::unique_ptr<X11Clipboard>(new X11Clipboard(
      std::move(connection), mainThread, extension->first_event + XCB_XFIXES_SELECTION_NOTIFY));
}

X11Clipboard::X11Clipboard(std::unique_ptr<X11Connection> connection, MainThread& mainThread,
                           std::uint8_t ownerChangeEvent)
    : m_connection(std::move(connection)),
      m_mainThread(mainThread),
      m_ownerChangeEvent(ownerChangeEvent),
      m_clipboard(m_connection->atom("CLIPBOARD")),
      m_timestampProperty(m_connection->atom("VEMO_TIMESTAMP")),
      m_clipboardManager(m_connection->atom("CLIPBOARD_MANAGER")),
      m_sender(*m_connection) {
  xcb_xfixes_select_selection_input(m_connection->xcb(), m_connection->window(), m_clipboard,
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  m_connection->synchronize();
}

X11Clipboard::~X11Clipboard() {
  handToClipboardManager();
}

Task<ClipboardContents> X11Clipboard::snapshot() {
  m_connection->processEvents();
  if (!m_connection->isAlive()) m_ownership.reset();
  if (m_ownership) {
    m_snapshotForms = m_ownership->forms;
    co_return m_ownership->contents;
  }

  X11SelectionReader reader(*m_connection, m_mainThread, m_clipboard);
  struct Registration {
    std::vector<X11SelectionReader*>& readers;
    X11SelectionReader* reader;
    ~Registration() { std::erase(readers, reader); }
  };
  m_readers.push_back(&reader);
  const Registration registration{m_readers, &reader};
  reader.start();
  co_await reader.finished();

  m_snapshotForms.clear();
  ClipboardItem item;
  for (X11Representation& representation : reader.takeRepresentations()) {
    const xcb_atom_t target = representation.target;
    const QString name = QString::fromLatin1(m_connection->atomNames({&target, 1}).front());
    m_snapshotForms.push_back(
        {name, representation.data.size(), representation.type, representation.format});
    item.contents.push_back({name, std::move(representation.data)});
  }
  if (item.contents.empty()) co_return ClipboardContents();
  co_return ClipboardContents{std::move(item)};
}

std::uint64_t X11Clipboard::changeCount() const {
  m_connection->processEvents();
  return m_changeCount;
}

bool X11Clipboard::replace(ClipboardContents contents) {
  const std::vector<Form> forms =
      isLatestSnapshot(entriesOf(contents)) ? m_snapshotForms : std::vector<Form>();
  for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
    const auto time = serverTime();
    if (!time) return false;
    if (takeSelection(contents, forms, *time)) return true;
  }
  return false;
}

bool X11Clipboard::takeSelection(const ClipboardContents& contents, const std::vector<Form>& forms,
                                 xcb_timestamp_t time) {
  m_ownership.reset();
  auto offered = representations(entriesOf(contents), forms);
  const xcb_window_t owner = offered.empty() ? XCB_WINDOW_NONE : m_connection->window();
  const auto request =
      xcb_set_selection_owner(m_connection->xcb(), owner, m_clipboard, time).sequence;
  m_ownRequest = request;
  if (!offered.empty()) {
    m_ownership.emplace(contents, forms,
                        X11SelectionOffer(*m_connection, m_sender, std::move(offered), time));
  }
  m_connection->synchronize();
  m_connection->processEvents();
  // A server that didn't notify refused: somebody else wrote at a later time than ours.
  const bool isTaken = !m_ownRequest;
  if (!isTaken) m_ownership.reset();
  m_ownRequest.reset();
  return isTaken;
}

std::optional<xcb_timestamp_t> X11Clipboard::serverTime() {
  m_serverTime.reset();
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_APPEND, m_connection->window(),
                      m_timestampProperty, XCB_ATOM_INTEGER, 32, 0, nullptr);
  m_connection->processEventsUntil([this] { return m_serverTime.has_value(); }, serverTimeLimit);
  return m_serverTime;
}

void X11Clipboard::handleEvent(const xcb_generic_event_t& event) {
  const std::uint8_t type = event.response_type & ~sentEventBit;
  if (type == m_ownerChangeEvent) return handleOwnerChange(event);
  switch (type) {
    case XCB_SELECTION_REQUEST: {
      const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
      if (m_ownership && request.selection == m_clipboard)
        m_ownership->offer.answer(request);
      else
        X11SelectionOffer::refuse(*m_connection, request);
      break;
    }
    case XCB_SELECTION_NOTIFY: {
      const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
      if (notify.selection == m_clipboardManager) m_isHandedOver = true;
      for (X11SelectionReader* reader : m_readers) reader->handleSelectionNotify(notify);
      break;
    }
    case XCB_PROPERTY_NOTIFY: {
      const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      if (notify.window == m_connection->window() && notify.atom == m_timestampProperty)
        m_serverTime = notify.time;
      for (X11SelectionReader* reader : m_readers) reader->handlePropertyNotify(notify);
      m_sender.handlePropertyNotify(notify);
      break;
    }
    case XCB_DESTROY_NOTIFY:
      m_sender.handleDestroyNotify(reinterpret_cast<const xcb_destroy_notify_event_t&>(event));
      break;
    default:
      break;
  }
}

void X11Clipboard::handleOwnerChange(const xcb_generic_event_t& event) {
  const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
  if (change.selection != m_clipboard) return;
  ++m_changeCount;
  const xcb_window_t owner = m_ownership ? m_connection->window() : XCB_WINDOW_NONE;
  if (m_ownRequest == event.full_sequence && change.owner == owner) {
    m_ownRequest.reset();
    return;
  }
  // A change that came before our own doesn't end our ownership.
  if (!m_ownRequest) m_ownership.reset();
  for (X11SelectionReader* reader : m_readers)
    reader->handleOwnerChange(change.owner, event.full_sequence);
}

bool X11Clipboard::isLatestSnapshot(const std::vector<ClipboardEntry>& entries) const {
  return std::ranges::equal(entries, m_snapshotForms,
                            [](const ClipboardEntry& entry, const Form& form) {
                              return entry.type == form.name && entry.data.size() == form.size;
                            });
}

std::vector<X11Representation> X11Clipboard::representations(
    const std::vector<ClipboardEntry>& entries, const std::vector<Form>& forms) {
  std::vector<ClipboardEntry> offered = entries;
  if (forms.empty()) {
    const auto text =
        std::ranges::find(entries, QString::fromUtf16(clipboardTextType), &ClipboardEntry::type);
    if (text != entries.end()) {
      const auto aliases = textAliases(text->data);
      const auto isNew = [&](const ClipboardEntry& alias) {
        return std::ranges::count(entries, alias.type, &ClipboardEntry::type) == 0;
      };
      std::ranges::copy_if(aliases, std::back_inserter(offered), isNew);
    }
  }

  std::vector<X11Representation> result;
  for (std::size_t i = 0; i < offered.size(); ++i) {
    const xcb_atom_t target = m_connection->atom(offered[i].type.toLatin1());
    X11Representation representation{target, target, 8, offered[i].data};
    if (!forms.empty()) {
      representation.type = forms[i].type;
      representation.format = forms[i].format;
    } else if (offered[i].type == u"TEXT"_s) {
      representation.type = m_connection->atom("UTF8_STRING");
    }
    if (target != XCB_ATOM_NONE) result.push_back(std::move(representation));
  }
  return result;
}

void X11Clipboard::handToClipboardManager() {
  m_connection->processEvents();
  if (!m_ownership || isConcealed(m_ownership->contents)) return;
  const auto manager = m_connection->reply<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(m_connection->xcb(), m_clipboardManager).sequence);
  const auto time = serverTime();
  if (!manager || manager->owner == XCB_WINDOW_NONE || !time || !m_ownership) return;

  const auto targets = m_ownership->offer.targets();
  const xcb_atom_t property = m_connection->atom("VEMO_SELECTION");
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_connection->window(), property,
                      XCB_ATOM_ATOM, 32, static_cast<uint32_t>(targets.size()), targets.data());
  xcb_convert_selection(m_connection->xcb(), m_connection->window(), m_clipboardManager,
                        m_connection->atom("SAVE_TARGETS"), property, *time);
  m_connection->processEventsUntil(
      [this] { return m_isHandedOver || (!m_ownership && m_sender.isIdle()); }, handOverLimit);
}

}  // namespace vemo
