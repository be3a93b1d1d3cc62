// Any answer of Slack's and any cache reads without harm; what was read survives the cache, and
// every name in it can be looked up.
#include "Fuzzing.h"
#include "integrations/SlackDirectory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  const QByteArray bytes = bytesOf(data, size);
  (void)teamNameIn(bytes);
  for (const SlackUsers& users :
       {membersIn(bytes), decodeSlackUsers(bytes).value_or(SlackUsers())}) {
    const auto cached = decodeSlackUsers(encodeSlackUsers(users));
    require(cached.has_value() && cached->size() == users.size());
    const SlackDirectory directory(users, {});
    for (const auto& user : users) {
      const auto mention = directory.resolveUserMention(user.name);
      require(!mention || mention->startsWith(u'@'));
    }
  }
  for (const SlackChannels& channels :
       {channelsIn(bytes), decodeSlackChannels(bytes).value_or(SlackChannels())}) {
    const auto cached = decodeSlackChannels(encodeSlackChannels(channels));
    require(cached.has_value() && cached->size() == channels.size());
    const SlackDirectory directory({}, channels);
    for (const auto& channel : channels) {
      const auto mention = directory.resolveChannelMention(channel.name);
      require(!mention || mention->startsWith(u'#'));
    }
  }
  return 0;
}
