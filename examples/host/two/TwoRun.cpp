#include "two/TwoRun.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <array>

#include "SandboxProcess.h"
#include "Transcript.h"
#include "Waiting.h"
#include "two/RemoteDevice.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

/// Sentences of the phrasebook: what one of the two says, and what the other answers.
constexpr std::array<std::array<const char *, 2>, 6> exchanges{{
    {"meet.canhear", "meet.hearclear"},
    {"greet.howareyou", "greet.fine"},
    {"misc.live", "misc.india"},
    {"meet.report", "meet.finished"},
    {"meet.think", "meet.agree"},
    {"dir.hotel", "dir.straight"},
}};

/// A message that is about to be sent: a sentence of the phrasebook, or a file.
struct Plan {
    std::size_t by; ///< Of `people`.
    LanguageOption language;
    QString phrase;
    QString wavFile;
};

std::array<LanguageOption, 2> languagesOf(const Options &options)
{
    return {options.speaker.value_or(LanguageOption::hindi), options.listener.value_or(LanguageOption::english)};
}

std::vector<Plan> planOf(const Options &options)
{
    std::vector<Plan> plan;
    if (options.allLanguages) {
        const std::size_t count = allLanguageOptions.size();
        for (std::size_t i = 0; i < count; ++i) {
            for (const std::size_t by : {0U, 1U})
                plan.push_back({by, allLanguageOptions.at((i + by) % count), exchanges.at(i).at(by), {}});
        }
    } else if (!options.turns.empty()) {
        for (const RecordedTurn &turn : options.turns) {
            const std::size_t by = turn.side == Side::Speaker ? 0 : 1;
            plan.push_back({by, languagesOf(options).at(by), {}, QDir().absoluteFilePath(turn.wavFile)});
        }
    } else {
        for (const std::size_t by : {0U, 1U})
            plan.push_back({by, languagesOf(options).at(by), exchanges.front().at(by), {}});
    }
    return plan;
}

void say(const QString &line)
{
    QTextStream(stderr) << line << Qt::endl;
}

/// Directs one run.
class Run {
public:
    explicit Run(const Options &options)
        : m_options(options)
        , m_folder(QDir().absoluteFilePath(options.outputFolder))
    {
    }

    tl::expected<void, QString> play()
    {
        if (auto begun = begin(); !begun)
            return begun;
        if (!m_options.headless)
            return untilBothAreClosed();
        auto outcome = playAll();
        if (!writeTranscript(m_folder.path(), m_messages))
            return tl::unexpected(u"The transcript cannot be written into %1."_s.arg(m_folder.path()));
        return outcome;
    }

private:
    tl::expected<void, QString> begin()
    {
        // A demonstration begins with the seed; what people say in windows is there the next time.
        auto sandbox = examples::SandboxProcess::start(m_options.sandboxProgram,
                                                       m_options.headless ? m_temporary.path() : QString());
        if (!sandbox)
            return tl::unexpected(sandbox.error());
        m_sandbox = std::move(*sandbox);
        for (std::size_t i = 0; i < people().size(); ++i) {
            const Person &person = people().at(i);
            if (m_options.headless && !m_folder.mkpath(u"recordings-"_s + person.word))
                return tl::unexpected(u"The folder %1 cannot be made."_s.arg(m_folder.path()));
            auto device = RemoteDevice::start(
                person, argumentsFor(i), m_options.headless ? m_folder.filePath(person.word + ".log"_L1) : QString());
            if (!device)
                return tl::unexpected(device.error());
            m_devices.at(i) = std::move(*device);
        }
        for (const auto &device : m_devices) {
            if (const auto open = device->ask<PlainAnswer>(u"open"_s, PlainRequest()); !open)
                return tl::unexpected(open.error());
        }
        // A device has said who it is; a message is pushed to it from when the backend has heard that.
        const auto areLoggedIn = [this] {
            return std::ranges::count_if(m_sandbox->sockets(), [](const auto &one) { return !one.userId.isEmpty(); }) ==
                   2;
        };
        if (!waitUntil(areLoggedIn, serviceLimit))
            return tl::unexpected(u"The backend's socket has not let both devices in."_s);
        return {};
    }

    [[nodiscard]] QStringList argumentsFor(std::size_t i) const
    {
        const examples::SandboxAddress &address = m_sandbox->address();
        const auto code = [this](std::size_t whose) {
            return languageEntry(languagesOf(m_options).at(whose)).translatorCode;
        };
        QStringList arguments{u"--device"_s,     people().at(i).word,
                              u"--proxy-port"_s, QString::number(address.proxyPort),
                              u"--authority"_s,  address.authorityFile,
                              u"--speaker"_s,    code(i),
                              u"--listener"_s,   code(1 - i),
                              u"--out"_s,        m_folder.path(),
                              u"--size"_s,       u"%1x%2"_s.arg(m_options.size.width()).arg(m_options.size.height()),
                              u"--font-scale"_s, QString::number(m_options.fontScale)};
        if (m_options.headless)
            arguments << u"--headless"_s;
        if (m_options.realTime)
            arguments << u"--real-time"_s;
        return arguments;
    }

    tl::expected<void, QString> untilBothAreClosed()
    {
        while (!m_devices.at(0)->hasEnded() || !m_devices.at(1)->hasEnded()) {
            for (const auto &device : m_devices) {
                if (device->hasEnded() && !device->ending())
                    return device->ending();
            }
            letPass(std::chrono::milliseconds(200));
        }
        return {};
    }

    tl::expected<void, QString> playAll()
    {
        const std::vector<Plan> plan = planOf(m_options);
        for (const Plan &step : plan) {
            // Each of the two once, when there is something to be seen in the chat.
            const bool everyState = m_messages.size() + people().size() >= plan.size();
            const auto message = playStep(step, everyState);
            if (!message)
                return tl::unexpected(message.error());
            m_messages.push_back(*message);
            say(u"%1 > %2   %3   %4   (%5 ms)"_s.arg(message->from, message->to, message->language, message->wireText)
                    .arg(message->receivedMs));
        }
        if (!waitUntil([this] { return allIsAcknowledged(); }, serviceLimit))
            return tl::unexpected(u"The backend's socket complains of a device, or waits for acknowledgements."_s);
        say(u"%1 messages came through; see %2"_s.arg(m_messages.size()).arg(m_folder.path()));
        return {};
    }

    [[nodiscard]] bool allIsAcknowledged() const
    {
        const auto sockets = m_sandbox->sockets();
        return sockets.size() == 2 && std::ranges::all_of(sockets, [](const auto &one) {
                   return one.problems == 0 && one.acknowledged == one.pushed;
               });
    }

    tl::expected<MessageRecord, QString> playStep(const Plan &step, bool everyState)
    {
        const LanguageEntry &language = languageEntry(step.language);
        const QString name = u"%1"_s.arg(m_messages.size() + 1, 2, 10, QChar(u'0'));
        RemoteDevice &sender = *m_devices.at(step.by);
        RemoteDevice &receiver = *m_devices.at(1 - step.by);

        if (everyState) {
            if (const auto looked = receiver.ask<PlainAnswer>(u"lookBack"_s, PlainRequest()); !looked)
                return tl::unexpected(looked.error());
        }
        const auto said = sender.ask<SaidAnswer>(
            u"say"_s, SayRequest{language.translatorCode, step.phrase, step.wavFile, name, everyState});
        if (!said)
            return tl::unexpected(said.error());
        const auto heard = receiver.ask<HeardAnswer>(u"hear"_s, HearRequest{said->messageId, name, everyState});
        if (!heard)
            return tl::unexpected(heard.error());
        if (const auto right = check(*said, *heard, language); !right)
            return tl::unexpected(u"Message %1: %2"_s.arg(name, right.error()));

        MessageRecord message{.from = people().at(step.by).word,
                              .to = people().at(1 - step.by).word,
                              .language = language.translatorCode,
                              .said = said->said,
                              .recognised = said->recognised,
                              .wireText = heard->stored,
                              .receivedMs = (heard->receivedAtUs - said->sentAtUs) / 1000,
                              .voice = heard->voice,
                              .heard = heard->wavFile,
                              .heardMs = heard->durationMs,
                              .heardDb = heard->levelDb,
                              .pictures = said->pictures};
        message.pictures.insert(message.pictures.end(), heard->pictures.begin(), heard->pictures.end());
        return message;
    }

    /// The text on the wire is put together here once more, by hand.
    static tl::expected<void, QString> check(const SaidAnswer &said, const HeardAnswer &heard,
                                             const LanguageEntry &language)
    {
        if (!said.recognised.startsWith(u' ') || said.recognised.trimmed().isEmpty())
            return tl::unexpected(u"what was recognised, \"%1\", does not begin with a blank."_s.arg(said.recognised));
        const QString expected = language.recognitionLocale + "##"_L1 + said.recognised;
        for (const auto &[what, text] :
             {std::pair{u"was stored"_s, heard.stored}, std::pair{u"came"_s, heard.received}}) {
            if (text != expected)
                return tl::unexpected(u"\"%1\" %2 instead of \"%3\"."_s.arg(text, what, expected));
        }
        if (heard.voice != language.synthesisVoice)
            return tl::unexpected(u"it was read by %1 instead of %2."_s.arg(heard.voice, language.synthesisVoice));
        return {};
    }

    const Options &m_options;
    const QDir m_folder;
    const QTemporaryDir m_temporary;
    std::unique_ptr<examples::SandboxProcess> m_sandbox;
    std::array<std::unique_ptr<RemoteDevice>, 2> m_devices; ///< They go before the sandbox.
    std::vector<MessageRecord> m_messages;
};

} // namespace

tl::expected<void, QString> runTwo(const Options &options)
{
    return Run(options).play();
}

} // namespace host
