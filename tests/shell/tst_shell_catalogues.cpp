// Every text the code passes through tr has a finished Chinese translation.
// That the staged catalogues load on their own, from a suite that has
// nothing else, and give the window its Chinese title (the one the
// single-instance search looks for) is tst_shell_language's to show.

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

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

class CatalogueTest : public QObject
{
    Q_OBJECT

private slots:
    void everyTrText_hasAFinishedTranslation_data()
    {
        QTest::addColumn<QString>("catalogue");
        QTest::addColumn<QStringList>("sourceFolders");
        QTest::newRow("tool") << "Quorvex_zh.ts" << QStringList {"app", "collect", "store", "ui"};
        QTest::newRow("widget library") << "CustomCtr_zh_CN.ts" << QStringList {"libs/CustomCtr"};
        QTest::newRow("shared tools") << "CommonTools_zh_CN.ts" << QStringList {"libs/CommonTools"};
    }

    // lupdate over the real sources, merged into a copy of the committed
    // catalogue: whatever comes out unfinished lacks a translation.
    void everyTrText_hasAFinishedTranslation()
    {
        QFETCH(QString, catalogue);
        QFETCH(QStringList, sourceFolders);
        const QString lupdate = QStringLiteral(QUORVEX_LUPDATE);
        QVERIFY2(QFile::exists(lupdate),
                 qPrintable(lupdate + " is missing: install the Debian package qttools5-dev-tools"));

        QTemporaryDir temporary;
        const QString refreshed = temporary.path() + '/' + catalogue;
        QVERIFY(QFile::copy(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/translations/") + catalogue, refreshed));
        QFile::setPermissions(refreshed, QFile::ReadOwner | QFile::WriteOwner);

        QStringList arguments {"-locations", "none", "-no-ui-lines", "-silent"};
        for (const QString& folder : sourceFolders)
            arguments << QStringLiteral(QUORVEX_SOURCE_DIR "/") + folder;
        arguments << "-ts" << refreshed;
        QProcess process;
        process.start(lupdate, arguments);
        QVERIFY(process.waitForFinished(120000));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());

        QString error;
        const QVector<Message> messages = readCatalogue(refreshed, error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
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
        QVERIFY2(problems.isEmpty(), qPrintable("\n  " + problems.join("\n  ")));
    }
};

QTEST_GUILESS_MAIN(CatalogueTest)
#include "tst_shell_catalogues.moc"
