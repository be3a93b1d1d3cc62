// A Telemetry with everything that it works with. Nobody is signed in for it, so what it collects
// stays in its queue until a test gives it a token.
#pragma once

#include "fakes/FakeCrashDiagnostics.h"
#include "fakes/FakeDeviceInformation.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeLastRequest.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/TestStorage.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "telemetry/Telemetry.h"

namespace vemo {

struct TelemetryOnFakes {
  TelemetryOnFakes(MainThread& mainThread, Clock& clock, TestStorage& storage)
      : http(mainThread, clock),
        tokens({&secrets}, storage.debugLog),
        telemetry({.clock = clock,
                   .mainThread = mainThread,
                   .settings = storage.settings,
                   .tokens = tokens,
                   .session = http,
                   .lastRequest = lastRequest,
                   .configuration = configuration,
                   .system = system,
                   .device = device,
                   .crashes = crashes}) {}

  FakeHttpSession http;
  FakeSecretBackend secrets;
  SecureTokenStore tokens;
  FakeLastRequest lastRequest;
  DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  SystemInformation system{.systemVersion = u"12.8.0"_s,
                           .applicationVersion = u"1.2.0"_s,
                           .applicationBuild = u"34"_s,
                           .systemVersionText = u"Debian GNU/Linux 12 (bookworm)"_s,
                           .deviceModel = u"Workbench 9"_s,
                           .processorArchitecture = u"x86_64"_s,
                           .processorName = u"Fast Processor"_s};
  FakeDeviceInformation device;
  FakeCrashDiagnostics crashes;
  Telemetry telemetry;
};

}  // namespace vemo
