#pragma once

#include <QString>

#include <memory>
#include <vector>

#include "conversation/ConversationTranslateVC.h"
#include "tests/views/ScreenStage.h"

namespace vynlex {

/// The conversation screen on a stage.
class ConversationStage : public ScreenStage {
public:
    /// Between English and Hindi.
    explicit ConversationStage(const DeviceShape &shape);
    ~ConversationStage();

    [[nodiscard]] static const std::vector<Scene<ConversationStage>> &scenes();

    /// Opens the screen anew.
    bool openIn(LanguageOption speaker, LanguageOption listener);
    /// Presses a side's microphone by finger and waits until the screen listens.
    bool listen(Side side);
    /// The side says `text`, which is recognised and on its way to the translator.
    bool say(Side side, const QString &text);
    /// The translator answers its last request.
    void translate(const QString &text);

    std::shared_ptr<ConversationTranslateVC> screen;
};

} // namespace vynlex
