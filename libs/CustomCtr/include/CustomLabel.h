#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QLabel>

// Label of the suite. Shows plain text by default, so that texts from
// devices or files are never interpreted as markup; call setTextFormat to
// allow rich text.
class CUSTOMCTR_EXPORT CustomLabel : public QLabel, public CustomObject
{
    Q_OBJECT

public:
    explicit CustomLabel(QWidget* parent = nullptr);
    explicit CustomLabel(const QString& text, QWidget* parent = nullptr);
    ~CustomLabel() override;
};
