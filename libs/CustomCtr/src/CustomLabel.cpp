#include "CustomLabel.h"

CustomLabel::CustomLabel(QWidget* parent)
    : CustomLabel(QString(), parent)
{
}

CustomLabel::CustomLabel(const QString& text, QWidget* parent)
    : QLabel(parent)
    , CustomObject(this, QStringLiteral("CustomLabel"))
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

CustomLabel::~CustomLabel() = default;
