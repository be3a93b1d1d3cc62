// The adapters of the desktop that Vemo runs on: the one place where they are chosen.
//
// Made once, on the main thread, before the logic that works with them.
#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <stop_token>

#include "platform/atspi/AtspiSecureInput.h"
#include "platform/canberra/CanberraSounds.h"
#include "platform/gio/GioThread.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseInputDevice.h"
#include "platform/pulse/PulseMicrophoneAccess.h"
#include "platform/pulse/PulseServer.h"
#include "platform/qt/QtApplicationWindows.h"
#include "platform/qt/QtCriticalAlert.h"
#include "platform/qt/QtMainThread.h"
#include "platform/qt/QtSystemEvents.h"
#include "platform/quick/QuickScenes.h"
#include "platform/secretservice/SecretServiceBackend.h"
#include "platform/tray/BusStatusItem.h"
#include "platform/x11/X11Clipboard.h"
#include "platform/x11/X11FocusedApplication.h"
#include "platform/x11/X11InputSources.h"
#include "platform/x11/X11KeyEventSource.h"
#include "platform/x11/X11KeyPoster.h"
#include "platform/x11/X11LoneModifier.h"
#include "platform/x11/X11Screens.h"
#include "platform/xdg/AbsentHaptics.h"
#include "platform/xdg/DesktopAppearance.h"
#include "platform/xdg/LinuxDeviceInformation.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

/// A folder of sounds or images: beside an installed program; a build tree takes them from the
/// sources.
QString resourceFolder(const QString& name);

/// The shared object of the windows and what it reads.
QuickScenes::Places windowPlaces();

struct Desktop {
  Desktop(std::unique_ptr<X11Clipboard> x11Clipboard, std::unique_ptr<X11KeyPoster> x11KeyPoster,
          std::unique_ptr<X11FocusedApplication> x11FocusedApplication,
          std::unique_ptr<X11Screens> x11Screens);

  /// Nothing where a display can't do what Vemo needs.
  static std::unique_ptr<Desktop> create(QtMainThread& mainThread);

  GioThread gio;
  PulseServer pulse{"Vemo", "brelmox.Vemo"};
  PulseMicrophoneAccess microphoneAccess{pulse};
  PulseAudioInput audioInput{pulse};
  PulseInputDevice inputDevice{pulse};
  CanberraSounds sounds{resourceFolder(u"sounds"_s), u"Vemo"_s, u"brelmox.Vemo"_s};
  SecretServiceBackend keyring;
  /// For a thread that may wait: a keyring that has just been started takes its time.
  std::stop_source impatience;
  SecretServiceBackend patientKeyring{std::chrono::seconds(5), impatience.get_token()};
  std::unique_ptr<X11Clipboard> clipboard;
  std::unique_ptr<X11KeyPoster> keyPoster;
  std::unique_ptr<X11FocusedApplication> focusedApplication;
  std::unique_ptr<X11Screens> screens;
  QtApplicationWindows windows;
  QuickScenes scenes{windowPlaces()};
  QtCriticalAlert alert;
  DesktopAppearance appearance;
  BusStatusItem statusItem{resourceFolder(u"icons/tray"_s)};
  QtSystemEvents systemEvents;
  AtspiSecureInput secureInput{gio};
  X11KeyEventSource keyEvents{keyPoster->keyboard()->connection().window()};
  X11LoneModifier loneModifier{keyPoster->keyboard()};
  AbsentHaptics haptics;
  LinuxDeviceInformation deviceInformation{inputDevice, [] { return readX11InputSources(); }};
};

}  // namespace vemo
