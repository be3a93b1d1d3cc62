#include "Sights.h"

#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {

namespace {

constexpr QSize mainSize{860, 620};
constexpr QSize settingsSize{760, 640};
constexpr QSize smallestSize{640, 480};
/// As high as all the sections of the system tab are together.
constexpr QSize wholeSystemTab{760, 1960};

/// What is below the fold of the system tab.
const QStringList seenAsAWhole{u"settings-system"_s,          u"settings-custom-keys"_s,
                               u"settings-no-permissions"_s,  u"settings-updates-off"_s,
                               u"settings-update-ready"_s,    u"settings-system-signed-out"_s,
                               u"settings-project-scanning"_s};

/// Where there is least room, and where sides matter.
const QStringList telling{u"signing-in"_s,          u"home-permissions"_s,
                          u"home-full"_s,           u"home-long"_s,
                          u"stats-full"_s,          u"dictionary-long"_s,
                          u"shortcuts-full"_s,      u"sheet-shortcut"_s,
                          u"sheet-slack-failed"_s,  u"update-notes"_s,
                          u"settings-account"_s,    u"settings-long-names"_s,
                          u"settings-signing-in"_s, u"settings-system"_s,
                          u"settings-recorder"_s,   u"settings-system-signed-out"_s};

QString nameOf(Brightness brightness) {
  return brightness == Brightness::Dark ? u"dark"_s : u"light"_s;
}

QSize sizeOf(const QString& state) {
  if (seenAsAWhole.contains(state)) return wholeSystemTab;
  return state.startsWith(u"settings-") ? settingsSize : mainSize;
}

Sight sight(const QString& state, Brightness brightness) {
  return {.name = state + u'-' + nameOf(brightness),
          .state = state,
          .size = sizeOf(state),
          .brightness = brightness};
}

void addStates(QList<Sight>& sights) {
  for (const QString& state : MainWindowOnFakes::states() + SettingsOnFakes::states())
    for (const auto brightness : {Brightness::Light, Brightness::Dark})
      sights.append(sight(state, brightness));
}

/// What only a press brings up.
void addPressed(QList<Sight>& sights) {
  struct Press {
    QString state;
    QString button;
    QString name;
  };
  for (const auto& [state, button, name] :
       {Press{u"home-empty"_s, u"Language: English"_s, u"home-language-menu"_s},
        Press{u"home-full"_s, u"Vemo menu"_s, u"home-program-menu"_s},
        Press{u"signed-out"_s, u"Vemo menu"_s, u"signed-out-program-menu"_s},
        Press{u"settings-system"_s, u"English (Translit)"_s, u"settings-mode-menu"_s}}) {
    for (const auto brightness : {Brightness::Light, Brightness::Dark}) {
      Sight pressed = sight(state, brightness);
      pressed.name = name + u'-' + nameOf(brightness);
      if (state == u"settings-system") pressed.size = settingsSize;
      pressed.pressed = button;
      sights.append(pressed);
    }
  }
}

void addFocused(QList<Sight>& sights) {
  for (const auto& [state, tabs] :
       {std::pair{u"home-full"_s, 3}, std::pair{u"dictionary-full"_s, 8},
        std::pair{u"settings-account"_s, 6}}) {
    Sight focused = sight(state, Brightness::Light);
    focused.name = state + u"-focused"_s;
    focused.tabs = tabs;
    sights.append(focused);
  }
}

/// One that can't be read as it is, light or dark.
void addAccented(QList<Sight>& sights) {
  for (const auto& state : {u"home-full"_s, u"settings-custom-keys"_s}) {
    for (const auto brightness : {Brightness::Light, Brightness::Dark}) {
      Sight accented = sight(state, brightness);
      accented.name = state + u"-accent-"_s + nameOf(brightness);
      accented.size = state == u"home-full" ? mainSize : settingsSize;
      accented.accent =
          brightness == Brightness::Light ? QColor(0xf6, 0xd3, 0x2d) : QColor(0x61, 0x35, 0x83);
      sights.append(accented);
    }
  }
}

void addSmallAndTurned(QList<Sight>& sights) {
  for (const QString& state : telling) {
    Sight small = sight(state, Brightness::Light);
    small.name = state + u"-smallest"_s;
    small.size = smallestSize;
    sights.append(small);
    Sight turned = sight(state, Brightness::Light);
    turned.name = state + u"-right-to-left"_s;
    turned.direction = Qt::RightToLeft;
    sights.append(turned);
  }
}

}  // namespace

QList<Sight> sightsAtScale(qreal scale) {
  QList<Sight> sights;
  if (scale == 1) {
    addStates(sights);
    addPressed(sights);
    addFocused(sights);
    addAccented(sights);
    addSmallAndTurned(sights);
  } else if (scale == 1.5) {
    sights = {sight(u"home-full"_s, Brightness::Light), sight(u"stats-full"_s, Brightness::Dark)};
    for (auto& each : sights) each.name += u"-at-1.5"_s;
  } else {
    for (const auto brightness : {Brightness::Light, Brightness::Dark})
      for (const auto& state : {u"home-full"_s, u"dictionary-full"_s, u"stats-full"_s})
        sights.append(sight(state, brightness));
  }
  return sights;
}

}  // namespace vemo
