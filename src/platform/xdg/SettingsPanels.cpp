#include "platform/xdg/SettingsPanels.h"

#include <gio/gdesktopappinfo.h>
#include <signal.h>
#include <sys/resource.h>

#include <memory>
#include <string>
#include <vector>

namespace vemo {

namespace {

struct Entry {
  SettingsPanel panel;
  const char* identifier;
  const char* arguments = "";  ///< that lead to the right page of it
};

/// What belongs to one desktop comes before what runs on any.
constexpr Entry entries[] = {
    {SettingsPanel::Sound, "gnome-sound-panel.desktop"},
    {SettingsPanel::Sound, "kcm_pulseaudio.desktop"},
    {SettingsPanel::Sound, "cinnamon-settings-sound.desktop"},
    {SettingsPanel::Sound, "mate-volume-control.desktop", " --page=input"},
    {SettingsPanel::Sound, "pavucontrol.desktop", " --tab=4"},
    {SettingsPanel::Sound, "org.pulseaudio.pavucontrol.desktop", " --tab=4"},
    {SettingsPanel::Sound, "pavucontrol-qt.desktop", " --tab=4"},
    {SettingsPanel::Accessibility, "gnome-universal-access-panel.desktop"},
    {SettingsPanel::Accessibility, "kcm_access.desktop"},
    {SettingsPanel::Accessibility, "cinnamon-settings-universal-access.desktop"},
    {SettingsPanel::Accessibility, "mate-at-properties.desktop"},
    {SettingsPanel::Accessibility, "xfce4-accessibility-settings.desktop"},
};

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using Application = std::unique_ptr<GDesktopAppInfo, Unref>;

/// This program keeps signals waiting and forbids cores; a program that it starts is not to inherit
/// that. Runs between fork and exec.
void becomeOrdinaryProcess(gpointer) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  rlimit cores{};
  if (getrlimit(RLIMIT_CORE, &cores) == 0) {
    cores.rlim_cur = cores.rlim_max;
    setrlimit(RLIMIT_CORE, &cores);
  }
}

bool launch(GDesktopAppInfo* application) {
  return g_desktop_app_info_launch_uris_as_manager(application, nullptr, nullptr,
                                                   G_SPAWN_SEARCH_PATH, becomeOrdinaryProcess,
                                                   nullptr, nullptr, nullptr, nullptr);
}

bool launch(GDesktopAppInfo* application, const std::string& arguments) {
  if (arguments.empty()) return launch(application);
  const char* commandLine = g_app_info_get_commandline(G_APP_INFO(application));
  if (!commandLine) return false;
  const Application withArguments(G_DESKTOP_APP_INFO(g_app_info_create_from_commandline(
      (commandLine + arguments).c_str(), nullptr, G_APP_INFO_CREATE_NONE, nullptr)));
  return withArguments && launch(withArguments.get());
}

}  // namespace

bool openSettingsPanel(SettingsPanel panel) {
  for (const bool isForThisDesktop : {true, false}) {
    for (const Entry& entry : entries) {
      if (entry.panel != panel) continue;
      // Absent too when the program that the entry starts isn't installed.
      const Application application(g_desktop_app_info_new(entry.identifier));
      if (!application) continue;
      if (isForThisDesktop && !g_desktop_app_info_get_show_in(application.get(), nullptr)) continue;
      if (launch(application.get(), entry.arguments)) return true;
    }
  }
  return false;
}

}  // namespace vemo
