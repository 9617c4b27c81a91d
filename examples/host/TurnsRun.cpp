#include "TurnsRun.h"

#include <QDir>
#include <QTextStream>

#include "ConversationPlayer.h"
#include "HomePlayer.h"
#include "language/LanguageTranslation.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

/// Sentences for the pairs of languages, one after the other.
constexpr std::array pairSentences = {"dir.station", "travel.cost", "travel.airport", "help.pharmacy", "travel.room"};

/// A turn that is about to be played: a file, or a sentence of the phrasebook that is recorded first.
struct Plan {
    Side side;
    std::optional<LanguageOption> speaker;
    std::optional<LanguageOption> listener;
    QString wavFile;
    std::string phraseId;
};

std::vector<Plan> planOf(const Options &options)
{
    std::vector<Plan> plan;
    if (options.allPairs) {
        for (std::size_t a = 0; a < allLanguageOptions.size(); ++a) {
            for (std::size_t b = a + 1; b < allLanguageOptions.size(); ++b) {
                for (const Side side : {Side::Speaker, Side::Listener}) {
                    plan.push_back({side,
                                    allLanguageOptions.at(a),
                                    allLanguageOptions.at(b),
                                    {},
                                    pairSentences.at(plan.size() % pairSentences.size())});
                }
            }
        }
    } else if (!options.turns.empty()) {
        for (const RecordedTurn &turn : options.turns)
            plan.push_back({turn.side, options.speaker, options.listener, turn.wavFile, {}});
    } else {
        Side side = Side::Speaker; // both languages apply to the first; afterwards they are set already
        for (const char *id : smallConversation) {
            plan.push_back({side, options.speaker, options.listener, {}, id});
            side = otherSide(side);
        }
    }
    return plan;
}

/// Plays the turns of one run.
class Run {
public:
    Run(const Options &options, Stage &stage, Room &room, const Device &device)
        : m_options(options)
        , m_folder(options.outputFolder)
        , m_props(stage, room, device, options.outputFolder, u"recordings"_s)
        , m_home(m_props)
        , m_player(m_props)
    {
    }

    tl::expected<void, QString> play()
    {
        if (!m_folder.mkpath(u"recordings"_s))
            return tl::unexpected(u"The folder %1 cannot be made."_s.arg(m_folder.path()));
        m_home.openKit();
        m_home.openConversation();
        if (auto opened = m_props.hand.outcome(); !opened)
            return opened;
        auto outcome = playAll();
        if (!writeTranscript(m_folder.path(), m_turns))
            return tl::unexpected(u"The transcript cannot be written into %1."_s.arg(m_folder.path()));
        return outcome;
    }

private:
    tl::expected<void, QString> playAll()
    {
        const std::vector<Plan> plan = planOf(m_options);
        for (const Plan &step : plan) {
            if (const auto played = playStep(step); !played)
                say(played.error()); // the others go on
        }
        const auto outcome =
            u"%1 of %2 turns came through; see %3"_s.arg(m_turns.size()).arg(plan.size()).arg(m_folder.path());
        if (m_turns.size() < plan.size())
            return tl::unexpected(outcome);
        say(outcome);
        return {};
    }

    tl::expected<void, QString> playStep(const Plan &step)
    {
        for (const auto &[side, language] :
             {std::pair{Side::Speaker, step.speaker}, std::pair{Side::Listener, step.listener}}) {
            if (!language)
                continue;
            if (auto chosen = m_player.chooseLanguage(side, *language); !chosen)
                return chosen;
        }
        const auto file =
            step.wavFile.isEmpty()
                ? m_props.actor.recording(step.phraseId, LanguageTranslation::shared().language(step.side))
                : tl::expected<QString, QString>(step.wavFile);
        if (!file)
            return tl::unexpected(file.error());
        const auto turn = m_player.playTurn(step.side, *file, u"turn-%1"_s.arg(++m_played, 2, 10, QChar(u'0')));
        if (!turn)
            return tl::unexpected(turn.error());
        if (const auto taken = m_props.album.taken(); !taken)
            return tl::unexpected(taken.error());
        m_turns.push_back(*turn);
        say(u"%1 > %2   %3   >   %4   (%5 ms, %6 ms)"_s.arg(turn->from, turn->to, turn->recognised, turn->translated)
                .arg(turn->recognisedMs)
                .arg(turn->translatedMs));
        return {};
    }

    static void say(const QString &line) { QTextStream(stderr) << line << Qt::endl; }

    const Options &m_options;
    const QDir m_folder;
    Props m_props;
    HomePlayer m_home;
    ConversationPlayer m_player;
    std::vector<TurnRecord> m_turns;
    int m_played = 0;
};

} // namespace

tl::expected<void, QString> runTurns(const Options &options, Stage &stage, Room &room, const Device &device)
{
    return Run(options, stage, room, device).play();
}

} // namespace host
