#include "IgnoreList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace collect {

IgnoreListContent parseIgnoreList(const QByteArray& utf8Json)
{
    IgnoreListContent content;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(utf8Json, &error);
    if (document.isNull()) {
        content.outcome = IgnoreListContent::Outcome::NotJson;
        content.parseError = error.errorString() + QStringLiteral(" at offset ") + QString::number(error.offset);
        return content;
    }
    // An array document has no keys: object() gives an empty object.
    const QJsonValue nodes = document.object().value(QStringLiteral("IgnoreNodes"));
    if (!nodes.isArray())
        return content;

    content.outcome = IgnoreListContent::Outcome::Read;
    const QJsonArray array = nodes.toArray();
    for (int i = 0; i < array.size(); ++i) {
        const QJsonValue element = array.at(i);
        if (element.isString()) {
            content.patterns.append(element.toString());
            continue;
        }
        // Wrapped, as a bare value is no JSON document.
        QByteArray text = QJsonDocument(QJsonArray{element}).toJson(QJsonDocument::Compact);
        text = text.mid(1, text.size() - 2);
        content.skippedElements.append(QStringLiteral("element ") + QString::number(i) + QStringLiteral(": ")
                                       + QString::fromUtf8(text));
    }
    return content;
}

const QString* matchingIgnorePattern(const QString& name, const QSet<QString>& patterns)
{
    for (const QString& pattern : patterns) {
        if (name.contains(pattern))
            return &pattern;
    }
    return nullptr;
}

} // namespace collect
