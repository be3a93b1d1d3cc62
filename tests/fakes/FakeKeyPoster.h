// A keyboard in memory: a test says which modifiers are held, and reads which pastes were posted.
#pragma once

#include <QtGlobal>
#include <deque>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "base/Clock.h"
#include "ports/KeyPoster.h"

namespace vemo {

class FakeKeyPoster : public KeyPoster {
 public:
  enum class Step { Press, Release };
  struct Event {
    Step step;
    Clock::MonotonicTime time;  ///< the epoch when the poster has no clock
    friend bool operator==(const Event&, const Event&) = default;
  };

  FakeKeyPoster() : m_record(std::make_shared<Record>()) {}
  /// With a clock, events carry its time.
  explicit FakeKeyPoster(Clock& clock) : FakeKeyPoster() { m_record->clock = &clock; }

  /// The scripted answers first, one a call, then the held modifiers.
  ModifierFlags heldModifiers() const override {
    ++m_modifierReads;
    if (m_scriptedModifiers.empty()) return m_heldModifiers;
    const ModifierFlags answer = m_scriptedModifiers.front();
    m_scriptedModifiers.pop_front();
    return answer;
  }

  std::unique_ptr<PasteKeystroke> makePaste() override {
    ++m_makePasteCount;
    if (!m_canPost || m_makePasteFails) return nullptr;
    return std::make_unique<Keystroke>(m_record);
  }

  bool canPost() const override { return m_canPost; }

  void holdModifiers(ModifierFlags flags) { m_heldModifiers = flags; }
  void scriptModifiers(std::initializer_list<ModifierFlags> answers) {
    m_scriptedModifiers.insert(m_scriptedModifiers.end(), answers);
  }
  void letMakePasteFail(bool fails = true) { m_makePasteFails = fails; }
  void setCanPost(bool canPost) { m_canPost = canPost; }

  const std::vector<Event>& events() const { return m_record->events; }
  int modifierReads() const { return m_modifierReads; }
  int makePasteCount() const { return m_makePasteCount; }

 private:
  /// Shared with the keystrokes, which may outlive the poster.
  struct Record {
    void add(Step step) {
      events.push_back({step, clock ? clock->monotonicTime() : Clock::MonotonicTime()});
    }
    Clock* clock = nullptr;
    std::vector<Event> events;
  };

  class Keystroke : public PasteKeystroke {
   public:
    explicit Keystroke(std::shared_ptr<Record> record) : m_record(std::move(record)) {}
    ~Keystroke() override { Keystroke::release(); }

    void press() override {
      if (std::exchange(m_isDown, true)) qFatal("FakeKeyPoster: pressed twice");
      m_record->add(Step::Press);
    }
    void release() override {
      if (std::exchange(m_isDown, false)) m_record->add(Step::Release);
    }

   private:
    std::shared_ptr<Record> m_record;
    bool m_isDown = false;
  };

  std::shared_ptr<Record> m_record;
  mutable std::deque<ModifierFlags> m_scriptedModifiers;
  ModifierFlags m_heldModifiers = 0;
  bool m_makePasteFails = false;
  bool m_canPost = true;
  mutable int m_modifierReads = 0;
  int m_makePasteCount = 0;
};

}  // namespace vemo
