// The main window's real models on fakes, brought into a state that somebody wants to look at.
//
// Main thread only. Time stands still until it is let pass.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <span>

#include "fakes/FakeApplicationSheets.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeScenes.h"
#include "session/DictionaryList.h"
#include "session/SessionOnFakes.h"
#include "session/ShortcutList.h"
#include "ui/models/MainWindowModel.h"
#include "ui/models/MenuModel.h"
#include "ui/models/UpdateReadyCardModel.h"
#include "updates/UpdateManager.h"
#include "windows/offline/OfflineWindow.h"

namespace vemo {

/// A base, so that it is there before the session.
struct OfflineTime {
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
};

class MainWindowOnFakes : public OfflineWindow, private OfflineTime, private SessionOnFakes {
 public:
  /// All states that can be asked for, in the order in which they are best looked at.
  static QStringList states();

  /// `state` is one of states().
  explicit MainWindowOnFakes(const QString& state);

  MainWindowModel& model() { return *m_model; }
  UpdateReadyCardModel& updateCard() { return *m_updateCard; }

  /// From then on it is ready to be installed.
  void downloadUpdate(const QString& notes =
                          u"# New\n- Dictate in **25** languages\n- The pill comes in `teal`\n\n"
                          u"# Fixed\n- A long dictation keeps its last words\n"
                          u"Thanks to everybody who has written."_s);

  /// What the user has opened and ended.
  const FakeScenes& scenes() const { return m_scenes; }
  int quits() const { return m_quits; }
  /// What the clipboard holds.
  QString copiedText();

  Scene scene() const override { return Scene::Main; }
  QObject& viewModel() override { return *m_model; }
  void pass(Clock::Duration duration) override { clock.advance(duration); }

 private:
  struct State {
    const char16_t* name;
    void (*prepare)(MainWindowOnFakes&);  ///< what is there at the start
    void (*act)(MainWindowOnFakes&);      ///< what happens then
  };
  static std::span<const State> table();

  void start();
  void signOut();
  void fillHistory();
  void fillHistoryWithLongTexts();
  void fillDictionary(int count);
  void fillShortcuts(int count);
  void fillWithLongTexts();
  void use(const QByteArray& consumption);
  void answerSlack();
  void connectSlack();

  std::optional<DictionaryList> m_dictionary;
  std::optional<ShortcutList> m_shortcuts;
  FakeApplicationSheets m_sheets;
  std::optional<UpdateManager> m_updates;
  std::optional<UpdateReadyCardModel> m_updateCard;
  FakeScenes m_scenes;
  std::optional<MenuModel> m_menu;
  int m_quits = 0;
  std::optional<MainWindowModel> m_model;
};

}  // namespace vemo
