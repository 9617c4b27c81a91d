#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "sandbox/backend/BackendRoutes.h"
#include "tests/fakes/OpenApiContract.h"
#include "tests/sandbox/server/RunningServer.h"
#include "tests/sandbox/server/TestClient.h"

namespace sandbox {

// People and threads of the seed.
inline const std::string asha = "65b20a005eed000000000001";  // the user of most tests
inline const std::string rohan = "65b20a005eed000000000002"; // has 200 messages with her
inline const std::string meera = "65b20a005eed000000000003"; // has no thread with her
inline const std::string anna = "65b20a005eed000000000004";
inline const std::string brian = "65b20a005eed000000000005";
inline const std::string waiting = "65b20a005eed00000000002c";
inline const std::string longThread = "66a9f2005eed000000000001";  // Asha and Rohan
inline const std::string otherThread = "66a9f2005eed000000000005"; // of two others
inline const std::string exchange = "/api/externalservertp/get-token";

inline QByteArray messageBody(const QString &text)
{
    const QJsonObject component{{"text", text}, {"attachments", QJsonArray()}};
    return QJsonDocument(QJsonObject{{"messageComponent", component}}).toJson();
}

inline QByteArray threadBody(const std::string &first, const std::string &second)
{
    const auto id = [](const std::string &text) { return QString::fromStdString(text); };
    const QJsonObject body{
        {"members", QJsonArray{id(first), id(second)}}, {"context", id(second)}, {"admins", QJsonArray{id(second)}}};
    return QJsonDocument(body).toJson();
}

inline QStringList listed(const QJsonObject &answer, const char *list, const char *key)
{
    QStringList values;
    for (const auto element : answer[list].toArray())
        values << element.toObject()[key].toString();
    return values;
}

struct Reply {
    unsigned status = 0;
    QJsonObject json;

    [[nodiscard]] QString code() const { return json["message"].toString(); }
};

/// A caller of the backend. Whatever is asked and answered is held against the document of the interface.
class Caller {
public:
    using Changes = std::map<std::string, std::optional<std::string>>; ///< no value: without that header

    explicit Caller(const Server::Listening &server, const std::string &host = "demo.confera.example")
        : m_client(server, host)
    {
    }

    /// Exchanges the web token.
    Caller &as(const std::string &userId)
    {
        const auto reply = ask("POST", exchange, R"({"jwt":"web-token-)" + QByteArray::fromStdString(userId) + R"("})",
                               {{"x-source", "myvyn-vynevents"}});
        token = reply.json["jwt"].toString().toStdString();
        return *this;
    }

    Reply ask(const std::string &method, const std::string &target, const QByteArray &body = {},
              const Changes &changes = {})
    {
        Headers headers{{"Content-Type", "application/json"}, {"deviceId", ""}};
        if (!token.empty())
            headers["authorization"] = token;
        for (const auto &[name, value] : changes) {
            headers.erase(name);
            if (value)
                headers[name] = *value;
        }
        const Answer answer = m_client.request(method, target, headers, body.toStdString());
        const auto content = QByteArray::fromStdString(answer.body);

        const QString asked = QString::fromStdString(target);
        const QString path = asked.section('?', 0, 0);
        const auto verb = QByteArray::fromStdString(method);
        QStringList found = contract.violationsOfAnswer(verb, path, static_cast<int>(answer.status), content);
        if (answer.status == 200) {
            vynlex::OpenApiContract::Headers sent;
            for (const auto &[name, value] : headers)
                sent.emplace_back(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
            found += contract.violationsOfRequest(
                verb, path, sent, QUrlQuery(asked.section('?', 1)).queryItems(QUrl::FullyDecoded), body);
        }
        for (const QString &violation : found)
            violations << QString::fromLatin1(verb) + " " + asked + ": " + violation;
        return {answer.status, QJsonDocument::fromJson(content).object()};
    }

    Reply messages(int limit, int offset, const std::string &thread = longThread)
    {
        return ask("GET", "/api/chat/thread/" + thread + "/messages?limit=" + std::to_string(limit) +
                              "&offset=" + std::to_string(offset));
    }
    Reply calls(const std::string &categories, int limit = 200, int offset = 0)
    {
        return ask("GET", "/api/calls?callCategory=" + categories + "&limit=" + std::to_string(limit) +
                              "&offset=" + std::to_string(offset));
    }

    std::string token;
    QStringList violations;
    const vynlex::OpenApiContract contract = vynlex::OpenApiContract::ofConfera();

private:
    TestClient m_client;
};

/// The backend on a data folder, served for as long as the object lives.
struct RunningBackend {
    explicit RunningBackend(const std::filesystem::path &folder, SocketLimits limits = {})
        : api({folder, defaultSeedFile(), std::chrono::hours(1)})
        , server([=, this](ServerContext &context) { addBackendRoutes(context, api, limits); }, optionsFor(folder))
    {
    }
    static ServerOptions optionsFor(const std::filesystem::path &folder)
    {
        ServerOptions options;
        options.dataFolder = folder;
        return options;
    }

    BackendApi api;
    RunningServer server;
};

} // namespace sandbox
