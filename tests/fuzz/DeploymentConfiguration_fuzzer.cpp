// Any bytes are a configuration whose addresses can be used, or an error of one line.
#include "Fuzzing.h"
#include "storage/DeploymentConfiguration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Qt::Literals::StringLiterals;
  const auto configuration =
      vemo::DeploymentConfiguration::parse(u"vemo.conf"_s, vemo::bytesOf(data, size));
  if (configuration) {
    const QUrl address = configuration->api(u"desktop/dictate"_s);
    vemo::require(address.isValid() && !address.host().isEmpty());
    vemo::require(address.path().endsWith(u"/desktop/dictate"_s));
  } else {
    vemo::require(!configuration.error().isEmpty() && !configuration.error().contains(u'\n'));
  }
  return 0;
}
