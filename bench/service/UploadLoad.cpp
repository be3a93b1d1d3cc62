// Many uploads at once from as many clients, below the queue's limit and above it, beside nginx.
//
// usage: service_upload_load [CLIENTS [DELAY_MS]]
//
// CLIENTS (200) is the queue's limit, DELAY_MS (1500) what the recogniser takes for each recording
// of 15 s. Prints one line a load. Exits with 1 when an upload below the limit fails, one above it
// gets anything but a 503 within a second of its last byte, or a waiting upload costs twice its
// body.
#include <algorithm>
#include <atomic>
#include <latch>

#include "Peers.h"
#include "support/Eventually.h"
#include "support/RawClient.h"
#include "support/WavFile.h"

using namespace vemo::service;
using namespace vemo::service::bench;

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double promptMilliseconds = 1000;
constexpr std::size_t workers = 64;

struct Upload {
  int status = 0;
  Milliseconds sent{0};      ///< from the start of the load to the last byte
  Milliseconds answered{0};  ///< to the answer
};

struct Load {
  std::vector<Upload> uploads;
  std::size_t peakBytes = 0;

  std::size_t count(int status) const {
    return static_cast<std::size_t>(std::ranges::count(uploads, status, &Upload::status));
  }
  double lastAnswered() const {
    return std::ranges::max(uploads, {}, &Upload::answered).answered.count();
  }
  double slowestRefusal() const {
    double slowest = 0;
    for (const auto& upload : uploads)
      if (upload.status == 503)
        slowest = std::max(slowest, (upload.answered - upload.sent).count());
    return slowest;
  }
};

Load run(const Peer& peer, std::size_t clients, const std::string& request) {
  Load load{.uploads = std::vector<Upload>(clients)};
  std::latch ready(static_cast<std::ptrdiff_t>(clients) + 1);
  std::atomic<std::size_t> left = clients;
  Clock::time_point start;
  std::vector<std::jthread> threads;
  for (auto& upload : load.uploads)
    threads.emplace_back([&] {
      RawClient client(peer.port());
      ready.arrive_and_wait();
      client.send(request);
      upload.sent = Clock::now() - start;
      upload.status = client.read().value_or(RawAnswer{}).status;
      upload.answered = Clock::now() - start;
      --left;
    });
  start = Clock::now();
  ready.arrive_and_wait();
  eventually([&] {
    load.peakBytes = std::max(load.peakBytes, peer.residentBytes());
    return left == 0;
  });
  return load;
}

void print(const char* name, const Load& load, std::size_t bodyBytes) {
  std::printf("%-22s %4zu uploads: %4zu x 200, %3zu x 503; answered after %5.0f ms (%4.0f MB/s)\n",
              name, load.uploads.size(), load.count(200), load.count(503), load.lastAnswered(),
              static_cast<double>(load.uploads.size() * bodyBytes) / 1000 / load.lastAnswered());
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t clients = argc > 1 ? std::stoul(argv[1]) : 200;
  const std::chrono::milliseconds delay(argc > 2 ? std::stol(argv[2]) : 1500);
  if (clients <= workers) {
    std::fprintf(stderr, "CLIENTS must be above %zu, the number of recognisers\n", workers);
    return 2;
  }
  const auto wav = wavOf(std::vector<std::int16_t>(std::size_t{15} * sampleRate, 7));
  const auto requestWith = [&](const std::string& token) {
    return "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + token +
           "\r\nContent-Length: " + std::to_string(wav.size()) + "\r\n\r\n" + wav;
  };

  bool good = true;
  {
    const ServicePeer service({.workers = workers, .waiting = clients - workers}, delay);
    const auto request = requestWith(service.token());
    run(service, 1, request);
    const auto before = service.residentBytes();
    const auto below = run(service, clients, request);
    const auto above = run(service, clients + clients / 4, request);
    const double perUpload =
        static_cast<double>(below.peakBytes - before) / static_cast<double>(clients);
    const double bodies = perUpload / static_cast<double>(wav.size());
    print("vemo-service, at limit", below, wav.size());
    std::printf("%-22s %.0f bytes resident per waiting upload, %.2f of its body\n", "", perUpload,
                bodies);
    print("vemo-service, above it", above, wav.size());
    std::printf("%-22s slowest 503 %.0f ms after the last byte\n", "", above.slowestRefusal());
    good = below.count(200) == clients && bodies < 2 && above.count(503) > 0 &&
           above.count(200) >= clients &&
           above.count(200) + above.count(503) == above.uploads.size() &&
           above.slowestRefusal() < promptMilliseconds;
  }
  {
    const ServicePeer service({.workers = workers, .waiting = clients}, {});
    const auto load = run(service, clients, requestWith(service.token()));
    print("vemo-service, no delay", load, wav.size());
    good = good && load.count(200) == clients;
  }
  if (NginxPeer::isInstalled()) {
    const NginxPeer nginx;
    eventually([&] { return RawClient(nginx.port()).isConnected(); });
    print("nginx, discarding", run(nginx, clients, requestWith("none")), wav.size());
  } else {
    std::puts("nginx is not installed; nothing to compare with");
  }
  std::puts(good ? "good" : "NOT GOOD");
  return good ? 0 : 1;
}
