#pragma once

#include <chrono>
#include <memory>

#include "sandbox/server/ServerContext.h"
#include "sandbox/server/Subscription.h"
#include "sandbox/speech/SpeechEngines.h"

namespace sandbox {

/// What the speech service works with. `server` outlives it.
struct SpeechService {
    ServerContext &server;
    Subscription subscription;
    std::shared_ptr<SpeechEngines> engines;
    std::chrono::milliseconds connectionLimit = std::chrono::minutes(10); ///< the service's documented one
};

/// Adds recognition and synthesis, on the service's host names (of the subscription's regions, or of any) and under
/// all of its known paths, and declares the points "recognition.turn" and "synthesis.turn" for faults. Each fault is
/// for one turn.
///
/// "recognition.turn"; where a kind has "afterMs" (audio of the turn heard, default 0), it may have "afterPhrases"
/// instead:
///
/// | kind          | parameters                  | what happens                                               |
/// |---------------|-----------------------------|------------------------------------------------------------|
/// | silence       |                             | nothing more after turn.start                              |
/// | drop          |                             | no turn.end                                                |
/// | endEarly      | afterMs                     | the service ends the turn while audio flows                |
/// | close         | afterMs, code (1011), reason| closes the connection in the middle                        |
/// | reset         | afterMs                     | resets the connection in the middle                        |
/// | garbledPhrase |                             | phrases are half of their JSON                             |
/// | status        | status ("Error"), afterMs   | a phrase with this RecognitionStatus, then turn.end        |
/// | latency       | ms (1000)                   | before every phrase                                        |
///
/// "synthesis.turn"; "afterChunks" counts audio messages (default 0):
///
/// | kind          | parameters                  | what happens                                               |
/// |---------------|-----------------------------|------------------------------------------------------------|
/// | silence       |                             | nothing more after turn.start                              |
/// | drop          |                             | no turn.end                                                |
/// | noAudio       |                             | nothing more after the response                            |
/// | stall         | afterChunks                 | nothing more                                               |
/// | endEarly      | afterChunks                 | turn.end before the rest of the audio                      |
/// | close         | afterChunks, code, reason   | closes the connection in the middle                        |
/// | reset         | afterChunks                 | resets the connection in the middle                        |
/// | latency       | ms (1000)                   | before the first audio                                     |
void addSpeechRoutes(const std::shared_ptr<SpeechService> &service);

} // namespace sandbox
