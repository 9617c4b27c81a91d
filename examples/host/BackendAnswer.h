#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <tl/expected.hpp>

#include "Waiting.h"
#include "api/VLApiManager.h"

namespace host {

/// What the backend answers to a call, waited for.
template<typename Answer>
tl::expected<Answer, QString> answerTo(const std::function<void(vynlex::VLApiCompletion<Answer>)> &call)
{
    struct Outcome {
        bool isKnown = false;
        tl::expected<Answer, QString> answer = tl::unexpected(QStringLiteral("the backend does not answer."));
    };
    // Shared, because the answer may come after we have gone.
    const auto outcome = std::make_shared<Outcome>();
    call([outcome](const vynlex::VLApiResult<Answer> &answer) {
        outcome->isKnown = true;
        if (answer)
            outcome->answer = *answer;
        else
            outcome->answer = tl::unexpected(answer.error().errorMessage().trimmed());
    });
    waitUntil([&] { return outcome->isKnown; }, serviceLimit);
    return outcome->answer;
}

/// The text of one of the newest 150 messages of a conversation, as the backend has it.
[[nodiscard]] tl::expected<QString, QString> storedText(vynlex::VLApiManager &api, const QString &threadId,
                                                        const QString &messageId);

} // namespace host
