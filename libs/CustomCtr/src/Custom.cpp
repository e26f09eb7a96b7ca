#include "Custom.h"

#include <QFile>

#include <atomic>

namespace {
std::atomic<int> g_language{Custom::English};
}

void Custom::setLanguage(int language)
{
    if (language == Chinese || language == English)
        g_language.store(language);
}

int Custom::language()
{
    return g_language.load();
}

QString Custom::defaultStyleSheetPath()
{
    return QStringLiteral(":/CustomCtr/Default/style.qss");
}

QString Custom::defaultStyleSheet()
{
    // Read on every call: the bundle may be registered after the first window.
    QFile file(defaultStyleSheetPath());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll());
}
