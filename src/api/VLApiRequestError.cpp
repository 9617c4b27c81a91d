#include "api/VLApiRequestError.h"

#include <QJsonObject>

#include <utility>

#include "platform/json/JsonText.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

constexpr int statusOfWaiting = 467;

} // namespace

VLApiRequestError VLApiRequestError::networkFailure(TransportError error)
{
    VLApiRequestError failure(Case::networkFailure);
    failure.m_carried = std::move(error);
    return failure;
}

VLApiRequestError VLApiRequestError::decodeFailure(QString text)
{
    VLApiRequestError failure(Case::decodeFailure);
    failure.m_carried = std::move(text);
    return failure;
}

VLApiRequestError VLApiRequestError::failedApi(std::optional<QByteArray> body, int status)
{
    VLApiRequestError failure(Case::failedApi);
    failure.m_carried = FailedApi{std::move(body), status};
    return failure;
}

int VLApiRequestError::status() const
{
    const auto *const failed = std::get_if<FailedApi>(&m_carried);
    return failed ? failed->status : 0;
}

QString VLApiRequestError::errorMessage(const QString &detail) const
{
    switch (m_case) {
    case Case::networkFailure:
        return u"Please check your internet connection."_s;
    case Case::decodeFailure:
        return "Invalid API Response. "_L1 + detail;
    case Case::failedApi: {
        const auto *const failed = std::get_if<FailedApi>(&m_carried);
        return (failed ? serverErrorText(failed->body, failed->status) : serverErrorText({}, 0)).text;
    }
    case Case::invalidUrlRequest:
        return "Invalid URL Request "_L1 + detail;
    case Case::invalidData:
        return "Invalid Response Data. "_L1 + detail;
    case Case::noData:
        return "Server did not return any Data. "_L1 + detail;
    case Case::invalidResponse:
        return "Server did not repsonse. "_L1 + detail; // the product's own spelling
    case Case::serverError:
        return "Server Error. Please try again after sometime. "_L1 + detail;
    case Case::unKnown:
        return "Undefined Error. "_L1 + detail;
    }
    Q_UNREACHABLE();
}

VLApiRequestError::ServerErrorText VLApiRequestError::serverErrorText(const std::optional<QByteArray> &body, int status)
{
    ServerErrorText known{u"Unknown Error"_s, u"UNKNOWN_ERROR"_s};
    if (!body)
        return known;
    const auto json = parseJson(*body);
    if (!json)
        known.text = json.error();
    if (!json || !json->isObject())
        return known;
    const QJsonObject object = json->toObject();
    known.code = status == statusOfWaiting ? u"WAITING_ROOM_REJECTED"_s : object.value("message"_L1).toString(u""_s);
    const QJsonValue text = object.value("errors"_L1);
    const QJsonValue first = object.value("errorsArray"_L1)[qsizetype(0)];
    if (text.isString())
        known.text = text.toString();
    else if (first.isObject())
        known.text = first["message"_L1].toString(u""_s);
    return known;
}

} // namespace vynlex
