// Reading the backend's answers into records, beside what Qt's parser and simdjson's take for the same bytes.

#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include "api/ChatRecords.h"
#include "api/DirectoryRecords.h"
#include <simdjson.h>

using namespace vynlex;

namespace {

QByteArray joined(int count, const std::function<QByteArray(int)> &element)
{
    QByteArray all;
    for (int i = 0; i < count; ++i)
        all += (i ? "," : "") + element(i);
    return all;
}

/// As the backend sends them: about 1 KB a message, half of it text in Devanagari.
const QByteArray &messages()
{
    static const QByteArray page =
        R"({"messages":[)" +
        joined(150,
               [](int i) {
                   const QByteArray number = QByteArray::number(100'000 + i);
                   return R"({"_id":"65f0c1d2e3a4b5c6d7)" + number +
                          R"(","threadId":"65f0c1d2e3a4b5c6d7e8f901","conferaId":"cf-2210",)"
                          R"("type":"message","createdBy":"65f0aa11bb22cc33dd44ee55",)"
                          R"("creatorsName":"Asha","creatorsLName":"Patel",)"
                          R"("cOn":"2026-01-31T09:15:00.000+0000","messageComponent":{"text":"hi-IN## )" +
                          QByteArray("मुझे दो रातों के लिए एक कमरा चाहिए। ").repeated(6) +
                          R"(","attachments":[]},"recipients":[{"userId":"65f0aa11bb22cc33dd44ee55",)"
                          R"("isDeleted":false,"isUnread":false},{"userId":"65f0aa11bb22cc33dd44ee56",)"
                          R"("isDeleted":false,"isUnread":true}]})";
               }) +
        R"(],"moreAvailable":true,"totalCount":420,"unreadCount":3})";
    return page;
}

const QByteArray &contacts()
{
    static const QByteArray all = R"({"moreAvailable":false,"total":10000,"contacts":[)" +
                                  joined(10'000,
                                         [](int i) {
                                             const QByteArray number = QByteArray::number(100'000 + i);
                                             return R"({"id":"65f0c1d2e3a4b5c6d7)" + number + R"(","name":"Asha )" +
                                                    number + R"(","lname":"Patel","phoneNo":"+919876)" + number +
                                                    R"(","roleIds":["member","guest"]})";
                                         }) +
                                  "]}";
    return all;
}

void parse(benchmark::State &state, const QByteArray &text)
{
    for ([[maybe_unused]] const auto step : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text));
    state.SetBytesProcessed(state.iterations() * text.size());
}

/// The tape alone, out of which nothing is read; the parser keeps its memory, as the best of its users do.
void parseToTape(benchmark::State &state, const QByteArray &text)
{
    const simdjson::padded_string padded(text.constData(), static_cast<std::size_t>(text.size()));
    simdjson::dom::parser parser;
    for ([[maybe_unused]] const auto step : state) {
        if (parser.parse(padded).error())
            state.SkipWithError("not parsed");
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}

template<typename Record> void decode(benchmark::State &state, const QByteArray &text)
{
    for ([[maybe_unused]] const auto step : state) {
        const auto record = decodeJson<Record>(text);
        if (!record)
            state.SkipWithError("not decoded");
        benchmark::DoNotOptimize(record);
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}

void parseMessages(benchmark::State &state)
{
    parse(state, messages());
}
void simdjsonMessages(benchmark::State &state)
{
    parseToTape(state, messages());
}
void decodeMessages(benchmark::State &state)
{
    decode<VLThreadChatMessages>(state, messages());
}
void parseContacts(benchmark::State &state)
{
    parse(state, contacts());
}
void simdjsonContacts(benchmark::State &state)
{
    parseToTape(state, contacts());
}
void decodeContacts(benchmark::State &state)
{
    decode<VLContactsResponse>(state, contacts());
}

} // namespace

BENCHMARK(parseMessages);
BENCHMARK(simdjsonMessages);
BENCHMARK(decodeMessages);
BENCHMARK(parseContacts);
BENCHMARK(simdjsonContacts);
BENCHMARK(decodeContacts);

BENCHMARK_MAIN();
