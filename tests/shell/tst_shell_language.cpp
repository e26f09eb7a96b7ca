// Language at start, the switch messages, the catalogue chain and the help
// button, observed in a real window of a probe program that runs from a
// suite laid out in a temporary folder.

#include "QtPrinters.h"
#include "TableTests.h"

#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const char* const kCatalogueNames[] = {"Quorvex_zh.qm", "qt_zh_CN.qm", "widgets_zh_cn.qm", "CustomCtr_zh_CN.qm",
                                       "CommonTools_zh_CN.qm"};
const QString kChinese = QString::fromUtf8(
    "language=0 title=奎沃思 record=采集 header=型号名称 catalogues=Quorvex,qt,widgets,CustomCtr");
const QString kEnglish = "language=1 title=Quorvex record=Record header=Model Name catalogues=";

// A suite in a temporary folder: <root>/apps/Quorvex/probe beside
// <root>/common/translation, and the probe's output once it has run.
struct Suite
{
    QTemporaryDir root;
    QString programData = root.path() + "/programdata/ZELTA";
    QMap<QString, QString> lines; // step -> the rest of its line

    bool make(const QStringList& leaveOut = {})
    {
        const QString apps = root.path() + "/apps/Quorvex";
        const QString translations = root.path() + "/common/translation";
        if (!QDir().mkpath(apps) || !QDir().mkpath(translations)
            || !QFile::copy(QUORVEX_LANGUAGE_PROBE, apps + "/probe"))
            return false;
        for (const char* name : kCatalogueNames) {
            const QString staged = QStringLiteral(QUORVEX_SUITE_DIR "/common/translation/") + name;
            if (!QFile::exists(staged)) {
                qWarning("%s is not staged: build the QuorvexTranslations target", qPrintable(staged));
                return false;
            }
            if (!leaveOut.contains(name) && !QFile::copy(staged, translations + '/' + name))
                return false;
        }
        return true;
    }
    static void storeLanguage(const QString& folder, const QByteArray& value)
    {
        QDir().mkpath(folder);
        QFile file(folder + "/CustomConfig.ini");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\nLanguage=" + value + "\n");
    }
    bool run(const QStringList& arguments = {})
    {
        QProcess probe;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QUORVEX_PROGRAM_DATA", programData);
        probe.setProcessEnvironment(environment);
        probe.start(root.path() + "/apps/Quorvex/probe", arguments);
        if (!probe.waitForFinished(60000) || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
            qWarning("probe failed: %s", probe.readAllStandardError().constData());
            return false;
        }
        for (const QString& line : QString::fromUtf8(probe.readAllStandardOutput()).split('\n'))
            lines[line.section(' ', 0, 0)] = line.section(' ', 1);
        return lines.contains("start");
    }
};

struct StartRow
{
    std::string rowName;
    QByteArray stored; // empty: no settings file
    QString storedIn;  // below the suite
    QString toldIn;    // QUORVEX_PROGRAM_DATA, below the suite
    QStringList arguments;
    const QString& expected;
};

struct ChainRow
{
    std::string rowName;
    QString missing;
    QString answering;
};

} // namespace

TEST(LanguageTest, startLanguage_fromTheCommandLineOrTheStoredBase64Value)
{
    forEachRow(std::vector<StartRow> {
                   {"no settings file", "", "cfg", "cfg", {}, kEnglish},
                   {"an unencoded value is ignored", "CH", "cfg", "cfg", {}, kEnglish},
                   {"ZELTA is read where VANTO was named", "Q0g=", "ZELTA/cfg", "VANTO/cfg", {}, kChinese},
                   {"ENG overrides stored Chinese", "Q0g=", "cfg", "cfg", {"ENG"}, kEnglish},
                   {"other spellings are ignored", "Q0g=", "cfg", "cfg", {"eng"}, kChinese},
                   {"CH overrides stored English", "RU5H", "cfg", "cfg", {"CH"}, kChinese},
               },
               [](const StartRow& row) {
                   Suite suite;
                   ASSERT_TRUE(suite.make());
                   if (!row.stored.isEmpty())
                       Suite::storeLanguage(suite.root.path() + '/' + row.storedIn, row.stored);
                   suite.programData = suite.root.path() + '/' + row.toldIn;
                   ASSERT_TRUE(suite.run(row.arguments));
                   EXPECT_EQ(suite.lines.value("start"), row.expected);
               });
}

TEST(LanguageTest, switchMessagesChangeTheWholeWindow_helpOpensTheManualInUse)
{
    Suite suite;
    ASSERT_TRUE(suite.make());
    Suite::storeLanguage(suite.programData, "Q0g=");
    ASSERT_TRUE(suite.run());
    const struct { const char* step; const char* outcome; const QString& state; } steps[] = {
        {"start", "", kChinese},
        {"msg-english", "handled=1 result=12345 ", kEnglish},
        {"msg-english-again", "handled=1 result=12345 ", kEnglish},
        {"msg-chinese", "handled=1 result=12345 ", kChinese},
        // Other messages, and events of the X11 kind, are not ours.
        {"msg-other", "handled=0 result=12345 ", kChinese},
        {"msg-x11", "handled=0 result=12345 ", kChinese},
        {"apply-chinese", "returned=1 ", kChinese},
    };
    for (const auto& step : steps)
        EXPECT_EQ(suite.lines.value(step.step), step.outcome + step.state) << step.step;

    const QString page = "GUID-C9B6C6BA-02CC-4D2D-8A13-48773AF3C0AF.html";
    const QString base = QDir(suite.root.path()).absolutePath() + "/common/doc/User_Manual_ZELTA_";
    EXPECT_EQ(suite.lines.value("help-start"), base + "Chinese/" + page);
    EXPECT_EQ(suite.lines.value("help-english"), base + "English/" + page);
    EXPECT_EQ(suite.lines.value("help-chinese"), base + "Chinese/" + page);
    // The staged suite has both pages where the button looks.
    for (const char* language : {"English/", "Chinese/"}) {
        const QString staged = QString(QUORVEX_SUITE_DIR "/common/doc/User_Manual_ZELTA_") + language + page;
        EXPECT_TRUE(QFile::exists(staged)) << qPrintable(staged + " is not staged");
    }
}

TEST(LanguageTest, missingCatalogue_stopsTheChain)
{
    forEachRow(std::vector<ChainRow> {
                   {"tool's own", "Quorvex_zh.qm", ""},
                   {"widget library", "CustomCtr_zh_CN.qm", "Quorvex,qt,widgets"},
                   {"shared tools", "CommonTools_zh_CN.qm", "Quorvex,qt,widgets,CustomCtr"},
               },
               [](const ChainRow& row) {
                   Suite suite;
                   ASSERT_TRUE(suite.make({row.missing}));
                   Suite::storeLanguage(suite.programData, "Q0g=");
                   ASSERT_TRUE(suite.run());
                   const QString start = suite.lines.value("start");
                   EXPECT_TRUE(start.startsWith("language=0 ")) << qPrintable(start);
                   EXPECT_TRUE(start.endsWith(" catalogues=" + row.answering)) << qPrintable(start);
                   EXPECT_TRUE(suite.lines.value("apply-chinese").startsWith("returned=0 "));
               });
}
