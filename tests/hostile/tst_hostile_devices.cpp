// quorvex-cli collecting a good code reader beside a hostile one, a row per
// fault the simulator can serve: the hostile job ends on its own, the good
// one completes, nothing crashes, and nothing outside the tool's folders or
// in the earlier collection of the hostile model changes.

#include "TableTests.h"
#include "QtPrinters.h"
#include "CliProcess.h"
#include "CodeReaders.h"
#include "TestFiles.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QJsonArray>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <algorithm>
#include <cerrno>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// A good collection takes seconds; a job still running after this hangs.
constexpr int kCollectTimeoutMs = 180000;
// The model every hostile device takes unless its fault is the name.
const QString kModel = QStringLiteral("QVX-ID2040M");

// Every file and folder below root, by relative path, with a digest of
// each file's bytes; paths starting with one of excluded are left out.
QMap<QString, QByteArray> Snapshot(const QString& root, const QStringList& excluded = {})
{
    QMap<QString, QByteArray> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString relative = QDir(root).relativeFilePath(path);
        if (std::any_of(excluded.begin(), excluded.end(), [&](const QString& folder) {
                return relative == folder || relative.startsWith(folder + QLatin1Char('/'));
            }))
            continue;
        QByteArray digest("folder");
        if (it.fileInfo().isFile()) {
            QFile file(path);
            QCryptographicHash hash(QCryptographicHash::Sha256);
            digest = file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result() : QByteArray("unreadable");
        } else if (!it.fileInfo().isDir()) {
            digest = "special";
        }
        entries.insert(relative, digest);
    }
    return entries;
}

bool CopyTree(const QString& from, const QString& to)
{
    if (!QDir().mkpath(to))
        return false;
    for (const QFileInfo& entry : QDir(from).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
        const QString target = to + QLatin1Char('/') + entry.fileName();
        if (entry.isDir() ? !CopyTree(entry.filePath(), target) : !QFile::copy(entry.filePath(), target))
            return false;
    }
    return true;
}

// A hostile description can ask for gigabytes: keep a program that trusts
// it from taking the machine with it. Sanitizer builds reserve huge
// address ranges, so there the limit is on resident memory instead.
void LimitMemoryOfChildren()
{
#if defined(__SANITIZE_ADDRESS__)
    qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":hard_rss_limit_mb=6144");
#else
    const rlimit limit{rlim_t{8} << 30, rlim_t{8} << 30};
    setrlimit(RLIMIT_AS, &limit);
#endif
}

} // namespace

class HostileDevicesTest : public ::testing::Test {
protected:
    void SetUp() override;
    QString m_home;
    QString m_reference; // a good collection of kModel, made once
    CliSuite m_suite;
};

void HostileDevicesTest::SetUp()
{
    LimitMemoryOfChildren();
    m_home = qEnvironmentVariable("QUORVEX_TEST_HOME");
    m_reference = m_home + QStringLiteral("/reference/") + kModel;
    QString error;
    ASSERT_TRUE(m_suite.prepare(&error)) << qPrintable(error);
    ASSERT_TRUE(::mkfifo(qPrintable(m_home + QStringLiteral("/fifo")), 0600) == 0 || errno == EEXIST);

    DeviceProcess simulator;
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = startReaders(simulator, 1, &error);
    ASSERT_TRUE(readers.size() == 1 && ModelOf(readers[0]) == kModel) << qPrintable(error);
    const CliResult result = m_suite.run({QStringLiteral("collect"), SerialOf(readers[0])}, CliSuite::systemEnvironment(),
                                         kCollectTimeoutMs);
    ASSERT_TRUE(result.exitCode == 0) << qPrintable(result.describe());
    QDir(m_reference).removeRecursively();
    ASSERT_TRUE(CopyTree(m_suite.collectionRoot() + QLatin1Char('/') + kModel, m_reference));
}

TEST_F(HostileDevicesTest, collect_hostileBesideGood)
{
    struct Row {
        std::string rowName;
        QString kind;
        bool mayCollect; // a name fault may end in a collection in a folder of its own
    };
    std::vector<Row> rows;
    for (const char* kind : {"bad-zip", "zip-bomb", "huge-xml", "slow-xml", "file-url", "vanish"})
        rows.push_back({kind, kind, false});
    rows.push_back({"file-url fifo", "file-url=" + m_home + "/fifo", false});
    for (const char* kind : {"name-32", "name-latin1", "name-format"})
        rows.push_back({kind, kind, true});
    forEachRow(rows, [&](const Row& row) {
        const QString& kind = row.kind;
        QString error;
        ASSERT_TRUE(m_suite.prepare(&error)) << qPrintable(error);
        const QString root = m_suite.collectionRoot();
        QDir(root).removeRecursively();
        ASSERT_TRUE(CopyTree(m_reference, root + QLatin1Char('/') + kModel));
        // The tool may write below its suite folder and its XDG folders; the
        // reference copy and anything else in the home must stay as they are.
        const QStringList toolFolders{QStringLiteral("suite/apps/Quorvex"), QStringLiteral("suite/common/VirtualCamera"),
                                      QStringLiteral("cache"), QStringLiteral("config"), QStringLiteral("data"),
                                      QStringLiteral("run")};
        const QMap<QString, QByteArray> outsideBefore = Snapshot(m_home, toolFolders);

        DeviceProcess simulator;
        std::string why;
        ASSERT_TRUE(xqtest::startSimulatorWith(simulator, {"--demo", "2", "--hostile", kind.toStdString()}, why)) << why.c_str();
        const QVector<XQ_CODEREADER_DEVICE_INFO> readers = WaitForCodeReaders(3, 30000);
        QString goodSerial, hostileSerial, goodModel;
        for (const XQ_CODEREADER_DEVICE_INFO& reader : readers) {
            if (SerialOf(reader).startsWith(QStringLiteral("QH")))
                hostileSerial = SerialOf(reader);
            else if (ModelOf(reader) != kModel)
                goodSerial = SerialOf(reader), goodModel = ModelOf(reader);
        }
        ASSERT_TRUE(!goodSerial.isEmpty() && !hostileSerial.isEmpty()) << qPrintable(OutputOf(simulator));

        QElapsedTimer clock;
        clock.start();
        const CliResult result = m_suite.run({QStringLiteral("--json"), QStringLiteral("collect"), goodSerial, hostileSerial},
                                             CliSuite::systemEnvironment(), kCollectTimeoutMs);
        qInfo("%s: both jobs ended after %.1f s", qPrintable(kind), clock.elapsed() / 1000.0);
        // Bounded and no crash: a normal exit, no sanitizer report.
        ASSERT_TRUE(result.finished && (result.exitCode == 0 || result.exitCode == 1)) << qPrintable(result.describe());
        ASSERT_TRUE(!result.err.contains("Sanitizer") && !result.err.contains("runtime error:")) << qPrintable(result.describe());

        QMap<QString, QJsonObject> jobs;
        for (const QJsonValue& value : result.json().value(QStringLiteral("devices")).toArray())
            jobs.insert(value.toObject().value(QStringLiteral("serial")).toString(), value.toObject());
        const QJsonObject good = jobs.value(goodSerial);
        const QJsonObject hostile = jobs.value(hostileSerial);
        ASSERT_TRUE(good.value(QStringLiteral("outcome")).toString() == QStringLiteral("collected")) << qPrintable(result.describe());
        const QString goodFolder = QDir::cleanPath(root + QLatin1Char('/') + goodModel);
        ASSERT_EQ(good.value(QStringLiteral("folder")).toString(), goodFolder);

        const QString outcome = hostile.value(QStringLiteral("outcome")).toString();
        QStringList expectedFolders{goodModel, kModel};
        if (outcome == QStringLiteral("collected") && row.mayCollect) {
            // Its own folder, directly in the root, named after nothing else.
            const QString folder = hostile.value(QStringLiteral("folder")).toString();
            ASSERT_TRUE(QFileInfo(folder).absolutePath() == QDir::cleanPath(root) && !expectedFolders.contains(QFileInfo(folder).fileName())) << qPrintable(result.describe());
            expectedFolders << QFileInfo(folder).fileName();
        } else {
            ASSERT_TRUE(outcome == QStringLiteral("failed") && !hostile.value(QStringLiteral("message")).toString().isEmpty()
                         && result.exitCode == 1) << qPrintable(result.describe());
        }

        // The good reader's images went to its own folder only; the earlier
        // collection of the hostile device's model is untouched.
        expectedFolders.sort();
        ASSERT_EQ(Entries(root), expectedFolders);
        ASSERT_TRUE(!QDir(goodFolder + QStringLiteral("/Jpg")).isEmpty());
        ASSERT_TRUE(QFileInfo::exists(goodFolder + QLatin1Char('/') + goodModel + QStringLiteral(".xml")));
        ASSERT_TRUE(Snapshot(root + QLatin1Char('/') + kModel) == Snapshot(m_reference)) << "earlier collection changed";
        ASSERT_EQ(Entries(m_suite.applicationDir()), (QStringList{QStringLiteral("Config"), QStringLiteral("quorvex-cli")}));
        ASSERT_TRUE(Snapshot(m_home, toolFolders) == outsideBefore) << "files outside the tool's folders changed";
    });
}

