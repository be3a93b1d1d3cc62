#include "platform/pulse/PulseSource.h"

#include <gmock/gmock.h>

namespace vemo {
namespace {

PulseSource source(std::string name) {
  PulseSource made;
  made.name = std::move(name);
  return made;
}

PulseSource monitor(std::string name) {
  PulseSource made = source(std::move(name));
  made.isMonitor = true;
  return made;
}

std::string chosenFrom(const std::vector<PulseSource>& sources, const std::string& defaultName) {
  const auto chosen = chooseMicrophone(sources, defaultName);
  return chosen ? chosen->name : "none";
}

TEST(PulseSourceTest, TheDefaultSourceIsTheMicrophone) {
  EXPECT_EQ(chosenFrom({source("a"), source("b")}, "b"), "b");
}

TEST(PulseSourceTest, ADefaultThatIsAMonitorYieldsToTheFirstSourceThatIsNone) {
  EXPECT_EQ(chosenFrom({monitor("m"), source("a"), source("b")}, "m"), "a");
}

TEST(PulseSourceTest, AnUnknownDefaultYieldsToTheFirstSourceThatIsNoMonitor) {
  EXPECT_EQ(chosenFrom({monitor("m"), source("a")}, ""), "a");
  EXPECT_EQ(chosenFrom({monitor("m"), source("a")}, "gone"), "a");
}

TEST(PulseSourceTest, MonitorsAloneAreNoMicrophone) {
  EXPECT_EQ(chosenFrom({monitor("m"), monitor("n")}, "m"), "none");
  EXPECT_EQ(chosenFrom({}, "m"), "none");
}

struct Attachment {
  const char* bus;
  const char* api;
  const char* formFactor;
  bool isHardware;
  InputTransport transport;
};

class TransportTest : public testing::TestWithParam<Attachment> {};

TEST_P(TransportTest, TheTransportFollowsFromTheDevicesProperties) {
  PulseSource made = source("a");
  made.bus = GetParam().bus;
  made.api = GetParam().api;
  made.formFactor = GetParam().formFactor;
  made.isHardware = GetParam().isHardware;
  EXPECT_EQ(transportOf(made), GetParam().transport);
}

INSTANTIATE_TEST_SUITE_P(
    Attachments, TransportTest,
    testing::Values(Attachment{"pci", "alsa", "internal", true, InputTransport::BuiltIn},
                    Attachment{"isa", "alsa", "", true, InputTransport::BuiltIn},
                    Attachment{"platform", "alsa", "", true, InputTransport::BuiltIn},
                    Attachment{"", "alsa", "internal", true, InputTransport::BuiltIn},
                    Attachment{"usb", "alsa", "webcam", true, InputTransport::Usb},
                    Attachment{"usb", "alsa", "internal", true, InputTransport::Usb},
                    Attachment{"bluetooth", "bluez", "headset", true, InputTransport::Bluetooth},
                    Attachment{"", "bluez5", "", true, InputTransport::Bluetooth},
                    Attachment{"", "", "", false, InputTransport::Virtual},
                    Attachment{"", "alsa", "", true, InputTransport::Other},
                    Attachment{"firewire", "", "", true, InputTransport::Other}));

TEST(PulseSourceTest, AMicrophoneOnAnotherMachineIsOther) {
  PulseSource tunnel = source("tunnel");
  tunnel.isNetwork = true;
  EXPECT_EQ(transportOf(tunnel), InputTransport::Other);
}

}  // namespace
}  // namespace vemo
