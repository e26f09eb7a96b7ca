#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QMenu>

// Pop-up menu of the suite. Carries the default theme itself, since a menu
// may be shown without a themed window around it.
class CUSTOMCTR_EXPORT CustomMenu : public QMenu, public CustomObject
{
    Q_OBJECT

public:
    explicit CustomMenu(QWidget* parent = nullptr);
    explicit CustomMenu(const QString& title, QWidget* parent = nullptr);
    ~CustomMenu() override;
};
