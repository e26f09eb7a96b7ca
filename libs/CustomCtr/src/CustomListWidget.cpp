#include "CustomListWidget.h"

CustomListWidget::CustomListWidget(QWidget* parent)
    : QListWidget(parent)
    , CustomObject(this, QStringLiteral("CustomListWidget"))
{
    // Hover rules of the theme need move events without a pressed button.
    setMouseTracking(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
}

CustomListWidget::~CustomListWidget() = default;
