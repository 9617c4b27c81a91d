#include "translation/TextToTextViewModel.h"

#include <QStringDecoder>

#include "api/VLApiManager.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/FatalError.h"
#include "platform/net/CloudHosts.h"
#include "platform/speech/SpeechFailure.h"
#include "translation/TranslationResponse.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

HttpRequest translationRequest(const QString &text, const QString &targetCode,
                               const std::optional<VLTranslationConfig> &config)
{
    HttpRequest request;
    request.method = "POST";
    request.url = QUrl("https://"_L1 + publicCloudHosts().translator + "/translate?api-version=3.0&to="_L1 + targetCode,
                       QUrl::StrictMode);
    if (!request.url.isValid())
        fatalError(u"No translator address can be formed for the language code \"%1\"."_s.arg(targetCode));
    request.headers = {
        {"Ocp-Apim-Subscription-Key", config ? config->textTranslationKey().toUtf8() : QByteArray("")},
        {"Content-Type", "application/json"},
        {"Ocp-Apim-Subscription-Region", config ? config->speechRegion().toUtf8() : QByteArray("")},
    };
    // No JSON escaping, deliberately: see the header.
    request.body = "[{\"Text\":\"" + text.toUtf8() + "\"}]";
    request.timeout = std::nullopt;
    return request;
}

/// Whole, but for the key, should a server echo it.
void printBody(const QByteArray &body, const QString &key)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(body);
    if (!decoder.hasError())
        consoleLine("String data: "_L1 + withoutKey(text, key));
}

void handleResponse(const tl::expected<HttpResponse, TransportError> &outcome, const QString &key,
                    const TextToTextViewModel::Completion &completion)
{
    if (!outcome) {
        completion(tl::unexpected(TranslationError{u"TransportErrorDomain"_s, static_cast<int>(outcome.error().kind),
                                                   outcome.error().message}));
        return;
    }
    if (!outcome->body) {
        completion(tl::unexpected(TranslationError{u"TranslationErrorDomain"_s, 0, {}}));
        return;
    }
    printBody(*outcome->body, key);
    const auto elements = decodeJson<std::vector<TranslationResponse>>(*outcome->body);
    if (!elements) {
        completion(tl::unexpected(TranslationError{u"DecodingErrorDomain"_s, 0, elements.error().message()}));
        return;
    }
    // An answer without a translation ends in silence, deliberately: there is nothing to show.
    if (elements->empty() || elements->front().translations.value_or(std::vector<Translation>{}).empty())
        return;
    completion(elements->front().translations->front().text);
}

} // namespace

TextToTextViewModel::TextToTextViewModel(VLApiManager &apiManager)
    : m_apiManager(apiManager)
{
}

TextToTextViewModel::TextToTextViewModel()
    : TextToTextViewModel(VLApiManager::shared())
{
}

void TextToTextViewModel::translateText(const QString &text, const QString &targetCode, Completion completion)
{
    const auto &config = m_apiManager.translatedConfig;
    Platform::current()->httpSession->send(
        translationRequest(text, targetCode, config),
        [key = config ? config->textTranslationKey() : QString(), completion = std::move(completion)](
            const tl::expected<HttpResponse, TransportError> &outcome) { handleResponse(outcome, key, completion); });
}

} // namespace vynlex
