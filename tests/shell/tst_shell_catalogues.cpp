// Every text the code passes through tr has a finished Chinese translation:
// lupdate over the real sources, merged into a copy of the committed
// catalogue, must leave nothing unfinished. That the staged catalogues load
// on their own and give the window its Chinese title is tst_shell_language's
// to show.

#include "QtPrinters.h"
#include "TableTests.h"

#include <QtCore>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct CatalogueRow
{
    std::string rowName;
    QString catalogue;
    QStringList sourceFolders;
};

QSet<QString> placeholders(const QString& text)
{
    QSet<QString> found;
    QRegularExpressionMatchIterator it = QRegularExpression("%\\d+").globalMatch(text);
    while (it.hasNext())
        found << it.next().captured();
    return found;
}

} // namespace

TEST(CatalogueTest, everyTrText_hasAFinishedTranslation)
{
    const QString lupdate = QUORVEX_LUPDATE;
    ASSERT_TRUE(QFile::exists(lupdate)) << qPrintable(lupdate + " is missing: install qttools5-dev-tools");
    forEachRow(std::vector<CatalogueRow> {
                   {"tool", "Quorvex_zh.ts", {"app", "collect", "store", "ui"}},
                   {"widget library", "CustomCtr_zh_CN.ts", {"libs/CustomCtr"}},
                   {"shared tools", "CommonTools_zh_CN.ts", {"libs/CommonTools"}},
               },
               [&](const CatalogueRow& row) {
                   QTemporaryDir temporary;
                   const QString refreshed = temporary.path() + '/' + row.catalogue;
                   ASSERT_TRUE(QFile::copy(QUORVEX_SOURCE_DIR "/resources/translations/" + row.catalogue, refreshed));
                   QFile::setPermissions(refreshed, QFile::ReadOwner | QFile::WriteOwner);

                   QStringList arguments {"-locations", "none", "-no-ui-lines", "-silent"};
                   for (const QString& folder : row.sourceFolders)
                       arguments << QUORVEX_SOURCE_DIR "/" + folder;
                   QProcess process;
                   process.start(lupdate, arguments << "-ts" << refreshed);
                   ASSERT_TRUE(process.waitForFinished(120000));
                   ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();

                   QFile file(refreshed);
                   ASSERT_TRUE(file.open(QIODevice::ReadOnly));
                   QXmlStreamReader xml(&file);
                   QString context, source;
                   QStringList problems;
                   while (!xml.atEnd()) {
                       if (xml.readNext() != QXmlStreamReader::StartElement)
                           continue;
                       if (xml.name() == QLatin1String("name")) {
                           context = xml.readElementText();
                       } else if (xml.name() == QLatin1String("source")) {
                           source = xml.readElementText();
                       } else if (xml.name() == QLatin1String("translation")) {
                           const QString type = xml.attributes().value("type").toString();
                           const QString translation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
                           const QString where = QString("%1: \"%2\"").arg(context, source);
                           if (type == QLatin1String("vanished") || type == QLatin1String("obsolete"))
                               continue;
                           if (type == QLatin1String("unfinished") || translation.trimmed().isEmpty())
                               problems << where + " has no finished translation";
                           else if (placeholders(source) != placeholders(translation))
                               problems << where + " loses or adds a %-placeholder";
                       }
                   }
                   ASSERT_FALSE(xml.hasError()) << qPrintable(refreshed + ": " + xml.errorString());
                   ASSERT_TRUE(problems.isEmpty()) << qPrintable("\n  " + problems.join("\n  "));
               });
}
