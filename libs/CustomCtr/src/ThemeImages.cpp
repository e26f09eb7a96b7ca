#include "ThemeImages_p.h"

#include <QFile>
#include <QWidget>

QIcon CustomTheme::icon(const QString& name, QStyle::StandardPixmap fallback, const QWidget* widget)
{
    const QString path = QStringLiteral(":/CustomCtr/Default/") + name;
    if (QFile::exists(path))
        return QIcon(path);
    return widget->style()->standardIcon(fallback, nullptr, widget);
}
