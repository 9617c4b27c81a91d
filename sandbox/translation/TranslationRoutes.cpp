#include "sandbox/translation/TranslationRoutes.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <string>
#include <utility>

#include "sandbox/server/HttpSession.h"
#include "sandbox/server/RandomId.h"
#include "sandbox/translation/TranslateRequest.h"
#include "sandbox/translation/Translator.h"

namespace sandbox {

namespace asio = boost::asio;
namespace json = boost::json;

namespace {

json::object shown(const Translator::Translation &translation, const std::vector<std::string> &to)
{
    json::object element;
    if (translation.detected) {
        json::object detected;
        detected["language"] = translation.detected->language;
        detected["score"] = translation.detected->score;
        element["detectedLanguage"] = std::move(detected);
    }
    json::array translations;
    for (std::size_t i = 0; i < to.size(); ++i) {
        json::object one;
        one["text"] = translation.texts[i];
        one["to"] = to[i];
        translations.push_back(std::move(one));
    }
    element["translations"] = std::move(translations);
    return element;
}

HttpResponse answer(const HttpRequest &request, const Phrasebook &book, const Subscription &subscription)
{
    const auto parsed = TranslateRequest::parse(request, subscription);
    if (!parsed)
        return errorAnswer(parsed.error());
    const Translator translator(book);
    json::array elements;
    for (const auto &text : parsed->texts)
        elements.push_back(shown(translator.translate(text, parsed->from, parsed->to), parsed->to));
    HttpResponse response = jsonResponse(200, json::serialize(elements));
    response.set("X-MT-System", "Team");
    response.set("X-Metered-Usage", std::to_string(parsed->meteredCharacters()));
    return response;
}

} // namespace

void addTranslationRoutes(Router &router, const Phrasebook &book, Subscription subscription)
{
    const HttpHandler translate =
        [&book, subscription = std::move(subscription)](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
        HttpResponse response = answer(request, book, subscription);
        response.set("X-RequestId", randomGuid());
        co_return response;
    };
    for (const char *host : {"api.cognitive.microsofttranslator.com", "api-nam.cognitive.microsofttranslator.com",
                             "api-eur.cognitive.microsofttranslator.com", "api-apc.cognitive.microsofttranslator.com"})
        router.addHttp(host, "*", "/translate", translate);
}

} // namespace sandbox
