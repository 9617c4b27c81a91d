#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "platform/speech/SpeechBodies.h"
#include "platform/speech/SpeechMessage.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"

using namespace Qt::StringLiterals;

namespace vynlex::fuzz {
namespace {

void requireFraming(const std::optional<SpeechMessage> &message)
{
    if (!message)
        return;
    require(!message->path.isEmpty(), "a message has a path");
    // What frames in 16 bits; the kit's own headers have a few hundred bytes.
    if (message->path.size() + message->requestId.size() + message->contentType.size() > 65'000)
        return;
    const auto time = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
    require(decodeText(encodeText(*message, time)) == message, "a text message survives being framed");
    require(decodeBinary(encodeBinary(*message, time)) == message, "a binary message survives being framed");
}

void requireSensible(const SpeechPhrase &phrase, const QJsonObject &body)
{
    constexpr Ticks day = std::chrono::hours(24);
    require(phrase.offset >= Ticks::zero() && phrase.offset <= day, "a phrase begins within a day");
    require(phrase.duration >= Ticks::zero() && phrase.duration <= day, "a phrase lasts a day at most");
    const QJsonValue text = body["DisplayText"_L1];
    const QJsonValue detailed = body["NBest"_L1].toArray().first()["Display"_L1];
    require(phrase.text == (text.isString() ? text : detailed).toString(),
            "the text is the simple form's, or the best");
    require(body["RecognitionStatus"_L1] != QJsonValue(u"Success"_s) || phrase.status == PhraseStatus::Success,
            "a success is one");
}

} // namespace

void speech_message(const QByteArray &bytes)
{
    requireFraming(decodeText(bytes));
    requireFraming(decodeBinary(bytes));

    const QJsonDocument body = QJsonDocument::fromJson(bytes);
    const auto phrase = readPhrase(bytes);
    require(phrase.has_value() == body.isObject(), "a phrase is a JSON object");
    if (phrase)
        requireSensible(*phrase, body.object());
}

} // namespace vynlex::fuzz
