#pragma once

#include <QStyledItemDelegate>

class CustomTableWidget;

// Paints the table's per-cell check boxes and progress bars from item data
// and turns clicks and Space on a box into check-state changes.
class CustomTableItemDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit CustomTableItemDelegate(CustomTableWidget* table);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Where the box of a cell is painted: centred in an empty cell, at the
    // left of a cell with text or an icon.
    static QRect checkBoxRect(const QRect& cellRect, const QModelIndex& index, const QWidget* widget);

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    void paintCheckBox(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    void paintProgress(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;

    CustomTableWidget* const m_pTable;
};
