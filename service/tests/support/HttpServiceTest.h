// The fixture of tests that speak HTTP to a running service with a scripted engine.
#pragma once

#include <gmock/gmock.h>

#include "support/Eventually.h"
#include "support/RunningService.h"
#include "support/WavFile.h"

namespace vemo::service {

inline constexpr std::string_view dictate = "/desktop/dictate?format_mode=smart&language=en";

class HttpServiceTest : public testing::Test {
 protected:
  RunningService& service() {
    if (!m_service) m_service = std::make_unique<RunningService>(m_script, m_settings);
    return *m_service;
  }
  /// One request on a connection of its own; status 0 when there was no answer.
  RawAnswer ask(std::string_view request) {
    return RawClient(service().port()).exchange(request).value_or(RawAnswer{});
  }
  RawAnswer ask(std::string_view method, std::string_view target, std::string_view headers = "") {
    return ask(std::string(method) + " " + std::string(target) + " HTTP/1.1\r\nHost: x\r\n" +
               std::string(headers) + "\r\n");
  }
  std::string authorization() { return "Authorization: Bearer " + service().token() + "\r\n"; }
  /// Keeps the only worker busy with a request that is not read.
  std::unique_ptr<RawClient> occupyWorker() {
    m_script.hold();
    auto client = std::make_unique<RawClient>(service().port());
    EXPECT_TRUE(client->send(service().post(dictate, m_wav)));
    EXPECT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
    return client;
  }

  EngineScript m_script;
  RunningService::Settings m_settings;
  std::string m_wav = WavFile{}.bytes();
  std::unique_ptr<RunningService> m_service;
};

}  // namespace vemo::service
