#include "tests/fakes/OpenApiContract.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMultiMap>
#include <QRegularExpression>

#include <cmath>
#include <map>
#include <optional>

namespace vynlex {
namespace {

QString shown(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

bool isOfType(const QJsonValue &value, const QJsonValue &type)
{
    if (type == "integer")
        return value.isDouble() && std::floor(value.toDouble()) == value.toDouble();
    return (type == "number" && value.isDouble()) || (type == "string" && value.isString()) ||
           (type == "boolean" && value.isBool()) || (type == "array" && value.isArray()) ||
           (type == "object" && value.isObject());
}

bool areUnique(const QVariantList &elements)
{
    return std::ranges::all_of(elements, [&](const QVariant &element) { return elements.count(element) == 1; });
}

qsizetype lengthOf(const QJsonValue &text)
{
    return text.toString().toUcs4().size();
}

/// What a keyword of a schema asks of a value of the schema's type. Those without a function are looked at elsewhere.
using Holds = bool (*)(const QJsonValue &value, const QJsonValue &limit);
const std::map<QString, Holds> keywords{
    {"enum", [](auto &value, auto &limit) { return limit.toArray().contains(value); }},
    {"minimum", [](auto &value, auto &limit) { return value.toDouble() >= limit.toDouble(); }},
    {"maximum", [](auto &value, auto &limit) { return value.toDouble() <= limit.toDouble(); }},
    {"minLength", [](auto &value, auto &limit) { return lengthOf(value) >= limit.toInteger(); }},
    {"maxLength", [](auto &value, auto &limit) { return lengthOf(value) <= limit.toInteger(); }},
    {"pattern",
     [](auto &value, auto &limit) { return value.toString().contains(QRegularExpression(limit.toString())); }},
    {"minItems", [](auto &value, auto &limit) { return value.toArray().size() >= limit.toInteger(); }},
    {"maxItems", [](auto &value, auto &limit) { return value.toArray().size() <= limit.toInteger(); }},
    {"uniqueItems",
     [](auto &value, auto &limit) { return !limit.toBool() || areUnique(value.toArray().toVariantList()); }},
    {"type", nullptr},
    {"items", nullptr},
    {"properties", nullptr},
    {"required", nullptr},
    {"additionalProperties", nullptr},
    {"description", nullptr},
    {"default", nullptr},
};

class Schemas {
public:
    explicit Schemas(const QJsonObject &document)
        : m_document(document)
    {
    }

    [[nodiscard]] QJsonObject resolved(const QJsonValue &value) const
    {
        const QString reference = value["$ref"].toString();
        if (reference.isEmpty())
            return value.toObject();
        QJsonValue found = m_document;
        for (const QString &step : reference.split('/').mid(1)) // behind the "#"
            found = found[step];
        if (!found.isObject())
            qFatal("no such reference: %s", qPrintable(reference));
        return resolved(found);
    }

    void check(const QJsonValue &value, const QJsonValue &schemaOrReference, const QString &place,
               QStringList &violations) const
    {
        const QJsonObject schema = resolved(schemaOrReference);
        if (schema.contains("oneOf"))
            return checkOneOf(value, schema["oneOf"].toArray(), place, violations);
        if (!isOfType(value, schema["type"])) {
            violations << place + ": expected " + shown(schema["type"]) + ", found " + shown(value);
            return;
        }
        for (auto it = schema.begin(); it != schema.end(); ++it) {
            const auto keyword = keywords.find(it.key());
            if (keyword == keywords.end())
                qFatal("a schema uses \"%s\", which the checker does not know", qPrintable(it.key()));
            if (keyword->second && !keyword->second(value, it.value()))
                violations << place + ": " + shown(value) + " is against " + it.key() + " " + shown(it.value());
        }
        const QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i)
            check(array[i], schema["items"], place + "[" + QString::number(i) + "]", violations);
        checkMembers(value.toObject(), schema, place, violations);
    }

private:
    void checkOneOf(const QJsonValue &value, const QJsonArray &forms, const QString &place,
                    QStringList &violations) const
    {
        QStringList reasons;
        for (const auto form : forms) {
            QStringList mismatches;
            check(value, form, place, mismatches);
            reasons << mismatches.mid(0, 1);
        }
        const qsizetype fitting = forms.size() - reasons.size();
        if (fitting != 1)
            violations << place + ": fits " + QString::number(fitting) + " of the forms (" + reasons.join("; ") + ")";
    }

    void checkMembers(const QJsonObject &object, const QJsonObject &schema, const QString &place,
                      QStringList &violations) const
    {
        for (const auto key : schema["required"].toArray()) {
            if (!object.contains(key.toString()))
                violations << place + "." + key.toString() + ": is missing";
        }
        const QJsonObject properties = schema["properties"].toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            const QString member = place + "." + it.key();
            if (properties.contains(it.key()))
                check(it.value(), properties[it.key()], member, violations);
            else if (!schema["additionalProperties"].toBool(true))
                violations << member + ": is not in the document";
        }
    }

    const QJsonObject &m_document;
};

/// The value that a text stands for, as in a header or a query; a text that is none stays one and fails its type.
QJsonValue fromText(const QString &text, const QJsonObject &schema, const Schemas &schemas)
{
    if (schema["type"] == "array") {
        QJsonArray elements;
        for (const QString &element : text.split(','))
            elements << fromText(element, schemas.resolved(schema["items"]), schemas);
        return elements;
    }
    bool isNumber = false;
    const qlonglong number = text.toLongLong(&isNumber);
    return schema["type"] == "integer" && isNumber ? QJsonValue(number) : QJsonValue(text);
}

struct Operation {
    QJsonObject record;
    QJsonArray parameters;
    QRegularExpressionMatch path;
};

std::optional<Operation> findOperation(const QJsonObject &document, const QByteArray &method, const QString &path,
                                       QStringList &violations)
{
    static const QRegularExpression parameter("\\{(\\w+)\\}");
    const QString basePath = '/' + document["servers"][0]["url"].toString().section('/', 3);
    const QJsonObject paths = document["paths"].toObject();
    for (auto it = paths.begin(); it != paths.end(); ++it) {
        const QRegularExpression form('^' + basePath + it.key().replace(parameter, "(?<\\1>[^/]*)") + '$');
        const auto match = form.match(path);
        if (!match.hasMatch())
            continue;
        const QJsonObject item = it.value().toObject();
        const QJsonObject record = item[QString::fromLatin1(method).toLower()].toObject();
        if (!record.isEmpty()) {
            QJsonArray parameters = item["parameters"].toArray();
            for (const auto own : record["parameters"].toArray())
                parameters << own;
            return Operation{record, parameters, match};
        }
        violations << "method: " + QString::fromLatin1(method) + " is not in the document for " + it.key();
        return std::nullopt;
    }
    violations << "path: " + path + " is not in the document";
    return std::nullopt;
}

void checkJson(const QByteArray &body, const QJsonValue &schema, const Schemas &schemas, QStringList &violations)
{
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(body, &error);
    if (json.isNull())
        violations << "body: not a JSON object or array: " + error.errorString();
    else
        schemas.check(json.isArray() ? QJsonValue(json.array()) : QJsonValue(json.object()), schema, "body",
                      violations);
}

QJsonValue jsonSchema(const QJsonObject &holder)
{
    return holder["content"]["application/json"]["schema"];
}

} // namespace

OpenApiContract OpenApiContract::ofConfera()
{
    QFile file(VYNLEX_CONFERA_API);
    QJsonParseError error;
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", VYNLEX_CONFERA_API, qPrintable(file.errorString()));
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.object()["openapi"].toString().startsWith("3.0."))
        qFatal("%s: no OpenAPI 3.0 document: %s", VYNLEX_CONFERA_API, qPrintable(error.errorString()));
    return OpenApiContract(document.object());
}

QStringList OpenApiContract::violationsOfRequest(const QByteArray &method, const QString &path, const Headers &headers,
                                                 const Query &query, const QByteArray &body) const
{
    QStringList violations;
    const Schemas schemas(m_document);
    auto operation = findOperation(m_document, method, path, violations);
    if (!operation)
        return violations;

    QMultiMap<QString, QString> given; // by place
    for (const auto &[name, value] : headers)
        given.insert("header " + QString::fromLatin1(name).toLower(), QString::fromUtf8(value));
    for (const auto &[name, value] : query)
        given.insert("query " + name, value);
    for (const QString &name : operation->path.regularExpression().namedCaptureGroups().mid(1))
        given.insert("path " + name, operation->path.captured(name));

    // A key is one more header, which the document describes elsewhere.
    const bool hasOwnSecurity = operation->record.contains("security");
    for (const auto requirement : (hasOwnSecurity ? operation->record["security"] : m_document["security"]).toArray()) {
        for (const QString &scheme : requirement.toObject().keys()) {
            const QJsonValue key = m_document["components"]["securitySchemes"][scheme];
            operation->parameters << QJsonObject{
                {"in", key["in"]},
                {"name", key["name"]},
                {"required", true},
                {"schema", QJsonObject{{"type", "string"}, {"pattern", key["x-pattern"]}}}};
        }
    }
    for (const auto parameterOrReference : operation->parameters) {
        const QJsonObject parameter = schemas.resolved(parameterOrReference);
        const QString in = parameter["in"].toString();
        const QString name = parameter["name"].toString();
        const QString place = in + ' ' + (in == "header" ? name.toLower() : name);
        const QStringList found = given.values(place);
        given.remove(place);
        if (found.isEmpty() && parameter["required"].toBool())
            violations << place + ": is missing";
        if (found.size() > 1)
            violations << place + ": stands there more than once";
        const QJsonObject schema = schemas.resolved(parameter["schema"]);
        for (const QString &text : found)
            schemas.check(fromText(text, schema, schemas), schema, place, violations);
    }
    for (const QString &place : given.uniqueKeys()) {
        if (place.startsWith("query "))
            violations << place + ": is not in the document";
    }

    const QJsonObject requestBody = schemas.resolved(operation->record["requestBody"]);
    if (requestBody.isEmpty() && !body.isEmpty())
        violations << "body: none is in the document";
    else if (!requestBody.isEmpty() && body.isEmpty() && requestBody["required"].toBool())
        violations << "body: is missing";
    else if (!body.isEmpty())
        checkJson(body, jsonSchema(requestBody), schemas, violations);
    return violations;
}

QStringList OpenApiContract::violationsOfAnswer(const QByteArray &method, const QString &path, int status,
                                                const QByteArray &body) const
{
    QStringList violations;
    const Schemas schemas(m_document);
    const auto operation = findOperation(m_document, method, path, violations);
    if (!operation)
        return violations;
    const QJsonObject answer = schemas.resolved(operation->record["responses"][QString::number(status)]);
    if (answer.isEmpty())
        violations << "status: " + QString::number(status) + " is not in the document";
    else
        checkJson(body, jsonSchema(answer), schemas, violations);
    return violations;
}

QStringList OpenApiContract::violationsOfFrame(const char *sender, const QByteArray &frame) const
{
    QStringList violations;
    checkJson(frame, m_document["x-socket"][QLatin1String(sender)], Schemas(m_document), violations);
    return violations;
}

} // namespace vynlex
