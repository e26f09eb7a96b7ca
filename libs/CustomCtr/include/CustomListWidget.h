#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QListWidget>

// List of the suite: one item per row, whole-row hover and selection.
class CUSTOMCTR_EXPORT CustomListWidget : public QListWidget, public CustomObject
{
    Q_OBJECT

public:
    explicit CustomListWidget(QWidget* parent = nullptr);
    ~CustomListWidget() override;
};
