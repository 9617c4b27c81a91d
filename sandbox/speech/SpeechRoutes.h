#pragma once

#include <memory>

#include "sandbox/recognition/StreamingRecogniser.h"
#include "sandbox/server/ServerContext.h"
#include "sandbox/server/Subscription.h"
#include "sandbox/synthesis/VoiceBank.h"

namespace sandbox {

/// What the speech service works with. Lives as long as the server.
struct SpeechService {
    ServerContext &server;
    Subscription subscription;
    std::shared_ptr<RecogniserModels> models;
    VoiceBank &voices;
};

/// Adds recognition and synthesis, on the service's host names and under all of its known paths, and declares the
/// points "recognition.turn" and "synthesis.turn" for faults.
///
/// Kinds for "recognition.turn", each for one turn; "afterMs" counts audio of the turn (default 0):
///
/// | kind         | parameters             |                                                               |
/// |--------------|------------------------|---------------------------------------------------------------|
/// | silence      |                        | the turn is never answered                                    |
/// | drop         |                        | no turn.end                                                   |
/// | endEarly     | afterMs                | the service ends the turn while audio flows                   |
/// | close        | afterMs, code, reason  | closes the connection in the middle                           |
/// | reset        | afterMs                | resets the connection in the middle                           |
/// | garbledPhrase|                        | phrases are no JSON                                           |
/// | status       | status                 | this RecognitionStatus instead of the first phrase's own      |
/// | latency      | ms                     | before every phrase                                           |
///
/// Kinds for "synthesis.turn"; "afterChunks" counts pieces of 100 ms (default 0): silence, drop, noAudio, stall
/// (afterChunks: nothing more), close (afterChunks, code, reason), reset (afterChunks), latency (ms, before the first
/// piece).
void addSpeechRoutes(const std::shared_ptr<SpeechService> &service);

} // namespace sandbox
