#include "platform/speech/SpeechBodies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>

#include <algorithm>
#include <array>

namespace vynlex {
namespace {

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QJsonObject context()
{
    return {
        {"system",
         QJsonObject{{"name", "VynlexTranslationSDK"}, {"version", "1.0.0"}, {"build", "Qt"}, {"lang", "C++"}}},
        {"os", QJsonObject{{"platform", QSysInfo::kernelType()}, {"name", "unknown"}, {"version", "unknown"}}},
    };
}

constexpr std::array statusWords{
    "Success",    "NoMatch",   "InitialSilenceTimeout", "BabbleTimeout", "Error", "EndOfDictation", "TooManyRequests",
    "BadRequest", "Forbidden",
};

PhraseStatus statusOf(const QJsonValue &value)
{
    if (value.isDouble()) {
        const double number = value.toDouble();
        const bool known = number >= 0 && number < static_cast<double>(statusWords.size());
        return known ? static_cast<PhraseStatus>(static_cast<int>(number)) : PhraseStatus::Unknown;
    }
    const QString word = value.toString();
    const auto found = std::find_if(statusWords.begin(), statusWords.end(), [&](const char *known) {
        return word.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
    });
    return found == statusWords.end() ? PhraseStatus::Unknown
                                      : static_cast<PhraseStatus>(std::distance(statusWords.begin(), found));
}

/// At most a day, so that sums and conversions stay far from overflow; no turn is that long.
Ticks ticksOf(const QJsonValue &value)
{
    return std::clamp(Ticks(value.toInteger()), Ticks::zero(), Ticks(std::chrono::hours(24)));
}

} // namespace

QByteArray recognitionConfigBody(RecognitionMode mode)
{
    QJsonObject body = context();
    body["audio"] = QJsonObject{{"source", QJsonObject{{"bitspersample", 16},
                                                       {"channelcount", 1},
                                                       {"connectivity", "Unknown"},
                                                       {"manufacturer", "Unknown"},
                                                       {"model", "PushStream"},
                                                       {"samplerate", 16000},
                                                       {"type", "Stream"}}}};
    return compact(
        {{"context", body}, {"recognition", mode == RecognitionMode::Dictation ? "dictation" : "conversation"}});
}

QByteArray recognitionContextBody(RecognitionMode mode, const QString &language)
{
    QJsonObject detection{{"language", language}, {"enrichment", QJsonObject{}}};
    if (mode == RecognitionMode::Dictation)
        detection["mode"] = "Dictation";
    return compact({{"phraseDetection", detection}, {"phraseOutput", QJsonObject{}}});
}

QByteArray synthesisConfigBody()
{
    return compact({{"context", context()}});
}

QByteArray synthesisContextBody(const QByteArray &outputFormat)
{
    const QJsonObject metadata{{"bookmarkEnabled", false},         {"punctuationBoundaryEnabled", false},
                               {"sentenceBoundaryEnabled", false}, {"sessionEndEnabled", false},
                               {"visemeEnabled", false},           {"wordBoundaryEnabled", false}};
    const QJsonObject audio{{"metadataOptions", metadata}, {"outputFormat", QString::fromLatin1(outputFormat)}};
    return compact({{"synthesis", QJsonObject{{"audio", audio}, {"language", QJsonObject{{"autoDetection", false}}}}}});
}

QByteArray waveStreamHeader()
{
    return QByteArray::fromHex("52494646"
                               "00000000"
                               "57415645" // "RIFF", size, "WAVE"
                               "666d7420"
                               "10000000"
                               "0100"
                               "0100" // "fmt ", 16 bytes, PCM, one channel
                               "803e0000"
                               "007d0000"
                               "0200"
                               "1000" // 16000 Hz, 32000 byte/s, 2-byte frames, 16 bit
                               "64617461"
                               "00000000"); // "data", size
}

std::optional<SpeechPhrase> readPhrase(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    QJsonValue text = object["DisplayText"];
    if (!text.isString())
        text = object["NBest"][0]["Display"]; // The detailed form, should a service answer in it.
    return SpeechPhrase{statusOf(object["RecognitionStatus"]), text.toString(), ticksOf(object["Offset"]),
                        ticksOf(object["Duration"])};
}

} // namespace vynlex
