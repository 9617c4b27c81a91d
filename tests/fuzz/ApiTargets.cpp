#include <QJsonObject>
#include <QStringDecoder>

#include "api/JwtUserId.h"
#include "api/VLApiRequestManager.h"
#include "platform/json/JsonText.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"

using namespace Qt::StringLiterals;

namespace vynlex::fuzz {
namespace {

using Case = VLApiRequestError::Case;

Case caseOf(const HttpResponse &response)
{
    const int status = response.status;
    if (status == 0)
        return Case::invalidResponse;
    if (!response.body)
        return Case::noData;
    if (status >= 400 && status <= 498)
        return Case::failedApi;
    return status >= 500 && status <= 599 ? Case::serverError : Case::unKnown;
}

/// The rules for an error body, told once more: what people are shown, and the word for programs.
VLApiRequestError::ServerErrorText shownOf(const QByteArray &body, int status)
{
    const auto json = parseJson(body);
    if (!json)
        return {json.error(), u"UNKNOWN_ERROR"_s};
    if (!json->isObject())
        return {u"Unknown Error"_s, u"UNKNOWN_ERROR"_s};
    const QJsonValue first = (*json)["errorsArray"_L1].toArray().first();
    return {(*json)["errors"_L1].toString(first.isObject() ? first["message"_L1].toString(u""_s) : u"Unknown Error"_s),
            status == 467 ? u"WAITING_ROOM_REJECTED"_s : (*json)["message"_L1].toString(u""_s)};
}

/// What a payload means: absent when it must end the process.
std::optional<QString> userIdInPayload(const QByteArray &payload)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(payload);
    if (decoder.hasError())
        return QString();
    const auto json = parseJson(text.toUtf8());
    return json ? std::optional((*json)["userId"_L1].toString()) : std::nullopt;
}

} // namespace

void answer(const QByteArray &bytes)
{
    const qsizetype line = bytes.indexOf('\n');
    HttpResponse response;
    response.status = bytes.left(line).toInt();
    if (line >= 0)
        response.body = bytes.mid(line + 1);
    const auto decoded = VLApiRequestManager::validateAndDecode<VLSuccessResponse>(response);
    const bool expected = response.body && response.status >= 200 && response.status <= 298;
    if (decoded) {
        require(expected, "only 200 to 298 with a body succeed");
        require(!response.body->isEmpty() || decoded->success == true, "an empty body is success");
        return;
    }
    require(expected ? decoded.error().which() == Case::unKnown && !response.body->isEmpty()
                     : decoded.error().which() == caseOf(response),
            "the status and the presence of a body decide");
    if (decoded.error().which() != Case::failedApi)
        return;
    const auto shown = shownOf(*response.body, response.status);
    require(VLApiRequestError::serverErrorText(response.body, response.status) == shown, "an error body is understood");
    require(decoded.error().errorMessage(u"detail"_s) == shown.text, "its text is shown, without anything else");
}

void jwt(const QByteArray &bytes)
{
    endsDeliberately([&] { userIdOfJwt(QString::fromUtf8(bytes)); });

    const auto expected = userIdInPayload(bytes);
    const QByteArray payload = bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    for (const QByteArray &token : {"h." + payload + ".s", '.' + payload}) {
        QString userId;
        const bool ended = endsDeliberately([&] { userId = userIdOfJwt(QString::fromLatin1(token)); });
        require(ended == !expected, "a payload that is text and no JSON ends the process, and nothing else does");
        require(ended || userId == *expected, "the user is whom the payload names, whatever stands around it");
    }
}

} // namespace vynlex::fuzz
