// Everything that the main window can be seen in.

#include "desktop/VirtualKeys.h"
#include "windows/offline/MainWindowOnFakes.h"

namespace vemo {

using namespace std::chrono_literals;

using Window = MainWindowOnFakes;

std::span<const Window::State> Window::table() {
  static constexpr auto nothing = [](Window&) {};
  static const State rows[] = {
      {u"signed-out", [](Window& w) { w.signOut(); }, nothing},
      {u"signing-in", [](Window& w) { w.signOut(); }, [](Window& w) { w.m_model->signIn(); }},
      {u"sign-in-failed", [](Window& w) { w.signOut(); },
       [](Window& w) { w.auth->setLastError(u"Can't reach the server"_s); }},
      {u"sign-in-failed-long", [](Window& w) { w.signOut(); },
       [](Window& w) {
         w.auth->setLastError(
             u"The server at accounts.example can't be reached from this network. Look at your "
             u"connection, or ask whoever runs the service whether it is under way, and then sign "
             u"in once more."_s);
       }},
      {u"home-empty", nothing, nothing},
      {u"home-full", [](Window& w) { w.fillHistory(); }, nothing},
      {u"home-long",
       [](Window& w) {
         w.fillHistoryWithLongTexts();
         const auto shortcut = encodeShortcut(
             {.keyCode = kSpace,
              .modifierFlagsRaw = ControlFlag | OptionFlag | ShiftFlag | CommandFlag});
         w.storage.settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
         w.storage.settings.set(keys::customPushToTalkShortcutData, shortcut);
         w.storage.settings.set(keys::toggleHotkeyChoice, u"custom"_s);
         w.storage.settings.set(keys::customToggleShortcutData, shortcut);
       },
       nothing},
      {u"home-recording", [](Window& w) { w.fillHistory(); },
       [](Window& w) { w.m_model->home()->toggleDictation(); }},
      {u"home-permissions",
       [](Window& w) {
         w.system.microphoneAuthorization = MicrophoneAuthorization::Denied;
         w.system.isTrusted = false;
       },
       nothing},
      {u"home-copied", [](Window& w) { w.fillHistory(); },
       [](Window& w) { w.m_model->home()->history()->copy(1); }},
      {u"home-no-panel", nothing,
       [](Window& w) {
         w.m_model->toast()->show(
             u"Your panel doesn't show Vemo's icon. Its menu is in this window."_s);
       }},
      {u"stats-empty", nothing, [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-full",
       [](Window& w) {
         w.use(R"({"totalWordsTranscribed":184220,"totalMinutesTranscribed":1310.5,)"
               R"("totalUtterances":6142})");
       },
       [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-first-minute",
       [](Window& w) {
         w.use(
             R"({"totalWordsTranscribed":21,"totalMinutesTranscribed":0.15,"totalUtterances":1})");
       },
       [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-long",
       [](Window& w) {
         w.use(R"({"totalWordsTranscribed":2147483647,"totalMinutesTranscribed":14316557,)"
               R"("totalUtterances":2147483647})");
       },
       [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-refreshing", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"stats"_s);
         w.accountHttp.neverAnswer(u"/desktop/auth/profile"_s);
         w.m_model->stats()->refresh();
         w.pass(1s);
       }},
      {u"dictionary-empty", nothing, [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-loading", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.accountHttp.neverAnswer(u"/dictionary"_s);
         w.accountHttp.neverAnswer(u"/dictionary"_s);
         w.m_model->windowShown();
       }},
      {u"dictionary-full", [](Window& w) { w.fillDictionary(6); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-5000", [](Window& w) { w.fillDictionary(5000); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"shortcuts-empty", nothing, [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-full", [](Window& w) { w.fillShortcuts(3); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-5000", [](Window& w) { w.fillShortcuts(5000); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"sheet-word", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.m_model->dictionary()->sheet()->open();
       }},
      {u"sheet-word-typed", [](Window& w) { w.fillDictionary(6); },
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.m_model->dictionary()->edit(u"1"_s);
       }},
      {u"sheet-word-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.m_model->dictionary()->edit(u"1"_s);
       }},
      {u"sheet-shortcut", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"shortcuts"_s);
         w.m_model->shortcuts()->sheet()->open();
       }},
      {u"sheet-shortcut-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) {
         w.m_model->selectTab(u"shortcuts"_s);
         w.m_model->shortcuts()->edit(u"2"_s);
       }},
      {u"sheet-slack", nothing, [](Window& w) { w.m_model->slack()->open(); }},
      {u"sheet-slack-connecting", nothing,
       [](Window& w) {
         w.http.neverAnswer(u"/api/auth.test"_s);
         w.connectSlack();
       }},
      {u"sheet-slack-failed", nothing,
       [](Window& w) {
         w.http.fail(u"/api/auth.test"_s, UrlError::NotConnectedToInternet);
         w.connectSlack();
       }},
      {u"update-ready", [](Window& w) { w.fillHistory(); }, [](Window& w) { w.downloadUpdate(); }},
      {u"update-notes", nothing,
       [](Window& w) {
         w.downloadUpdate();
         w.m_updateCard->toggleNotes();
       }},
      {u"update-notes-long", nothing,
       [](Window& w) {
         w.downloadUpdate(u"# New\n"_s +
                          u"- Something that takes a whole line to tell\n"_s.repeated(40));
         w.m_updateCard->toggleNotes();
       }},
      {u"update-waiting", nothing,
       [](Window& w) {
         w.downloadUpdate();
         w.m_model->home()->toggleDictation();
       }},
      {u"slack-synced", nothing,
       [](Window& w) {
         w.answerSlack();
         w.connectSlack();
         w.pass(0s);
       }},
      {u"slack-connected", nothing,
       [](Window& w) {
         w.answerSlack();
         w.connectSlack();
         w.pass(3s);
       }},
  };
  return rows;
}

}  // namespace vemo
