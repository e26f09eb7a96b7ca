#include "IgnoreList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace collect {

IgnoreListContent ParseIgnoreList(const QByteArray& utf8Json)
{
    IgnoreListContent content;
    const QJsonDocument document = QJsonDocument::fromJson(utf8Json);
    if (document.isNull()) {
        content.outcome = IgnoreListContent::Outcome::NotJson;
        return content;
    }
    // An array document has no keys: object() gives an empty object.
    const QJsonValue nodes = document.object().value(QStringLiteral("IgnoreNodes"));
    if (!nodes.isArray())
        return content;

    content.outcome = IgnoreListContent::Outcome::Read;
    const QJsonArray array = nodes.toArray();
    for (const QJsonValue& element : array)
        content.patterns.append(element.toString());
    return content;
}

const QString* MatchingIgnorePattern(const QString& name, const QSet<QString>& patterns)
{
    for (const QString& pattern : patterns) {
        if (name.contains(pattern))
            return &pattern;
    }
    return nullptr;
}

} // namespace collect
