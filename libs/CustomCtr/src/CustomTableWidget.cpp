// CustomTableWidget: construction, per-cell check boxes and the header's
// "select all" box. Progress bars are in CustomTableProgress.cpp.
#include "CustomTableWidget.h"

#include "CheckStates_p.h"
#include "CustomCheckHeaderView.h"
#include "CustomTableItemDelegate_p.h"
#include "CustomTableWidget_p.h"

#include <QHeaderView>

CustomTableWidget::CustomTableWidget(QWidget* parent)
    : QTableWidget(parent)
    , CustomObject(this, QStringLiteral("CustomTableWidget"))
    , m_impl(new Impl)
{
    initTable();
}

CustomTableWidget::CustomTableWidget(int rows, int columns, QWidget* parent)
    : QTableWidget(rows, columns, parent)
    , CustomObject(this, QStringLiteral("CustomTableWidget"))
    , m_impl(new Impl)
{
    initTable();
}

CustomTableWidget::~CustomTableWidget()
{
    // The model outlives this part of the object and resets itself while the
    // base class tears down; its signals must not reach a half-destroyed table.
    disconnect(model(), nullptr, this, nullptr);
}

void CustomTableWidget::initTable()
{
    setItemDelegate(new CustomTableItemDelegate(this));
    // Hover rules of the theme need move events without a pressed button.
    setMouseTracking(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setShowGrid(false);
    setFocusPolicy(Qt::StrongFocus);
    verticalHeader()->hide();

    const auto refreshHeader = [this] { updateAllHeaderCheckStates(); };
    connect(model(), &QAbstractItemModel::rowsInserted, this, refreshHeader);
    connect(model(), &QAbstractItemModel::rowsRemoved, this, refreshHeader);
    connect(model(), &QAbstractItemModel::modelReset, this, refreshHeader);
}

QTableWidgetItem* CustomTableWidget::cellItem(int row, int column, bool create)
{
    if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount())
        return nullptr;
    QTableWidgetItem* existing = item(row, column);
    if (existing || !create)
        return existing;
    auto* created = new QTableWidgetItem;
    setItem(row, column, created);
    return created;
}

void CustomTableWidget::setCheckBoxVisible(int row, int column, bool visible)
{
    QTableWidgetItem* const cell = cellItem(row, column, visible);
    if (!cell || cell->data(CheckBoxVisibleRole).toBool() == visible)
        return;
    cell->setData(CheckBoxVisibleRole, visible);
    updateHeaderCheckState(column);
}

bool CustomTableWidget::IsHaveCheckBox(int row, int column) const
{
    const QTableWidgetItem* const cell = const_cast<CustomTableWidget*>(this)->cellItem(row, column, false);
    return cell && cell->data(CheckBoxVisibleRole).toBool();
}

void CustomTableWidget::setCheckBoxEnable(int row, int column, bool enable)
{
    QTableWidgetItem* const cell = cellItem(row, column, false);
    if (!cell || isCheckBoxEnabled(row, column) == enable)
        return;
    cell->setData(CheckBoxEnabledRole, enable);
    updateHeaderCheckState(column);
}

bool CustomTableWidget::isCheckBoxEnabled(int row, int column) const
{
    const QTableWidgetItem* const cell = const_cast<CustomTableWidget*>(this)->cellItem(row, column, false);
    if (!cell)
        return false;
    const QVariant enabled = cell->data(CheckBoxEnabledRole);
    return !enabled.isValid() || enabled.toBool();
}

Qt::CheckState CustomTableWidget::cellCheckState(int row, int column) const
{
    if (!IsHaveCheckBox(row, column))
        return Qt::Unchecked;
    return CheckStates::fromInt(item(row, column)->data(CellCheckStateRole).toInt());
}

void CustomTableWidget::setCellCheckState(int row, int column, Qt::CheckState state, bool bNotifyNow)
{
    if (!IsHaveCheckBox(row, column))
        return;
    const Qt::CheckState wanted = CheckStates::fromInt(state);
    if (cellCheckState(row, column) == wanted)
        return;
    item(row, column)->setData(CellCheckStateRole, int(wanted));
    updateHeaderCheckState(column);
    if (bNotifyNow)
        emit SigCellCheckStateChanged(row, column);
    else
        scheduleNotification(row, column);
}

QRect CustomTableWidget::checkBoxRect(int row, int column) const
{
    if (!IsHaveCheckBox(row, column))
        return {};
    const QModelIndex index = model()->index(row, column);
    const QRect cell = visualRect(index);
    if (cell.isEmpty())
        return {};
    return CustomTableItemDelegate::checkBoxRect(cell, index, this);
}

void CustomTableWidget::toggleCellCheckState(int row, int column)
{
    setCellCheckState(row, column, CheckStates::toggled(cellCheckState(row, column)), true);
}

void CustomTableWidget::scheduleNotification(int row, int column)
{
    m_impl->pendingRow = row;
    m_impl->pendingColumn = column;
    if (m_impl->notificationPending)
        return;
    m_impl->notificationPending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_impl->notificationPending = false;
            emit SigCellCheckStateChanged(m_impl->pendingRow, m_impl->pendingColumn);
        },
        Qt::QueuedConnection);
}

void CustomTableWidget::updateHeaderCheckState(int column)
{
    auto* const header = qobject_cast<CustomCheckHeaderView*>(horizontalHeader());
    if (!header || !header->isCheckBoxVisible(column))
        return;
    CheckStates::Tally tally;
    for (int row = 0; row < rowCount(); ++row) {
        if (isRowHidden(row) || !IsHaveCheckBox(row, column) || !isCheckBoxEnabled(row, column))
            continue;
        tally.add(cellCheckState(row, column));
    }
    header->setCheckState(column, tally.summary());
}

void CustomTableWidget::updateAllHeaderCheckStates()
{
    for (int column = 0; column < columnCount(); ++column)
        updateHeaderCheckState(column);
}
