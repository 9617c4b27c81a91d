#pragma once

#include <QString>

#include <functional>
#include <tl/expected.hpp>

namespace vynlex {

class VLApiManager;

struct TranslationError {
    QString domain; ///< "TranslationErrorDomain" when the service gave neither data nor an error
    int code = 0;
    QString message;

    bool operator==(const TranslationError &) const = default;
};

/// Translates one text at a time through the cloud translator.
///
/// Main thread. Requests are independent: two under way may end in either order. Nothing is retried or cached.
class TextToTextViewModel {
public:
    explicit TextToTextViewModel(VLApiManager &apiManager);
    TextToTextViewModel();

    using Completion = std::function<void(tl::expected<QString, TranslationError>)>;

    /// Translates `text` into the language of `targetCode` ("en", "hi", ...). `completion` runs on the main queue, at
    /// most once, also after this object is gone. It is never called for an answer that holds no translation.
    ///
    /// The text goes into the JSON body as it is: with a quotation mark, a backslash or a control character in it the
    /// service refuses the body, and the caller gets a decoding error. Deliberate; the service's answer is what counts.
    void translateText(const QString &text, const QString &targetCode, Completion completion);

private:
    VLApiManager &m_apiManager;
};

} // namespace vynlex
