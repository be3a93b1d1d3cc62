// Everything that the settings window can be seen in.

#include "desktop/VirtualKeys.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {

using namespace std::chrono_literals;

namespace {

const QString accountPath = u"/desktop/auth/account"_s;
const QString namePath = u"/auth/profile"_s;
constexpr std::int64_t keyF8 = 100;

}  // namespace

using Window = SettingsOnFakes;

std::span<const Window::State> Window::table() {
  static constexpr auto nothing = [](Window&) {};
  static const State rows[] = {
      {u"settings-account", nothing, nothing},
      {u"settings-signed-out", [](Window& w) { w.signOut(); }, nothing},
      {u"settings-signing-in", [](Window& w) { w.signOut(); },
       [](Window& w) { w.m_model->account()->signIn(); }},
      {u"settings-sign-in-failed", [](Window& w) { w.signOut(); },
       [](Window& w) { w.auth->setLastError(u"Can't reach the server"_s); }},
      {u"settings-saving", nothing,
       [](Window& w) {
         w.accountHttp.neverAnswer(namePath);
         w.m_model->account()->setLastName(u"Bose"_s);
         w.m_model->account()->save();
       }},
      {u"settings-email-copied", nothing, [](Window& w) { w.m_model->account()->copyEmail(); }},
      {u"settings-delete-dialog", nothing, [](Window& w) { w.m_model->account()->askToDelete(); }},
      {u"settings-deleting", nothing,
       [](Window& w) {
         w.accountHttp.neverAnswer(accountPath);
         w.deleteAccount();
       }},
      {u"settings-deleted", nothing,
       [](Window& w) {
         w.accountHttp.answer(accountPath, 200, "{}");
         w.deleteAccount();
       }},
      {u"settings-not-deleted", nothing,
       [](Window& w) {
         w.accountHttp.fail(accountPath, UrlError::NotConnectedToInternet);
         w.deleteAccount();
       }},
      {u"settings-system", nothing, [](Window& w) { w.showSystem(); }},
      {u"settings-custom-keys",
       [](Window& w) {
         w.storage.settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
         w.storage.settings.set(
             keys::customPushToTalkShortcutData,
             encodeShortcut({.keyCode = keyF8, .modifierFlagsRaw = ControlFlag | ShiftFlag}));
         w.storage.settings.set(keys::dictationPillColor, u"teal"_s);
         w.storage.settings.set(keys::dictationLanguage, u"hi"_s);
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-no-permissions",
       [](Window& w) {
         w.system.microphoneAuthorization = MicrophoneAuthorization::Denied;
         w.system.isTrusted = false;
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-updates-off", [](Window& w) { w.configuration.updateFeedPublicKey.clear(); },
       [](Window& w) { w.showSystem(); }},
      {u"settings-update-ready", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_updates->willInstallUpdateOnQuit(
             {.displayVersion = u"1.4.0"_s, .buildVersion = u"140"_s, .notes = {}}, [] {});
       }},
      {u"settings-recorder", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->recorder()->openForPushToTalk();
       }},
      {u"settings-recorded", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->recorder()->openForToggle();
         w.m_keys.strike({KeyEvent::Type::KeyDown, kSpace, CommandFlag | ShiftFlag});
         w.m_keys.strike({KeyEvent::Type::KeyUp, kSpace, CommandFlag | ShiftFlag});
       }},
      {u"settings-slack", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->slack()->open();
       }},
      {u"settings-long-names",
       [](Window& w) {
         w.storage.settings.set(keys::authEmail, u"wolfeschlegelsteinhausenbergerdorff.senior@"_s +
                                                     u"department-of-long-names."_s.repeated(4) +
                                                     u"example"_s);
         w.storage.settings.set(keys::authDisplayName,
                                u"Adolph Blaine Charles David Earl Frederick "_s +
                                    u"Wolfeschlegelsteinhausenbergerdorff"_s.repeated(3));
       },
       nothing},
      {u"settings-unsaved", nothing,
       [](Window& w) {
         w.accountHttp.answer(namePath, 200, R"({"user":{"displayName":"Asha Bose"}})");
         w.m_model->account()->setLastName(u"Bose"_s);
       }},
      {u"settings-saved", nothing,
       [](Window& w) {
         w.accountHttp.answer(namePath, 200, R"({"user":{"displayName":"Asha Bose"}})");
         w.m_model->account()->setLastName(u"Bose"_s);
         w.m_model->account()->save();
       }},
      {u"settings-refreshing", nothing,
       [](Window& w) {
         w.accountHttp.neverAnswer(u"/desktop/auth/profile"_s);
         w.m_model->account()->refreshProfile();
       }},
      {u"settings-system-signed-out", [](Window& w) { w.signOut(); },
       [](Window& w) { w.showSystem(); }},
      {u"settings-project-scanning",
       [](Window& w) {
         w.holdDisk();
         w.storage.settings.set(keys::customWorkspacePath, u"/usr/share"_s);
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-folder", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->codebase()->chooseFolder();
       }},
      {u"settings-folder-missing", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->codebase()->chooseFolder();
         w.pass(0s);
         w.m_model->folderChooser()->acceptPath(u"/nowhere"_s);
       }},
      {u"settings-long-key",
       [](Window& w) {
         w.storage.settings.set(keys::toggleHotkeyChoice, u"custom"_s);
         w.storage.settings.set(keys::customToggleShortcutData,
                                encodeShortcut({.keyCode = kSpace,
                                                .modifierFlagsRaw = ControlFlag | OptionFlag |
                                                                    ShiftFlag | CommandFlag}));
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-recorded-long", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->recorder()->openForToggle();
         const auto all = ControlFlag | OptionFlag | ShiftFlag | CommandFlag;
         w.m_keys.strike({KeyEvent::Type::KeyDown, kSpace, all});
         w.m_keys.strike({KeyEvent::Type::KeyUp, kSpace, all});
       }},
  };
  return rows;
}

}  // namespace vemo
