#pragma once

#include "CustomTableWidget.h"

#include <QColor>

// State of a CustomTableWidget beyond its items.
struct CustomTableWidget::Impl
{
    QColor progressColor{0xf7, 0x69, 0x00};
    QColor progressBackgroundColor{0xee, 0xef, 0xf2};
    QColor progressTextColor{0x30, 0x31, 0x33};
    // Deferred notification of programmatic check changes.
    bool notificationPending = false;
    int pendingRow = -1;
    int pendingColumn = -1;
};
