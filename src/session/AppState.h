// The state machine of one dictation, from the trigger to the pasted text.
//
// There is one, made in the composition root, which also owns the neighbours that it is given. It
// is observable: `changed` tells that phase(), isEnabled() or history() may read differently.
// Everything runs on the main thread, so no field needs a lock; callbacks and continuations arrive
// as work of the main queue and test phase() or the generation when they run.
//
// The generation guards what comes back late. It goes up when a transcription path begins, when a
// dictation fails and when active work is cancelled; a continuation that finds it moved does
// nothing. Chunk uploads must survive the stop and are guarded by the recording's session id
// instead.
//
// Its sources: AppState.cpp (triggers, switch, start-up), AppStateRecording.cpp (start, stop,
// chunks), AppStateTranscription.cpp (audio to text, failures), AppStateDelivery.cpp (text to
// application).
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "audio/AudioRecorder.h"
#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "session/ChunkTranscripts.h"
#include "session/DictationHistory.h"
#include "session/DictationSounds.h"
#include "session/Phase.h"
#include "transcription/StreamingDictationSession.h"
#include "transcription/TranscriptionError.h"

namespace vemo {

class ApplicationWindows;
class AuthManager;
class Clipboard;
class ContextProcessor;
class DebugLog;
class Haptics;
class HotkeyManager;
class PermissionsManager;
class RecordingIndicator;
class SlackManager;
class SystemEvents;
class Telemetry;
class TextInjector;
class TranscriptionClient;

QString readyStatusText();

/// What AppState works with. All of it outlives AppState.
struct AppStateNeighbours {
  MainThread& mainThread;
  Clock& clock;
  Settings& settings;
  DebugLog& debugLog;
  Telemetry& telemetry;
  PermissionsManager& permissions;
  AuthManager& auth;
  HotkeyManager& hotkey;
  AudioRecorder& recorder;
  TranscriptionClient& client;
  ContextProcessor& contextProcessor;
  TextInjector& injector;
  SlackManager& slack;
  RecordingIndicator& hud;
  Clipboard& clipboard;
  Sounds& sounds;
  Haptics& haptics;
  ApplicationWindows& windows;
  SystemEvents& systemEvents;
};

class AppState {
 public:
  explicit AppState(AppStateNeighbours neighbours);
  ~AppState();
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  /// Wires the callbacks, starts listening and asks for what is missing. Once, at start-up.
  void bootstrap();

  // Triggers. In a phase that doesn't take them they do nothing.
  void handlePushToTalkDown();
  void handlePushToTalkUp();
  void handleToggleTrigger();
  /// The record button: as the toggle trigger, and able to stop a recording even when disabled.
  void toggleFromButton();

  const Phase& phase() const { return m_phase; }
  bool isEnabled() const { return m_isEnabled; }
  void setEnabled(bool isEnabled);

  /// One line for the menu.
  QString statusText() const;

  const DictationHistory& history() const { return m_history; }

  /// Puts a text on the clipboard, to stay there; false where that fails.
  bool copyTranscript(const QString& text);

  /// The explicit sign-out, with everything that this machine holds of the user's words.
  void clearLocalUserData();

  /// Begins a sign-in, in place of one that is under way.
  void signIn();
  /// Ends the wait for the user, who has nothing else to close it with.
  void cancelSignIn();

  void installHotkeyIfNeeded();

  /// Fills the streaming slot for the recording that is about to start or has just started: its
  /// chunks are held back from then on, and the stop asks the session for the text first.
  void setStream(std::shared_ptr<StreamingDictationSession> stream);

  Notifier<> changed;

 private:
  using Generation = std::uint64_t;

  // AppState.cpp
  void signInMayHaveChanged();
  void setPhase(Phase phase);
  void cancelActiveWork();
  void promptForMissingPermissions();

  // AppStateRecording.cpp
  void startRecording();
  bool passesSignInGate();
  void refuseWithoutSignIn();
  bool passesPermissionGate();
  bool passesDebounce() const;
  void recordingStarted();
  void armRecordingCap();
  Task<> stopAtRecordingCap(std::stop_token stop);
  void stopRecording();
  void chooseTranscriptionPath(AudioStopResult result);
  void releaseAudioPipes();
  void cancelChunkTasks();
  void handleAudioChunk(QByteArray wavData, int index);
  void uploadChunk(QByteArray wavData, int index);
  Task<> transcribeChunk(QByteArray wavData, int index, QString sessionId, std::stop_token stop);

  // AppStateTranscription.cpp
  Generation beginTranscribing();
  void beginSingleShotTranscription(QByteArray wavData);
  void beginChunkedFinalize(AudioStopResult result);
  void beginStreamFinish(std::shared_ptr<StreamingDictationSession> stream, AudioStopResult result);
  Task<> transcribeWhole(QByteArray wavData, Generation generation, std::stop_token stop);
  Task<> finalizeChunks(AudioStopResult result, QString sessionId, Generation generation,
                        std::stop_token stop);
  Task<> finishStream(std::shared_ptr<StreamingDictationSession> stream, AudioStopResult result,
                      Generation generation, std::stop_token stop);
  void fallBackFromStream(AudioStopResult result);
  void failTranscription(const TranscriptionError& error, Generation generation);
  void failDictation(const QString& message, const std::optional<QString>& hudText = {},
                     const std::optional<QString>& logDetail = {});
  Task<> leaveErrorPhase(Generation generation, std::stop_token stop);

  // AppStateDelivery.cpp
  Task<> deliverTranscript(QString text, Generation generation, std::stop_token stop);
  void dictationCompleted(const QString& processed);

  AppStateNeighbours m_with;
  Phase m_phase;
  bool m_isEnabled = true;
  bool m_wasSignedIn = false;
  bool m_beganWithSessionUnknown = false;  ///< the last recording
  DictationHistory m_history;
  DictationSounds m_sounds;
  Generation m_generation = 0;

  std::optional<Clock::MonotonicTime> m_lastStopTime;
  std::optional<Clock::MonotonicTime> m_lastPermissionPrompt;
  bool m_isPushToTalkRecording = false;
  QString m_dictationMode;

  QString m_currentSessionId;
  ChunkTranscripts m_chunkTranscripts;
  std::vector<StartedTask> m_chunkTasks;
  StartedTask m_recordingCapTask;
  StartedTask m_transcriptionTask;
  StartedTask m_signInTask;
  std::shared_ptr<StreamingDictationSession> m_stream;
  std::vector<std::pair<QByteArray, int>> m_deferredChunks;

  double m_lastRecordingSeconds = 0;
  Clock::MonotonicTime m_lastStopAt;
  bool m_lastWasChunked = false;
  bool m_lastWasStreamed = false;

  std::vector<Observation> m_observations;
  TaskScope m_tasks;
};

}  // namespace vemo
