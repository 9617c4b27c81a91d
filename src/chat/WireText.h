#pragma once

#include <QString>

namespace vynlex {

/// What somebody said, as it travels in the text of a chat message: the language, "##", the words.
struct WireText {
    QString languageCode; ///< The speaker's recognition locale ("hi-IN").
    QString text;

    bool operator==(const WireText &) const = default;
};

[[nodiscard]] QString encodeWireText(const WireText &wireText);

/// What is not exactly two parts at "##" is taken whole, and for English as it is spoken in India. The parts are taken
/// as they are, empty ones and unknown languages too.
[[nodiscard]] WireText decodeWireText(const QString &messageText);

} // namespace vynlex
