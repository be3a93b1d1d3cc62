// Spoken names of files whose spelling the words alone don't tell: those of this program's own
// sources.
#pragma once

#include <QStringView>

namespace vemo {

struct SpokenFileStem {
  QStringView spoken;
  QStringView stem;
};

inline constexpr SpokenFileStem spokenFileStems[] = {
    {u"memo app", u"VemoApp"},
    {u"memoapp", u"VemoApp"},
    {u"demo app", u"VemoApp"},
    {u"demoapp", u"VemoApp"},
    {u"vemo app", u"VemoApp"},
    {u"vemoapp", u"VemoApp"},
    {u"memo", u"Vemo"},
    {u"demo", u"Vemo"},
    {u"main window view", u"MainWindowView"},
    {u"mainwindowview", u"MainWindowView"},
    {u"app state", u"AppState"},
    {u"appstate", u"AppState"},
    {u"config", u"Config"},
    {u"recording hud", u"RecordingHUD"},
    {u"recordinghud", u"RecordingHUD"},
    {u"text injector", u"TextInjector"},
    {u"textinjector", u"TextInjector"},
    {u"auth manager", u"AuthManager"},
    {u"authmanager", u"AuthManager"},
    {u"hotkey manager", u"HotkeyManager"},
    {u"hotkeymanager", u"HotkeyManager"},
    {u"permissions manager", u"PermissionsManager"},
    {u"permissionsmanager", u"PermissionsManager"},
    {u"context processor", u"ContextProcessor"},
    {u"contextprocessor", u"ContextProcessor"},
};

}  // namespace vemo
