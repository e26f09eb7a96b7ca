// Every text the code passes through tr has a finished Chinese translation,
// and the staged catalogues load as the tool loads them.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTranslator>
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

    // The single-instance search looks for this exact title.
    void windowTitle_isTranslatedToTheSearchedTitle()
    {
        QString error;
        const QVector<Message> messages =
            readCatalogue(QStringLiteral(QUORVEX_SOURCE_DIR "/resources/translations/Quorvex_zh.ts"), error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        auto title = std::find_if(messages.begin(), messages.end(), [](const Message& message) {
            return message.context == QLatin1String("QVirtualCamMainWidget") && message.source == QLatin1String("Quorvex");
        });
        QVERIFY(title != messages.end());
        QCOMPARE(title->translation, QStringLiteral("奎沃思"));
    }

    void stagedCatalogues_loadOnTheirOwn_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("context");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("expected");
        QTest::newRow("tool") << "Quorvex_zh.qm" << "QVirtualCamMainWidget" << "Collect Status" << QStringLiteral("采集状态");
        QTest::newRow("Qt") << "qt_zh_CN.qm" << "QFileDialog" << "Back" << QStringLiteral("后退");
        QTest::newRow("widgets") << "widgets_zh_cn.qm" << "QLineEdit" << "Select All" << QStringLiteral("全选");
        QTest::newRow("widget library") << "CustomCtr_zh_CN.qm" << "CustomMessageBox" << "Cancel" << QStringLiteral("取消");
        QTest::newRow("shared tools") << "CommonTools_zh_CN.qm" << "" << "" << "";
    }

    // Qt's distribution catalogue only points at siblings that the suite does
    // not carry; the staged one must stand alone.
    void stagedCatalogues_loadOnTheirOwn()
    {
        QFETCH(QString, file);
        QFETCH(QString, context);
        QFETCH(QString, source);
        QFETCH(QString, expected);
        QTemporaryDir alone;
        const QString staged = QStringLiteral(QUORVEX_SUITE_DIR "/common/translation/") + file;
        QVERIFY2(QFile::exists(staged), qPrintable(staged + " is not staged: build QuorvexTranslations"));
        QVERIFY(QFile::copy(staged, alone.path() + '/' + file));
        QTranslator translator;
        QVERIFY(translator.load(file, alone.path(), QString(), QString()));
        if (!source.isEmpty())
            QCOMPARE(translator.translate(context.toUtf8(), source.toUtf8()), expected);
    }
};

QTEST_GUILESS_MAIN(CatalogueTest)
#include "tst_shell_catalogues.moc"
