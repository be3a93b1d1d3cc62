#include "ui/models/HomeModel.h"

#include "desktop/HotkeyChoices.h"
#include "session/SessionFixture.h"
#include "ui/models/ToastModel.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;

class HomeModelTest : public SessionFixture {
 protected:
  void startUp() {
    SessionFixture::startUp();
    model.emplace(HomeModel::With{.mainThread = mainThread,
                                  .clock = clock,
                                  .settings = storage.settings,
                                  .appState = *appState,
                                  .permissions = *permissions,
                                  .toast = toast});
    QObject::connect(&*model, &HomeModel::changed, [this] { ++changes; });
    QObject::connect(&*model, &HomeModel::languageChanged, [this] { ++languageChanges; });
  }

  ToastModel toast{clock, mainThread};
  std::optional<HomeModel> model;
  int changes = 0;
  int languageChanges = 0;
};

TEST_F(HomeModelTest, TheFirstLineNamesTheTwoKeys) {
  startUp();
  EXPECT_EQ(model->keysLine(),
            u"Hold Either Option (⌥) or tap Fn / Globe to talk into any textbox."_s);
}

TEST_F(HomeModelTest, AnotherKeyIsNamedAtOnce) {
  startUp();
  saveShortcut(storage.settings, HotkeyTrigger::Toggle,
               {.keyCode = 49, .modifierFlagsRaw = 0x40000, .presetId = u"controlSpace"_s});
  EXPECT_GT(changes, 0);
  EXPECT_EQ(model->keysLine(),
            u"Hold Either Option (⌥) or tap Control + Space (⌃␣) to talk into "
            u"any textbox."_s);
  changes = 0;
  saveShortcut(storage.settings, HotkeyTrigger::PushToTalk, {.keyCode = 96});
  EXPECT_GT(changes, 0);
  EXPECT_EQ(model->keysLine(), u"Hold F5 or tap Control + Space (⌃␣) to talk into any textbox."_s);
}

TEST_F(HomeModelTest, WithoutTranscriptionsTheUserIsToldHowToBegin) {
  startUp();
  EXPECT_EQ(model->emptyText(),
            u"Looks like you haven't dictated anything yet.\nOpen a textbox anywhere and hold "
            u"Either Option (⌥) to get started."_s);
  EXPECT_EQ(model->history()->count(), 0);
}

TEST_F(HomeModelTest, TheLanguageMenuListsWhatCanBeDictated) {
  startUp();
  EXPECT_EQ(model->languageTitle(), u"Language: English"_s);
  ASSERT_EQ(model->languages().size(), 25);
  const auto english = model->languages().at(1).toMap();
  EXPECT_EQ(english[u"code"_s], u"en"_s);
  EXPECT_EQ(english[u"text"_s], u"✓ English (English (India / Global))"_s);
  EXPECT_EQ(english[u"isCurrent"_s], true);
}

TEST_F(HomeModelTest, ChoosingALanguageStoresItAndShowsIt) {
  startUp();
  model->chooseLanguage(u"hi"_s);
  EXPECT_EQ(storage.settings.get(keys::dictationLanguage), u"hi"_s);
  EXPECT_EQ(model->languageTitle(), u"Language: Hindi"_s);
  EXPECT_EQ(languageChanges, 1);
}

TEST_F(HomeModelTest, ALanguageThatDoesNotExistIsNotStored) {
  startUp();
  model->chooseLanguage(u"xx"_s);
  EXPECT_FALSE(storage.settings.contains(keys::dictationLanguage));
}

TEST_F(HomeModelTest, TheButtonStartsAndStopsADictation) {
  startUp();
  EXPECT_EQ(model->dictationLabel(), u"Start Dictating Now"_s);
  EXPECT_EQ(model->dictationSymbol(), u"record.circle"_s);
  EXPECT_EQ(model->stateLabel(), QString());
  model->toggleDictation();
  mainThread.drain();
  EXPECT_EQ(appState->phase(), Phase::recording());
  EXPECT_GT(changes, 0);
  EXPECT_EQ(model->dictationLabel(), u"Stop Dictation"_s);
  EXPECT_EQ(model->dictationSymbol(), u"stop.fill"_s);
  EXPECT_EQ(model->stateLabel(), u"Recording"_s);
  model->toggleDictation();
  mainThread.drain();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_EQ(model->dictationLabel(), u"Start Dictating Now"_s);
}

TEST_F(HomeModelTest, WhileVemoIsOffTheButtonOffersNothing) {
  startUp();
  EXPECT_TRUE(model->canToggleDictation());
  changes = 0;
  appState->setEnabled(false);
  EXPECT_FALSE(model->canToggleDictation());
  EXPECT_GT(changes, 0);
  appState->setEnabled(true);
  EXPECT_TRUE(model->canToggleDictation());
}

TEST_F(HomeModelTest, OnlyARecordingReadsAsOne) {
  startUp();
  http.neverAnswer(dictatePath);
  startRecording();
  hear(1.0);
  stopRecording();
  ASSERT_EQ(appState->phase(), Phase::transcribing());
  EXPECT_EQ(model->dictationLabel(), u"Start Dictating Now"_s);
  EXPECT_EQ(model->stateLabel(), QString());
}

TEST_F(HomeModelTest, WhatIsMissingForADictationIsAskedForUntilItIsGranted) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.isTrusted = false;
  startUp();
  EXPECT_TRUE(model->needsMicrophone());
  EXPECT_TRUE(model->needsAccessibility());
  model->grantMicrophone();
  model->grantAccessibility();
  EXPECT_THAT(system.openedPanes, ElementsAre(QUrl(QString::fromUtf16(microphonePane)),
                                              QUrl(QString::fromUtf16(accessibilityPane))));
  system.microphoneAuthorization = MicrophoneAuthorization::Granted;
  system.isTrusted = true;
  changes = 0;
  clock.advance(2s);
  EXPECT_FALSE(model->needsMicrophone());
  EXPECT_FALSE(model->needsAccessibility());
  EXPECT_GT(changes, 0);
}

}  // namespace
}  // namespace vemo
