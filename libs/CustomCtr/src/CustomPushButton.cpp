#include "CustomPushButton.h"

#include <QStyle>

CustomPushButton::CustomPushButton(QWidget* parent, int style)
    : CustomPushButton(QString(), parent, style)
{
}

CustomPushButton::CustomPushButton(const QString& text, QWidget* parent, int style)
    : QPushButton(text, parent)
    , CustomObject(this, QStringLiteral("CustomPushButton"))
{
    setCursor(Qt::PointingHandCursor);
    cSetStyle(style);
}

CustomPushButton::~CustomPushButton() = default;

int CustomPushButton::cStyle() const
{
    return m_nStyle;
}

void CustomPushButton::cSetStyle(int style)
{
    const bool known = style >= StyleFlat && style <= StyleTitleBar;
    m_nStyle = known ? style : StyleFlat;
    // Property selectors are only re-evaluated on polish.
    this->style()->unpolish(this);
    this->style()->polish(this);
    update();
}
