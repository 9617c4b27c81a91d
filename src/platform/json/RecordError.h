#pragma once

#include <QString>

namespace vynlex {

/// Why a JSON text is not the record that was asked for.
struct RecordError {
    QString path;    ///< "$.translations[0].text"
    QString problem; ///< "expected text", "missing", or the parser's own words

    [[nodiscard]] QString message() const { return path + QLatin1String(": ") + problem; }

    bool operator==(const RecordError &) const = default;
};

} // namespace vynlex
