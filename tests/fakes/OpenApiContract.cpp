#include "tests/fakes/OpenApiContract.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <cmath>
#include <optional>

namespace vynlex {

namespace {

bool matches(const QString &pattern, const QString &text)
{
    return QRegularExpression(pattern).match(text).hasMatch();
}

QString shown(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

class Schemas {
public:
    explicit Schemas(const QJsonObject &document)
        : m_document(document)
    {
    }

    [[nodiscard]] QJsonObject resolved(const QJsonValue &value) const
    {
        const QJsonObject object = value.toObject();
        const QString reference = object["$ref"].toString();
        if (reference.isEmpty())
            return object;
        if (!reference.startsWith("#/"))
            qFatal("not a local reference: %s", qPrintable(reference));
        QJsonValue found = m_document;
        for (const QString &step : reference.mid(2).split('/'))
            found = found[step];
        if (!found.isObject())
            qFatal("no such reference: %s", qPrintable(reference));
        return resolved(found);
    }

    void check(const QJsonValue &value, const QJsonValue &schemaOrReference, const QString &place,
               QStringList &violations) const
    {
        const QJsonObject schema = resolved(schemaOrReference);
        refuseUnknownKeywords(schema);
        if (schema.contains("oneOf"))
            return checkOneOf(value, schema["oneOf"].toArray(), place, violations);

        const QString type = schema["type"].toString();
        if (!isOfType(value, type)) {
            violations << place + ": expected " + type + ", found " + shown(value);
            return;
        }
        const auto complain = [&](const QString &what) { violations << place + ": " + shown(value) + " " + what; };
        if (schema.contains("enum") && !schema["enum"].toArray().contains(value))
            complain("is none of " + shown(schema["enum"]));
        if (value.isDouble())
            checkRange(value.toDouble(), schema, "minimum", "maximum", complain);
        if (value.isString()) {
            const QString text = value.toString();
            checkRange(static_cast<double>(text.toUcs4().size()), schema, "minLength", "maxLength", complain);
            if (schema.contains("pattern") && !matches(schema["pattern"].toString(), text))
                complain("does not match " + schema["pattern"].toString());
        }
        if (value.isArray())
            checkArray(value.toArray(), schema, place, violations);
        if (value.isObject())
            checkObject(value.toObject(), schema, place, violations);
    }

private:
    static void refuseUnknownKeywords(const QJsonObject &schema)
    {
        static const QStringList known{
            "type",     "enum",       "oneOf",       "required",    "items",   "minimum",
            "maximum",  "properties", "minLength",   "maxLength",   "pattern", "additionalProperties",
            "minItems", "maxItems",   "uniqueItems", "description", "default"};
        for (const QString &keyword : schema.keys()) {
            if (!known.contains(keyword))
                qFatal("a schema uses \"%s\", which the checker does not know", qPrintable(keyword));
        }
        if (!schema.contains("type") && !schema.contains("oneOf"))
            qFatal("a schema has no type");
        if (schema.contains("additionalProperties") && !schema["additionalProperties"].isBool())
            qFatal("additionalProperties other than true and false are not known to the checker");
    }

    static bool isOfType(const QJsonValue &value, const QString &type)
    {
        if (type == "integer")
            return value.isDouble() && std::floor(value.toDouble()) == value.toDouble();
        return (type == "number" && value.isDouble()) || (type == "string" && value.isString()) ||
               (type == "boolean" && value.isBool()) || (type == "array" && value.isArray()) ||
               (type == "object" && value.isObject());
    }

    template<class Complain>
    static void checkRange(double size, const QJsonObject &schema, const QString &least, const QString &most,
                           const Complain &complain)
    {
        if (schema.contains(least) && size < schema[least].toDouble())
            complain("is below the " + least + " of " + shown(schema[least]));
        if (schema.contains(most) && size > schema[most].toDouble())
            complain("is above the " + most + " of " + shown(schema[most]));
    }

    void checkOneOf(const QJsonValue &value, const QJsonArray &choices, const QString &place,
                    QStringList &violations) const
    {
        QStringList reasons;
        int fitting = 0;
        for (const auto choice : choices) {
            QStringList mismatches;
            check(value, choice, place, mismatches);
            if (mismatches.isEmpty())
                ++fitting;
            else
                reasons << mismatches.first();
        }
        if (fitting != 1)
            violations << place + ": fits " + QString::number(fitting) + " of the forms (" + reasons.join("; ") + ")";
    }

    void checkArray(const QJsonArray &array, const QJsonObject &schema, const QString &place,
                    QStringList &violations) const
    {
        const auto complain = [&](const QString &what) { violations << place + ": its length " + what; };
        checkRange(static_cast<double>(array.size()), schema, "minItems", "maxItems", complain);
        for (qsizetype i = 0; i < array.size(); ++i) {
            const QString element = place + "[" + QString::number(i) + "]";
            check(array[i], schema["items"], element, violations);
            for (qsizetype j = 0; schema["uniqueItems"].toBool() && j < i; ++j) {
                if (array[j] == array[i])
                    violations << element + ": stands there twice";
            }
        }
    }

    void checkObject(const QJsonObject &object, const QJsonObject &schema, const QString &place,
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
    const QString type = schema["type"].toString();
    if (type == "array") {
        QJsonArray elements;
        for (const QString &element : text.split(','))
            elements << fromText(element, schemas.resolved(schema["items"]), schemas);
        return elements;
    }
    if (type == "integer" && matches("^-?[0-9]{1,15}$", text))
        return text.toLongLong();
    return text;
}

struct Operation {
    QJsonObject record;
    QList<QJsonObject> parameters;
    QHash<QString, QString> pathValues;
};

std::optional<Operation> findOperation(const QJsonObject &document, const QString &basePath, const QByteArray &method,
                                       const QString &path, QStringList &violations)
{
    const Schemas schemas(document);
    const QJsonObject paths = document["paths"].toObject();
    for (auto it = paths.begin(); it != paths.end(); ++it) {
        const QStringList expected = (basePath + it.key()).split('/');
        const QStringList found = path.split('/');
        if (expected.size() != found.size())
            continue;
        Operation operation;
        bool same = true;
        for (qsizetype i = 0; i < expected.size() && same; ++i) {
            if (expected[i].startsWith('{'))
                operation.pathValues[expected[i].mid(1, expected[i].size() - 2)] = found[i];
            else
                same = expected[i] == found[i];
        }
        if (!same)
            continue;
        const QJsonObject item = it.value().toObject();
        const QString verb = QString::fromLatin1(method);
        if (verb != verb.toUpper() || !item.contains(verb.toLower())) {
            violations << "method: " + verb + " is not in the document for " + it.key();
            return std::nullopt;
        }
        operation.record = item[verb.toLower()].toObject();
        for (const QJsonArray &list : {item["parameters"].toArray(), operation.record["parameters"].toArray()}) {
            for (const auto parameter : list)
                operation.parameters << schemas.resolved(parameter);
        }
        return operation;
    }
    violations << "path: " + path + " is not in the document";
    return std::nullopt;
}

void checkJson(const QByteArray &body, const QJsonValue &schema, const Schemas &schemas, QStringList &violations)
{
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(body, &error);
    if (json.isNull()) {
        violations << "body: not a JSON object or array: " + error.errorString();
        return;
    }
    const QJsonValue value = json.isArray() ? QJsonValue(json.array()) : QJsonValue(json.object());
    schemas.check(value, schema, "body", violations);
}

QJsonValue jsonSchema(const QJsonObject &holder)
{
    return holder["content"]["application/json"]["schema"];
}

std::optional<QString> headerNamed(const OpenApiContract::Headers &headers, const QString &name)
{
    for (const auto &[key, value] : headers) {
        if (name.compare(QString::fromLatin1(key), Qt::CaseInsensitive) == 0)
            return QString::fromUtf8(value);
    }
    return std::nullopt;
}

} // namespace

OpenApiContract::OpenApiContract(QJsonObject document)
    : m_document(std::move(document))
    , m_basePath(m_document["servers"][0]["url"].toString().section('/', 3))
{
    if (!m_document["openapi"].toString().startsWith("3.0."))
        qFatal("not an OpenAPI 3.0 document");
    if (!m_basePath.isEmpty())
        m_basePath.prepend('/');
}

OpenApiContract OpenApiContract::ofConfera()
{
    QFile file(VYNLEX_CONFERA_API);
    QJsonParseError error;
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", VYNLEX_CONFERA_API, qPrintable(file.errorString()));
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isObject())
        qFatal("%s: %s at %d", VYNLEX_CONFERA_API, qPrintable(error.errorString()), error.offset);
    return OpenApiContract(document.object());
}

QStringList OpenApiContract::violationsOfRequest(const QByteArray &method, const QString &path, const Headers &headers,
                                                 const Query &query, const QByteArray &body) const
{
    QStringList violations;
    const Schemas schemas(m_document);
    const auto operation = findOperation(m_document, m_basePath, method, path, violations);
    if (!operation)
        return violations;

    QStringList knownInQuery;
    for (const QJsonObject &parameter : operation->parameters) {
        const QString name = parameter["name"].toString();
        const QString in = parameter["in"].toString();
        QStringList found;
        if (in == "query") {
            knownInQuery << name;
            for (const auto &[key, value] : query) {
                if (key == name)
                    found << value;
            }
        } else if (in == "header") {
            if (const auto value = headerNamed(headers, name))
                found << *value;
        } else {
            found << operation->pathValues[name];
        }
        const QString place = in + " " + name;
        if (found.isEmpty() && parameter["required"].toBool())
            violations << place + ": is missing";
        if (found.size() > 1)
            violations << place + ": stands there more than once";
        const QJsonObject schema = schemas.resolved(parameter["schema"]);
        for (const QString &text : found)
            schemas.check(fromText(text, schema, schemas), schema, place, violations);
    }
    for (const auto &[name, value] : query) {
        if (!knownInQuery.contains(name))
            violations << "query " + name + ": is not in the document";
    }

    const QJsonValue security =
        operation->record.contains("security") ? operation->record["security"] : m_document["security"];
    for (const auto requirement : security.toArray()) {
        for (const QString &scheme : requirement.toObject().keys()) {
            const QJsonObject key = m_document["components"]["securitySchemes"][scheme].toObject();
            const QString place = "header " + key["name"].toString();
            const auto value = headerNamed(headers, key["name"].toString());
            if (!value)
                violations << place + ": is missing";
            else if (!matches(key["x-pattern"].toString(), *value))
                violations << place + ": is not of the form " + key["x-pattern"].toString();
        }
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
    const auto operation = findOperation(m_document, m_basePath, method, path, violations);
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
