#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace vynlex {

/// Holds requests and answers against an OpenAPI 3.0 document.
///
/// Violations are sentences that begin with the place ("body.contacts[2].phoneNo: ..."); an empty list means that the
/// document is met. Strict where the document leaves room: a query parameter that it does not name, and a body where it
/// names none, are violations. What the document does not name at all (path, method, status) is one as well.
///
/// Knows what our document uses: local references, parameters in header, path and query (comma-separated lists
/// included), JSON bodies, a key in a header (with "x-pattern" for its form). A keyword of JSON Schema that it does not
/// know ends the program, so that nothing is passed over.
class OpenApiContract {
public:
    using Headers = std::vector<std::pair<QByteArray, QByteArray>>; ///< names in any letter case
    using Query = QList<std::pair<QString, QString>>;               ///< decoded, as of QUrlQuery::queryItems

    /// The REST interface between the kit and its backend: docs/confera-api.json.
    static OpenApiContract ofConfera();

    /// `path` as on the wire, with the base path of the server ("/api/calls").
    [[nodiscard]] QStringList violationsOfRequest(const QByteArray &method, const QString &path, const Headers &headers,
                                                  const Query &query, const QByteArray &body) const;
    [[nodiscard]] QStringList violationsOfAnswer(const QByteArray &method, const QString &path, int status,
                                                 const QByteArray &body) const;

    /// Of the socket ("x-socket"): what its client sends, and what its server does.
    [[nodiscard]] QStringList violationsOfClientFrame(const QByteArray &frame) const
    {
        return violationsOfFrame("fromClient", frame);
    }
    [[nodiscard]] QStringList violationsOfServerFrame(const QByteArray &frame) const
    {
        return violationsOfFrame("fromServer", frame);
    }

private:
    explicit OpenApiContract(QJsonObject document)
        : m_document(std::move(document))
    {
    }

    QStringList violationsOfFrame(const char *sender, const QByteArray &frame) const;

    QJsonObject m_document;
};

} // namespace vynlex
