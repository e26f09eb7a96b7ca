#pragma once
// What a user sees of the main window, found the way a user finds it: by
// the widgets' own kinds, names and texts.

#include "CustomCheckHeaderView.h"
#include "CustomComboBox.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "QVirtualCamMainWidget.h"

#include <QStringList>
#include <QTest>

struct WindowProbe
{
    explicit WindowProbe(QVirtualCamMainWidget& window)
        : table(window.findChild<CustomTableWidget*>()),
          collect(window.findChild<CustomPushButton*>("CollectBtn")),
          selector(window.findChild<CustomComboBox*>()),
          header(qobject_cast<CustomCheckHeaderView*>(table->horizontalHeader()))
    {
    }

    QString cell(int row, int column) const
    {
        const QTableWidgetItem* item = table->item(row, column);
        return item ? item->text() : QString();
    }

    int rowOf(const QString& model) const
    {
        for (int row = 0; row < table->rowCount(); ++row)
            if (cell(row, 1) == model)
                return row;
        return -1;
    }

    QStringList selectorEntries() const
    {
        QStringList entries;
        for (int i = 0; i < selector->count(); ++i)
            entries << selector->itemText(i);
        return entries;
    }

    // A tick as the user gives it: the table reports it like a click.
    void tick(int row, bool on = true) const
    {
        table->setCellCheckState(row, 0, on ? Qt::Checked : Qt::Unchecked, true);
    }

    void clickHeaderBox() const
    {
        const int x = header->sectionViewportPosition(0) + header->sectionSize(0) / 2;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, header->height() / 2));
    }

    CustomTableWidget* table;
    CustomPushButton* collect;
    CustomComboBox* selector;
    CustomCheckHeaderView* header;
};
