// Every text the code passes through tr has a finished Chinese translation.
// That the staged catalogues load on their own, from a suite that has
// nothing else, and give the window its Chinese title (the one the
// single-instance search looks for) is tst_shell_language's to show.

#include "QtPrinters.h"
#include "TableTests.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Message
{
    QString context;
    QString source;
    QString translation;
    QString type;
};

QVector<Message> readCatalogue(const QString& path, QString& error)
{
    QVector<Message> messages;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = "cannot open " + path;
        return messages;
    }
    QXmlStreamReader xml(&file);
    QString context;
    Message current;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("name"))
            context = xml.readElementText();
        else if (xml.name() == QLatin1String("message"))
            current = Message {context, {}, {}, {}};
        else if (xml.name() == QLatin1String("source"))
            current.source = xml.readElementText();
        else if (xml.name() == QLatin1String("translation")) {
            current.type = xml.attributes().value("type").toString();
            current.translation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            messages << current;
        }
    }
    if (xml.hasError())
        error = path + ": " + xml.errorString();
    return messages;
}

QSet<QString> placeholders(const QString& text)
{
    QSet<QString> found;
    QRegularExpressionMatchIterator it = QRegularExpression("%\\d+").globalMatch(text);
    while (it.hasNext())
        found << it.next().captured();
    return found;
}

} // namespace

struct EveryTrTextHasAFinishedTranslationRow {
    std::string rowName;
    QString catalogue;
    QStringList sourceFolders;
};

static std::vector<EveryTrTextHasAFinishedTranslationRow> everyTrTextHasAFinishedTranslationRows()
{
    std::vector<EveryTrTextHasAFinishedTranslationRow> rows;
    rows.push_back({"tool", "Quorvex_zh.ts", QStringList {"app", "collect", "store", "ui"}});
    rows.push_back({"widget library", "CustomCtr_zh_CN.ts", QStringList {"libs/CustomCtr"}});
    rows.push_back({"shared tools", "CommonTools_zh_CN.ts", QStringList {"libs/CommonTools"}});
    return rows;
}

class CatalogueTest : public ::testing::Test {
protected:
    // lupdate over the real sources, merged into a copy of the committed
    // catalogue: whatever comes out unfinished lacks a translation.
};

TEST_F(CatalogueTest, everyTrText_hasAFinishedTranslation)
{
    forEachRow(everyTrTextHasAFinishedTranslationRows(), [&](const EveryTrTextHasAFinishedTranslationRow& row) {
        const QString catalogue = row.catalogue;
        const QStringList sourceFolders = row.sourceFolders;
        const QString lupdate = QStringLiteral(QUORVEX_LUPDATE);
        ASSERT_TRUE(QFile::exists(lupdate)) << qPrintable(lupdate + " is missing: install the Debian package qttools5-dev-tools");

        QTemporaryDir temporary;
        const QString refreshed = temporary.path() + '/' + catalogue;
        ASSERT_TRUE(QFile::copy(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/translations/") + catalogue, refreshed));
        QFile::setPermissions(refreshed, QFile::ReadOwner | QFile::WriteOwner);

        QStringList arguments {"-locations", "none", "-no-ui-lines", "-silent"};
        for (const QString& folder : sourceFolders)
            arguments << QStringLiteral(QUORVEX_SOURCE_DIR "/") + folder;
        arguments << "-ts" << refreshed;
        QProcess process;
        process.start(lupdate, arguments);
        ASSERT_TRUE(process.waitForFinished(120000));
        ASSERT_TRUE(process.exitCode() == 0) << process.readAllStandardError().constData();

        QString error;
        const QVector<Message> messages = readCatalogue(refreshed, error);
        ASSERT_TRUE(error.isEmpty()) << qPrintable(error);
        QStringList problems;
        for (const Message& message : messages) {
            if (message.type == QLatin1String("vanished") || message.type == QLatin1String("obsolete"))
                continue;
            const QString where = QString("%1: \"%2\"").arg(message.context, message.source);
            if (message.type == QLatin1String("unfinished") || message.translation.trimmed().isEmpty())
                problems << where + " has no finished translation";
            else if (placeholders(message.source) != placeholders(message.translation))
                problems << where + " loses or adds a %-placeholder";
        }
        ASSERT_TRUE(problems.isEmpty()) << qPrintable("\n  " + problems.join("\n  "));
    });
}
