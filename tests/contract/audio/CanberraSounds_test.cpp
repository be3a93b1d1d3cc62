// The sounds through a real sound server: heard on its sink, and never waited for.
#include "platform/canberra/CanberraSounds.h"

#include <gmock/gmock.h>

#include <QFile>

#include "BlockCollector.h"
#include "SoundServer.h"
#include "fakes/OnceWithin.h"
#include "platform/pulse/PulseAudioInput.h"

using namespace Qt::Literals::StringLiterals;

namespace vemo {
namespace {

class CanberraSoundsTest : public testing::Test {
 protected:
  template <typename Call>
  static bool isPrompt(Call call) {
    return isOnceWithin(std::chrono::seconds(1), call);
  }

  static std::unique_ptr<CanberraSounds> makeSounds() {
    return std::make_unique<CanberraSounds>(QString::fromUtf8(VEMO_SOUNDS_FOLDER), u"Vemo"_s,
                                            u"brelmox.Vemo"_s);
  }

  /// Ten plays of one sound, and the end of all sounds.
  void expectNoWait() {
    EXPECT_TRUE(isPrompt([this] {
      const auto sound = sounds->resource(u"vemo_start"_s);
      for (int i = 0; i < 10; ++i) sound->play();
    }));
    EXPECT_TRUE(isPrompt([] {
      const auto ending = makeSounds();
      ending->resource(u"vemo_start"_s)->play();
    }));
  }

  void write(const QString& name, const QByteArray& bytes) {
    QFile file(folder.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }

  QTemporaryDir folder;
  SoundServer soundServer;
  std::unique_ptr<CanberraSounds> sounds = makeSounds();
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
  expectNoWait();
  const auto sound = sounds->resource(u"vemo_start"_s);
  sounds.reset();
  sound->play();
}

TEST_F(CanberraSoundsTest, AFrozenSoundServerHoldsUpNeitherAPlayNorTheEnd) {
  soundServer.start();
  soundServer.freeze();
  expectNoWait();
  soundServer.thaw();
}

}  // namespace
}  // namespace vemo
