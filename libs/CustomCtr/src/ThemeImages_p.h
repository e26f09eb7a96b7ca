#pragma once

#include <QIcon>
#include <QStyle>

class QWidget;

// Icons of the default theme, with the platform's standard icon as fallback
// when the theme bundle is not registered.
namespace CustomTheme {

// name: a file of the theme folder, e.g. "title_close.svg".
QIcon icon(const QString& name, QStyle::StandardPixmap fallback, const QWidget* widget);

} // namespace CustomTheme
