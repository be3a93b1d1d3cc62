// The sounds through a real sound server: heard on its sink, and never waited for.
#include "platform/canberra/CanberraSounds.h"

#include <gmock/gmock.h>

#include <QFile>

#include "BlockCollector.h"
#include "SoundServer.h"
#include "platform/pulse/PulseAudioInput.h"

using namespace Qt::Literals::StringLiterals;

namespace vemo {
namespace {

class CanberraSoundsTest : public testing::Test {
 protected:
  template <typename Call>
  static bool isPrompt(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::steady_clock::now() - start < std::chrono::seconds(1);
  }

  void write(const QString& name, const QByteArray& bytes) {
    QFile file(folder.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }

  QTemporaryDir folder;
  SoundServer soundServer;
  std::unique_ptr<CanberraSounds> sounds = std::make_unique<CanberraSounds>(
      QString::fromUtf8(VEMO_SOUNDS_FOLDER), u"Vemo"_s, u"brelmox.Vemo"_s);
};

TEST_F(CanberraSoundsTest, TheProgramsOwnSoundsAreHeardEachTimeTheyArePlayed) {
  soundServer.start();
  PulseServer server("Vemo", "brelmox.Vemo");
  PulseAudioInput input(server);
  for (const QString& name : {u"vemo_start"_s, u"vemo_stop"_s, u"vemo_start"_s}) {
    const auto sound = sounds->resource(name);
    ASSERT_NE(sound, nullptr);
    BlockCollector blocks;
    ASSERT_TRUE(input.prepare());
    ASSERT_TRUE(input.start(blocks.handler()));
    sound->play();
    EXPECT_TRUE(blocks.waitForSound()) << name.toStdString();
    EXPECT_TRUE(blocks.waitForFrames(48'000));  // the sound is over
    input.stop();
  }
}

TEST_F(CanberraSoundsTest, AResourceThatIsMissingOrNoWavIsNone) {
  CanberraSounds own(folder.path(), u"Vemo"_s, u"brelmox.Vemo"_s);
  write(u"text.wav"_s, "not a sound");
  write(u"empty.wav"_s, "");
  write(u"whole.wav"_s, "RIFF\x24\x01\x01\x01WAVEfmt ");
  EXPECT_EQ(own.resource(u"text"_s), nullptr);
  EXPECT_EQ(own.resource(u"empty"_s), nullptr);
  EXPECT_EQ(own.resource(u"absent"_s), nullptr);
  EXPECT_EQ(own.resource(u"../whole"_s), nullptr);
  EXPECT_NE(own.resource(u"whole"_s), nullptr);
}

TEST_F(CanberraSoundsTest, TheTwoSystemSoundsStandForSoundsOfTheTheme) {
  EXPECT_NE(sounds->system(u"Tink"_s), nullptr);
  EXPECT_NE(sounds->system(u"Pop"_s), nullptr);
  EXPECT_EQ(sounds->system(u"Basso"_s), nullptr);
}

TEST_F(CanberraSoundsTest, WithoutASoundServerASoundIsSilence) {
  const auto sound = sounds->resource(u"vemo_start"_s);
  EXPECT_TRUE(isPrompt([&] {
    for (int i = 0; i < 10; ++i) sound->play();
  }));
  EXPECT_TRUE(isPrompt([&] { sounds.reset(); }));
  sound->play();
}

TEST_F(CanberraSoundsTest, AFrozenSoundServerHoldsUpNeitherAPlayNorTheEnd) {
  soundServer.start();
  soundServer.freeze();
  const auto sound = sounds->resource(u"vemo_start"_s);
  EXPECT_TRUE(isPrompt([&] {
    for (int i = 0; i < 10; ++i) sound->play();
  }));
  EXPECT_TRUE(isPrompt([&] { sounds.reset(); }));
  soundServer.thaw();
}

}  // namespace
}  // namespace vemo
