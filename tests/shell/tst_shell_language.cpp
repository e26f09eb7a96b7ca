// Language at start, the switch messages, the catalogue chain and the help
// button, observed in a real window of a probe program that runs from a
// suite laid out in a temporary folder.

#include "QtPrinters.h"
#include "TableTests.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <memory>

namespace {

const char* const kCatalogueNames[] = {"Quorvex_zh.qm", "qt_zh_CN.qm", "widgets_zh_cn.qm", "CustomCtr_zh_CN.qm",
                                       "CommonTools_zh_CN.qm"};
const char* const kHelpPage = "GUID-C9B6C6BA-02CC-4D2D-8A13-48773AF3C0AF.html";
const QString kChineseTitle = QStringLiteral("奎沃思");

struct State
{
    QString language;
    QString title;
    QString record;
    QString header;
    QString catalogues;
};

} // namespace

struct MissingCatalogueStopsTheChainRow {
    std::string rowName;
    QString missing;
    QString answering;
};

static std::vector<MissingCatalogueStopsTheChainRow> missingCatalogueStopsTheChainRows()
{
    std::vector<MissingCatalogueStopsTheChainRow> rows;
    rows.push_back({"tool's own", "Quorvex_zh.qm", ""});
    rows.push_back({"widget library", "CustomCtr_zh_CN.qm", "Quorvex,qt,widgets"});
    rows.push_back({"shared tools", "CommonTools_zh_CN.qm", "Quorvex,qt,widgets,CustomCtr"});
    return rows;
}

class LanguageTest : public ::testing::Test {
protected:
    void SetUp() override;
    std::unique_ptr<QTemporaryDir> m_pSuite;
    QString m_strProgramData;
    QMap<QString, State> m_states;
    QMap<QString, QString> m_lines;
    // Lays out <tmp>/apps/Quorvex/<probe> and <tmp>/common/translation.
    bool makeSuite(const QStringList& leaveOut = {})
    {
        const QString apps = m_pSuite->path() + "/apps/Quorvex";
        const QString translations = m_pSuite->path() + "/common/translation";
        if (!QDir().mkpath(apps) || !QDir().mkpath(translations))
            return false;
        if (!QFile::copy(QStringLiteral(QUORVEX_LANGUAGE_PROBE), apps + "/probe"))
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
    void storeLanguage(const QByteArray& value, const QString& folder = QString())
    {
        const QString dir = folder.isEmpty() ? m_strProgramData : folder;
        QDir().mkpath(dir);
        QFile file(dir + "/CustomConfig.ini");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\nLanguage=" + value + "\n");
    }
    bool runProbe(const QStringList& arguments = {})
    {
        QProcess probe;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QUORVEX_PROGRAM_DATA", m_strProgramData);
        probe.setProcessEnvironment(environment);
        probe.start(m_pSuite->path() + "/apps/Quorvex/probe", arguments);
        if (!probe.waitForFinished(60000) || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
            qWarning("probe failed: %s", probe.readAllStandardError().constData());
            return false;
        }
        const QRegularExpression stateLine(
            "^(\\S+) language=(\\d) title=(.*?) record=(.*?) header=(.*?) catalogues=(.*)$");
        const QStringList lines = QString::fromUtf8(probe.readAllStandardOutput()).split('\n');
        for (const QString& line : lines) {
            const QRegularExpressionMatch match = stateLine.match(line);
            if (match.hasMatch()) {
                m_states[match.captured(1)] = {match.captured(2), match.captured(3), match.captured(4),
                                               match.captured(5), match.captured(6)};
            } else if (!line.isEmpty()) {
                m_lines[line.section(' ', 0, 0)] = line.section(' ', 1);
            }
        }
        return m_states.contains("start");
    }
    void verifyChinese(const QString& step)
    {
        const State state = m_states.value(step);
        ASSERT_EQ(state.language, QString("0"));
        ASSERT_EQ(state.title, kChineseTitle);
        ASSERT_EQ(state.record, QStringLiteral("采集"));
        ASSERT_EQ(state.header, QStringLiteral("型号名称"));
        ASSERT_EQ(state.catalogues, QString("Quorvex,qt,widgets,CustomCtr"));
    }
    void verifyUntranslated(const QString& step, const QString& language)
    {
        const State state = m_states.value(step);
        ASSERT_EQ(state.language, language);
        ASSERT_EQ(state.title, QString("Quorvex"));
        ASSERT_EQ(state.record, QString("Record"));
        ASSERT_EQ(state.header, QString("Model Name"));
        ASSERT_EQ(state.catalogues, QString());
    }
    // One run of the probe: stored Chinese at start, then the switch
    // messages, the help button in both languages and a direct switch.
};

void LanguageTest::SetUp()
{
    m_pSuite = std::make_unique<QTemporaryDir>();
    m_strProgramData = m_pSuite->path() + "/programdata/ZELTA";
    m_states.clear();
    m_lines.clear();
}

TEST_F(LanguageTest, noSettingsFileOrAnUnencodedValue_startsUntranslated)
{
    ASSERT_TRUE(makeSuite());
    ASSERT_TRUE(runProbe());
    verifyUntranslated("start", "1");
    storeLanguage("CH"); // the stored value is Base64
    ASSERT_TRUE(runProbe());
    verifyUntranslated("start", "1");
}

TEST_F(LanguageTest, settingsPath_readsZELTAwhereVANTOwasNamed)
{
    ASSERT_TRUE(makeSuite());
    storeLanguage("Q0g=", m_pSuite->path() + "/ZELTA/cfg");
    m_strProgramData = m_pSuite->path() + "/VANTO/cfg";
    ASSERT_TRUE(runProbe());
    verifyChinese("start");
}

TEST_F(LanguageTest, commandLine_overridesStoredLanguage)
{
    ASSERT_TRUE(makeSuite());
    storeLanguage("Q0g=");
    ASSERT_TRUE(runProbe({"ENG"}));
    verifyUntranslated("start", "1");

    ASSERT_TRUE(runProbe({"eng"})); // other spellings are ignored
    verifyChinese("start");

    storeLanguage("RU5H");
    ASSERT_TRUE(runProbe({"CH"}));
    verifyChinese("start");
}

TEST_F(LanguageTest, storedChinese_startsChinese_andSwitchMessagesChangeTheWholeWindow)
{
    ASSERT_TRUE(makeSuite());
    storeLanguage("Q0g=");
    ASSERT_TRUE(runProbe());
    verifyChinese("start");
    ASSERT_EQ(m_lines.value("apply-chinese"), QString("returned=1"));

    ASSERT_EQ(m_lines.value("msg-english"), QString("handled=1 result=12345"));
    verifyUntranslated("msg-english", "1");
    ASSERT_EQ(m_lines.value("msg-english-again"), QString("handled=1 result=12345"));
    verifyUntranslated("msg-english-again", "1");
    ASSERT_EQ(m_lines.value("msg-chinese"), QString("handled=1 result=12345"));
    verifyChinese("msg-chinese");

    // Other messages, and events of the X11 kind, are not ours.
    ASSERT_EQ(m_lines.value("msg-other"), QString("handled=0 result=12345"));
    verifyChinese("msg-other");
    ASSERT_EQ(m_lines.value("msg-x11"), QString("handled=0 result=12345"));
    verifyChinese("msg-x11");

    // The help button opens the manual of the language in use.
    const QString base = QDir(m_pSuite->path()).absolutePath() + "/common/doc/";
    ASSERT_EQ(m_lines.value("help-start"), base + "User_Manual_ZELTA_Chinese/" + kHelpPage);
    ASSERT_EQ(m_lines.value("help-english"), base + "User_Manual_ZELTA_English/" + kHelpPage);
    ASSERT_EQ(m_lines.value("help-chinese"), base + "User_Manual_ZELTA_Chinese/" + kHelpPage);
    // The staged suite has both pages where the button looks.
    for (const char* folder : {"User_Manual_ZELTA_English", "User_Manual_ZELTA_Chinese"}) {
        const QString page = QStringLiteral(QUORVEX_SUITE_DIR "/common/doc/") + folder + '/' + kHelpPage;
        ASSERT_TRUE(QFile::exists(page)) << qPrintable(page + " is not staged");
    }
}

TEST_F(LanguageTest, missingCatalogue_stopsTheChain)
{
    forEachRow(missingCatalogueStopsTheChainRows(), [&](const MissingCatalogueStopsTheChainRow& row) {
        SetUp(); // a fresh fixture for every row
        const QString missing = row.missing;
        const QString answering = row.answering;
        ASSERT_TRUE(makeSuite({missing}));
        storeLanguage("Q0g=");
        ASSERT_TRUE(runProbe());
        ASSERT_EQ(m_states.value("start").language, QString("0"));
        ASSERT_EQ(m_states.value("start").catalogues, answering);
        ASSERT_EQ(m_lines.value("apply-chinese"), QString("returned=0"));
    });
}
