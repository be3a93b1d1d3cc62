#include "ui/models/AccountSettingsModel.h"

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString namePath = u"/auth/profile"_s;
const QString accountPath = u"/desktop/auth/account"_s;
const QString profilePath = u"/desktop/auth/profile"_s;

class AccountSettingsModelTest : public SessionFixture {
 protected:
  void open(const QString& name = u"Asha Rao"_s) {
    storage.settings.set(keys::authEmail, u"asha@example.org"_s);
    if (!name.isEmpty()) storage.settings.set(keys::authDisplayName, name);
    makeModel();
  }

  void openSignedOut() {
    secrets.remove(u"brelmox.Vemo"_s, u"authToken"_s);
    configuration.googleClientId = u"77-abc.apps.accounts.example"_s;
    configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
    configuration.googleTokenEndpoint = QUrl(u"https://tokens.example/token"_s);
    makeModel();
  }

  void makeModel() {
    startUp();
    model = std::make_unique<AccountSettingsModel>(AccountSettingsModel::With{
        .mainThread = FakeTime::mainThread,
        .appState = *appState,
        .auth = *auth,
        .clipboard = clipboard,
        .showToast = [this](const QString& text) { toasts.append(text); }});
    QObject::connect(model.get(), &AccountSettingsModel::closeRequested, [this] { ++closings; });
  }

  void confirmDeletion() {
    model->askToDelete();
    model->confirmDelete();
  }

  static QByteArray profile(const QString& name) {
    return compactJson({{u"status"_s, u"success"_s}, {u"user"_s, QJsonObject{{u"name"_s, name}}}});
  }

  std::unique_ptr<AccountSettingsModel> model;
  QStringList toasts;
  int closings = 0;
};

// The profile card

TEST_F(AccountSettingsModelTest, TheNameIsSplitAtItsFirstBlank) {
  open(u"  Asha  Devi Rao "_s);
  EXPECT_EQ(model->firstName(), u"Asha"_s);
  EXPECT_EQ(model->lastName(), u"Devi Rao"_s);
  EXPECT_EQ(model->initials(), u"AR"_s);
  EXPECT_FALSE(model->canSave());
}

TEST_F(AccountSettingsModelTest, ASingleNameIsTheFirst) {
  open(u"Asha"_s);
  EXPECT_EQ(model->firstName(), u"Asha"_s);
  EXPECT_EQ(model->lastName(), QString());
  EXPECT_EQ(model->initials(), u"A"_s);
}

TEST_F(AccountSettingsModelTest, WithoutANameTheInitialIsTheAddresss) {
  open({});
  EXPECT_EQ(model->initials(), u"A"_s);
}

TEST_F(AccountSettingsModelTest, AnInitialIsNeverHalfACharacter) {
  open(u"𝒜sha 𝒷ose"_s);
  EXPECT_EQ(model->initials(), u"𝒜𝒷"_s);
}

TEST_F(AccountSettingsModelTest, CopyingTheAddressConfirmsItAndReportsNoTranscript) {
  open();
  model->copyEmail();
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"asha@example.org"_s);
  EXPECT_THAT(toasts, ElementsAre(u"Email address copied to clipboard"_s));
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(AccountSettingsModelTest, AClipboardThatCannotBeWrittenIsToldAndNotConfirmed) {
  open();
  clipboard.refuseWrites();
  model->copyEmail();
  EXPECT_THAT(toasts, ElementsAre(u"The clipboard can't be written"_s));
}

TEST_F(AccountSettingsModelTest, WithNobodySignedInThereIsNoAddressToCopy) {
  openSignedOut();
  model->copyEmail();
  EXPECT_TRUE(clipboard.writes().empty());
  EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(AccountSettingsModelTest, SavingSendsBothNamesAsOneAndConfirms) {
  open();
  model->setFirstName(u" Asha "_s);
  model->setLastName(u"Bose"_s);
  EXPECT_TRUE(model->canSave());
  accountHttp.answer(namePath, 200, "{}");
  model->save();
  EXPECT_TRUE(model->isSaving());
  EXPECT_FALSE(model->canSave());
  clock.advance(0s);
  EXPECT_FALSE(model->isSaving());
  EXPECT_FALSE(model->canSave());
  EXPECT_EQ(accountHttp.requests().back().body, R"({"name":"Asha Bose"})");
  EXPECT_EQ(auth->displayName(), u"Asha Bose"_s);
  EXPECT_THAT(toasts, ElementsAre(u"Profile saved"_s));
}

TEST_F(AccountSettingsModelTest, ANameThatIsNotTakenStaysInTheFieldsAndCanBeSavedAgain) {
  open();
  model->setLastName(u"Bose"_s);
  accountHttp.answer(namePath, 500, "{}");
  model->save();
  clock.advance(0s);
  EXPECT_FALSE(model->isSaving());
  EXPECT_EQ(model->lastName(), u"Bose"_s);
  EXPECT_TRUE(model->canSave());
  EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(AccountSettingsModelTest, AnEmptyNameCannotBeSaved) {
  open();
  model->setFirstName(u"  "_s);
  model->setLastName({});
  EXPECT_FALSE(model->canSave());
  model->save();
  EXPECT_FALSE(model->isSaving());
}

TEST_F(AccountSettingsModelTest, SavingTwiceAtOnceSendsOneRequest) {
  open();
  model->setLastName(u"Bose"_s);
  accountHttp.answer(namePath, 200, "{}");
  const auto before = accountHttp.requests().size();
  model->save();
  model->save();
  clock.advance(0s);
  EXPECT_EQ(accountHttp.requests().size(), before + 1);
}

TEST_F(AccountSettingsModelTest, ANewNameOfTheAccountFillsFieldsThatNobodyTouched) {
  open();
  accountHttp.answer(profilePath, 200, profile(u"Meera Sen"_s));
  model->refreshProfile();
  EXPECT_TRUE(model->isRefreshing());
  clock.advance(0s);
  EXPECT_FALSE(model->isRefreshing());
  EXPECT_EQ(model->firstName(), u"Meera"_s);
  EXPECT_EQ(model->lastName(), u"Sen"_s);
}

TEST_F(AccountSettingsModelTest, ANewNameOfTheAccountLeavesWhatTheUserHasTyped) {
  open();
  model->setFirstName(u"Anjali"_s);
  accountHttp.answer(profilePath, 200, profile(u"Meera Sen"_s));
  model->refreshProfile();
  clock.advance(0s);
  EXPECT_EQ(model->firstName(), u"Anjali"_s);
  EXPECT_EQ(model->lastName(), u"Rao"_s);
}

TEST_F(AccountSettingsModelTest, RefreshingWhileSignedOutAsksNobody) {
  openSignedOut();
  model->refreshProfile();
  EXPECT_FALSE(model->isRefreshing());
}

// Signing in and out

TEST_F(AccountSettingsModelTest, ASignInRunsUntilItIsCancelled) {
  openSignedOut();
  EXPECT_FALSE(model->isSignedIn());
  model->signIn();
  mainThread.drain();
  EXPECT_TRUE(model->isSigningIn());
  model->cancelSignIn();
  mainThread.drain();
  EXPECT_FALSE(model->isSigningIn());
}

TEST_F(AccountSettingsModelTest, WhatASignInFailedOfIsTold) {
  openSignedOut();
  EXPECT_EQ(model->errorText(), QString());
  auth->setLastError(u"Can't reach the server"_s);
  EXPECT_EQ(model->errorText(), u"Can't reach the server"_s);
}

TEST_F(AccountSettingsModelTest, SigningOutClearsWhatThisMachineHoldsOfTheUser) {
  open();
  storage.settings.set(keys::customDictionaryEntries, QByteArray("[]"));
  model->setFirstName(u"Anjali"_s);
  model->signOut();
  EXPECT_FALSE(model->isSignedIn());
  EXPECT_EQ(model->email(), QString());
  EXPECT_EQ(model->firstName(), QString());
  EXPECT_EQ(model->lastName(), QString());
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
}

TEST_F(AccountSettingsModelTest, TypedNamesOfANamelessAccountGoWithTheSession) {
  open({});
  model->setFirstName(u"Anjali"_s);
  model->signOut();
  EXPECT_EQ(model->firstName(), QString());
}

// Deleting the account

TEST_F(AccountSettingsModelTest, DeletingAsksFirst) {
  open();
  EXPECT_EQ(model->deleteLabel(), u"Delete Account…"_s);
  model->askToDelete();
  EXPECT_TRUE(model->isDeleteDialogOpen());
  model->cancelDelete();
  EXPECT_FALSE(model->isDeleteDialogOpen());
  model->confirmDelete();
  EXPECT_FALSE(model->isDeletingAccount());
}

TEST_F(AccountSettingsModelTest, WithNobodySignedInThereIsNothingToDelete) {
  openSignedOut();
  model->askToDelete();
  EXPECT_FALSE(model->isDeleteDialogOpen());
}

TEST_F(AccountSettingsModelTest, WhileTheDeletionRunsTheButtonSaysSoAndAsksNothing) {
  open();
  accountHttp.answer(accountPath, 500, "{}");
  confirmDeletion();
  EXPECT_TRUE(model->isDeletingAccount());
  EXPECT_FALSE(model->isDeleteDialogOpen());
  EXPECT_EQ(model->deleteLabel(), u"Deleting…"_s);
  model->askToDelete();
  EXPECT_FALSE(model->isDeleteDialogOpen());
  clock.advance(0s);
  EXPECT_EQ(model->deleteLabel(), u"Delete Account…"_s);
}

TEST_F(AccountSettingsModelTest, ADeletedAccountLeavesNothingHereAndClosesTheWindowAfterTheAlert) {
  open();
  accountHttp.answer(accountPath, 200, "{}");
  confirmDeletion();
  clock.advance(0s);
  EXPECT_FALSE(model->isDeletingAccount());
  EXPECT_FALSE(model->isSignedIn());
  EXPECT_EQ(model->alertTitle(), u"Your account was deleted"_s);
  EXPECT_EQ(model->alertText(),
            u"Thanks for trying Vemo. You can sign in again any time to start a new account."_s);
  EXPECT_EQ(closings, 0);
  model->dismissAlert();
  EXPECT_FALSE(model->isAlertOpen());
  EXPECT_EQ(closings, 1);
  model->dismissAlert();
  EXPECT_EQ(closings, 1);
}

TEST_F(AccountSettingsModelTest, AFailedDeletionTellsWhyAndKeepsSessionAndWindow) {
  open();
  accountHttp.answer(accountPath, 409, R"({"error":"A payment is open."})");
  confirmDeletion();
  clock.advance(0s);
  EXPECT_EQ(model->alertTitle(), u"Your account wasn't deleted"_s);
  EXPECT_EQ(model->alertText(), u"A payment is open."_s);
  EXPECT_TRUE(model->isSignedIn());
  model->dismissAlert();
  EXPECT_FALSE(model->isAlertOpen());
  EXPECT_EQ(closings, 0);
}

TEST_F(AccountSettingsModelTest, AnAnswerThatComesAfterSigningOutLeavesTheNextSessionAlone) {
  open();
  accountHttp.answer(accountPath, 200, "{}");
  confirmDeletion();
  model->signOut();
  tokens->write(u"another"_s, u"authToken"_s);
  storage.settings.set(keys::customDictionaryEntries, QByteArray("[]"));
  clock.advance(0s);
  EXPECT_TRUE(model->isAlertOpen());
  EXPECT_EQ(tokens->read(u"authToken"_s), u"another"_s);
  EXPECT_TRUE(storage.settings.contains(keys::customDictionaryEntries));
}

TEST_F(AccountSettingsModelTest, SigningOutClosesTheQuestion) {
  open();
  model->askToDelete();
  model->signOut();
  EXPECT_FALSE(model->isDeleteDialogOpen());
}

TEST_F(AccountSettingsModelTest, ClosingAllDialogsDecidesNothing) {
  open();
  model->askToDelete();
  model->closeDialogs();
  EXPECT_FALSE(model->isDeleteDialogOpen());
  EXPECT_FALSE(model->isDeletingAccount());
}

}  // namespace
}  // namespace vemo
