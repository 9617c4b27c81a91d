#include "tests/faults/FaultRow.h"
#include "tests/faults/Phone.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace faults {
namespace {

constexpr qint64 untilSomebodySpeaksMs = 500;

using SideState = ConversationTranslateVC::SideState;

class TalkRow : public FaultRow {
public:
    TalkRow(Laboratory &laboratory, const QString &title, const QString &region, const QString &failingHost)
        : m_laboratory(laboratory)
        , m_phone(laboratory, 7, VLApiServer::demo, region)
        , m_screen(m_phone.openConversation())
    {
        name = title;
        host = failingHost;
    }

protected:
    void listen()
    {
        if (m_screen->speakerMicButton->isSelected())
            m_screen->didPressSpeakerButtonAction(); // which ends the listening that brought nothing
        m_screen->didPressSpeakerButtonAction();
        m_sincePress.start();
        // Or the microphone that is about to be switched off would hear it.
        when([this] { return m_sincePress.hasExpired(untilSomebodySpeaksMs); }, [this] { m_phone.say(); });
    }
    [[nodiscard]] bool isTranslated() const
    {
        return m_screen->speakerLabel->text() == Laboratory::sentence() && !m_screen->listenerLabel->text().isEmpty();
    }
    /// Which way it may have ended without the screen's noticing.
    [[nodiscard]] bool newLine(const QString &beginning) const
    {
        return m_laboratory.linesWith(beginning) > m_linesBefore;
    }
    void expectLine(const QString &beginning) { m_linesBefore = m_laboratory.linesWith(beginning); }

    Laboratory &m_laboratory;
    Phone m_phone;
    const std::shared_ptr<ConversationTranslateVC> m_screen;

private:
    QElapsedTimer m_sincePress;
    qsizetype m_linesBefore = 0;
};

class RecognitionRow final : public TalkRow {
public:
    explicit RecognitionRow(Laboratory &laboratory)
        : TalkRow(laboratory, u"recognition"_s, u"westindia"_s, u"westindia.stt.speech.microsoft.com"_s)
    {
        isTimed = false;
        patience = 120s; // Five connections of 20 s, and the pauses between them.
    }
    void prepare() override {}
    void act() override
    {
        m_givenUpBefore = timesGivenUp();
        listen();
    }
    [[nodiscard]] bool cameThrough() const override { return m_screen->speakerLabel->text() == Laboratory::sentence(); }
    [[nodiscard]] QString complaint() const override
    {
        if (!m_screen->speakerMicButton->isSelected())
            return u"the microphone is off, and nothing was recognised"_s;
        return m_screen->speakerMicButton->isEnabled() ? QString() : u"the microphone cannot be switched off"_s;
    }

protected:
    [[nodiscard]] bool isAtRest() const override
    {
        return m_screen->speakerState() == SideState::Idle || timesGivenUp() > m_givenUpBefore;
    }

private:
    /// That the kit gives up is to be seen nowhere else. A listening that was ended has no reason.
    [[nodiscard]] qsizetype timesGivenUp() const
    {
        return m_laboratory.linesWith(u"Recognition canceled: "_s) -
               m_laboratory.linesWith(u"Recognition canceled: (no result)"_s);
    }
    qsizetype m_givenUpBefore = 0;
};

class SynthesisRow final : public TalkRow {
public:
    explicit SynthesisRow(Laboratory &laboratory)
        : TalkRow(laboratory, u"synthesis"_s, u"southindia"_s, u"southindia.tts.speech.microsoft.com"_s)
    {
    }
    void prepare() override
    {
        listen();
        when([this] { return isTranslated(); }, [] {});
    }
    void act() override
    {
        expectLine(m_cancelled);
        m_screen->didPressListenerSideTextToSpeachButtonAction();
    }
    void actAgain() override
    {
        if (button().isSelected())
            m_screen->didPressListenerSideTextToSpeachButtonAction(); // which ends the reading that nobody hears
        act();
    }
    [[nodiscard]] bool cameThrough() const override { return !button().isSelected() && !newLine(m_cancelled); }
    [[nodiscard]] QString complaint() const override
    {
        return button().isEnabled() && !button().isHidden() ? QString() : u"the button cannot be pressed"_s;
    }

protected:
    [[nodiscard]] bool isAtRest() const override { return !button().isSelected() || newLine(m_cancelled); }

private:
    [[nodiscard]] const ButtonState &button() const { return *m_screen->listenerTextToSpeachButton; }
    const QString m_cancelled = u"Speech synthesis cancelled"_s;
};

class TranslationRow final : public TalkRow {
public:
    explicit TranslationRow(Laboratory &laboratory)
        : TalkRow(laboratory, u"translation"_s, u"centralindia"_s, u"api.cognitive.microsofttranslator.com"_s)
    {
    }
    void prepare() override {}
    void act() override { listen(); }
    [[nodiscard]] bool isAsking() const override { return m_screen->speakerState() == SideState::Busy; }
    [[nodiscard]] bool cameThrough() const override { return isTranslated(); }
    [[nodiscard]] QString complaint() const override
    {
        if (m_screen->speakerLabel->text() != Laboratory::sentence() || m_screen->speakerTextToSpeachButton->isHidden())
            return u"what was said is lost"_s;
        return m_screen->speakerMicButton->isEnabled() && m_screen->listenerMicButton->isEnabled()
                   ? QString()
                   : u"a microphone cannot be pressed"_s;
    }

protected:
    [[nodiscard]] bool isAtRest() const override
    {
        return m_screen->speakerState() == SideState::Idle && m_screen->listenerState() == SideState::Idle;
    }
};

} // namespace

void addTalkRows(FaultRows &rows, Laboratory &laboratory)
{
    rows.push_back(std::make_unique<RecognitionRow>(laboratory));
    rows.push_back(std::make_unique<SynthesisRow>(laboratory));
    rows.push_back(std::make_unique<TranslationRow>(laboratory));
}

} // namespace faults
