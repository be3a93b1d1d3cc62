// Every word that a window says can be said in another language.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTranslator>

#include "ShownWindow.h"
#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Puts what it is asked for between marks.
class MarkingTranslator : public QTranslator {
 public:
  MarkingTranslator() { QCoreApplication::installTranslator(this); }
  ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }

  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* source, const char*, int) const override {
    return u"«"_s + QString::fromUtf8(source) + u"»"_s;
  }
};

/// The texts that no translator has been asked for.
template <typename Window>
QStringList untranslated(const QString& state, const QString& file, QSize size) {
  ShownWindow::makeApplication();
  const MarkingTranslator translator;
  Window offline(state);
  ShownWindow window(file, offline.model(), size);
  offline.pass({});
  window.draw();
  QStringList plain = window.texts();
  plain.removeIf([](const QString& text) { return text.contains(u'«'); });
  plain.removeDuplicates();
  return plain;
}

QStringList untranslatedOfMain(const QString& state) {
  return untranslated<MainWindowOnFakes>(state, u"main/MainWindow.qml"_s, {860, 2000});
}

QStringList untranslatedOfSettings(const QString& state) {
  return untranslated<SettingsOnFakes>(state, u"settings/SettingsWindow.qml"_s, {760, 2000});
}

TEST(TranslationTest, OfTheMainWindowOnlyTheProgramsNameAndFiguresStayAsTheyAre) {
  for (const auto& state :
       {u"home-permissions"_s, u"dictionary-empty"_s, u"dictionary-loading"_s, u"shortcuts-empty"_s,
        u"sheet-word"_s, u"sheet-shortcut"_s, u"sheet-slack"_s})
    EXPECT_THAT(untranslatedOfMain(state), ElementsAre(u"Vemo"_s)) << qUtf8Printable(state);
  EXPECT_THAT(untranslatedOfMain(u"stats-empty"_s), ElementsAre(u"Vemo"_s, u"0"_s));
}

TEST(TranslationTest, OfTheSettingsOnlyWhatIsTheUsersAndTheNamesOfLanguagesStayAsTheyAre) {
  EXPECT_THAT(untranslatedOfSettings(u"settings-signing-in"_s), IsEmpty());
  EXPECT_THAT(untranslatedOfSettings(u"settings-deleted"_s), IsEmpty());
  EXPECT_THAT(untranslatedOfSettings(u"settings-delete-dialog"_s),
              UnorderedElementsAre(u"AR"_s, u"asha.rao@example.org"_s, u"Asha"_s, u"Rao"_s));
  for (const auto& state :
       {u"settings-system"_s, u"settings-no-permissions"_s, u"settings-updates-off"_s,
        u"settings-update-ready"_s, u"settings-recorder"_s, u"settings-slack"_s})
    EXPECT_THAT(untranslatedOfSettings(state), ElementsAre(u"English"_s)) << qUtf8Printable(state);
}

TEST(TranslationTest, EveryLineOfTheMenuIsTranslatedAndTheLanguagesKeepTheirNames) {
  ShownWindow::makeApplication();
  const MarkingTranslator translator;
  MainWindowOnFakes offline(u"home-recording"_s);
  const QVariantList rows = offline.model().menu();
  EXPECT_FALSE(rows.isEmpty());
  for (const QVariant& row : rows) {
    const QString text = row.toMap().value(u"text"_s).toString();
    EXPECT_TRUE(text.isEmpty() || text.startsWith(u'«')) << qUtf8Printable(text);
  }
}

}  // namespace
}  // namespace vemo
