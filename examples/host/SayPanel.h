#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QStringList>

#include <optional>

#include "Room.h"
#include "Stage.h"
#include "VoiceActor.h"
#include "language/LanguageOption.h"

namespace host {

/// What a person without a microphone can say: the phrasebook's sentences in the language that is being listened for.
///
/// Main thread.
class SayPanel : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(SayPanelController)
    QML_UNCREATABLE("The panel is made by the host.")

    Q_PROPERTY(QStringList sentences READ sentences NOTIFY sentencesChanged FINAL)
    Q_PROPERTY(QString hint READ hint NOTIFY sentencesChanged FINAL)

public:
    /// Which microphone of the phone is on.
    enum class Ear { None, Speaker, Listener, VoiceMessage };

    SayPanel(Stage &stage, Room &room, const QString &recordingsFolder);

    [[nodiscard]] QStringList sentences() const { return m_sentences; }
    /// What is to be done before something can be said, or whose turn it is.
    [[nodiscard]] QString hint() const;

    /// Says the sentence of that row into the microphone that listens. Ignored while none does.
    Q_INVOKABLE void say(int row);

signals:
    void sentencesChanged();

private:
    void update();

    Stage &m_stage;
    Room &m_room;
    VoiceActor m_actor;
    Ear m_ear = Ear::None;
    std::optional<vynlex::LanguageOption> m_language;
    QStringList m_sentences;
};

} // namespace host
