#include "platform/xdg/LinuxDeviceInformation.h"

#include <QGuiApplication>
#include <QLocale>
#include <QScreen>
#include <QTimeZone>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/xdg/DesktopAppearance.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Where packages put programs, as opposed to a person's own folders.
bool isInApplicationsFolder(const QString& programPath) {
  constexpr std::array folders{u"/usr/", u"/opt/"};
  return std::ranges::any_of(
      folders, [&](const char16_t* folder) { return programPath.startsWith(QStringView(folder)); });
}

/// The user's languages, each once: a locale lists "de" and "de-DE" of one wish.
QStringList preferredLanguages(const QLocale& locale) {
  QStringList languages = locale.uiLanguages();
  languages.removeDuplicates();
  return languages;
}

std::optional<QString> nonEmpty(const QString& text) {
  return text.isEmpty() ? std::nullopt : std::optional(text);
}

/// In pixels, whatever the scale.
std::optional<QString> sizeOf(const QScreen* screen) {
  if (!screen) return std::nullopt;
  const QSizeF size = QSizeF(screen->size()) * screen->devicePixelRatio();
  return u"%1x%2"_s.arg(qRound(size.width())).arg(qRound(size.height()));
}

}  // namespace

LinuxDeviceInformation::LinuxDeviceInformation(const InputDevice& inputDevice,
                                               std::function<QStringList()> inputSources)
    : m_inputDevice(inputDevice),
      m_inputSources(std::move(inputSources)),
      m_appearance(std::make_unique<DesktopAppearance>()) {}

LinuxDeviceInformation::~LinuxDeviceInformation() = default;

DeviceFacts LinuxDeviceInformation::read() const {
  const QLocale locale = QLocale::system();
  const QString identifier = locale.name();
  return {.displayCount = int(QGuiApplication::screens().size()),
          .mainDisplay = sizeOf(QGuiApplication::primaryScreen()),
          .appearance = m_appearance->read(),
          .inApplicationsFolder = isInApplicationsFolder(QCoreApplication::applicationFilePath()),
          .languages = preferredLanguages(locale),
          .localeIdentifier = identifier,
          .localeRegion = nonEmpty(identifier.section(u'_', 1, 1)),
          .timeZone = nonEmpty(QString::fromLatin1(QTimeZone::systemTimeZoneId())),
          .inputSources = m_inputSources(),
          .microphoneType = wireName(m_inputDevice.transport())};
}

}  // namespace vemo
