#pragma once
// The ignore list: {"IgnoreNodes": ["pattern", ...]}. A feature whose name
// contains any pattern (case-sensitive) is not read by the feature capture.

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

namespace collect {

// Relative to the current directory, as the tool is started from its folder.
constexpr char kIgnoreListPath[] = "./Config/Config.json";

struct IgnoreListContent final {
    enum class Outcome {
        Read,          // "IgnoreNodes" was an array (possibly empty)
        NotJson,       // not a JSON document
        NoPatternArray // no "IgnoreNodes" array at the top level
    };
    Outcome outcome = Outcome::NoPatternArray;
    // In file order, duplicates kept.
    QStringList patterns;
    // Why the text is not JSON, with the offset; empty otherwise.
    QString parseError;
    // Elements that are not strings, left out of the patterns (one of them
    // would otherwise be an empty pattern that matches every feature):
    // "element <index>: <JSON>".
    QStringList skippedElements;
};

IgnoreListContent parseIgnoreList(const QByteArray& utf8Json);

// The pattern of the list that name contains, if any.
const QString* matchingIgnorePattern(const QString& name, const QSet<QString>& patterns);

} // namespace collect
