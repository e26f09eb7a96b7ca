// CustomTableWidget: per-cell progress bars, painted by the delegate from
// item data.
#include "CustomTableWidget.h"

#include "CustomTableWidget_p.h"

void CustomTableWidget::setProgressBarVisible(int row, int column, bool visible, int minimum, int maximum)
{
    QTableWidgetItem* const cell = cellItem(row, column, visible);
    if (!cell)
        return;
    if (minimum > maximum)
        std::swap(minimum, maximum);
    const bool wasVisible = cell->data(ProgressVisibleRole).toBool();
    const int previous = cell->data(ProgressValueRole).toInt();
    cell->setData(ProgressMinimumRole, minimum);
    cell->setData(ProgressMaximumRole, maximum);
    cell->setData(ProgressValueRole, wasVisible ? qBound(minimum, previous, maximum) : minimum);
    cell->setData(ProgressVisibleRole, visible);
}

bool CustomTableWidget::isProgressBarVisible(int row, int column) const
{
    const QTableWidgetItem* const cell = item(row, column);
    return cell && cell->data(ProgressVisibleRole).toBool();
}

void CustomTableWidget::updateProgressBarValue(int row, int column, int value)
{
    if (!isProgressBarVisible(row, column))
        return;
    QTableWidgetItem* const cell = item(row, column);
    const int minimum = cell->data(ProgressMinimumRole).toInt();
    const int maximum = cell->data(ProgressMaximumRole).toInt();
    cell->setData(ProgressValueRole, qBound(minimum, value, maximum));
}

int CustomTableWidget::progressBarValue(int row, int column) const
{
    if (!isProgressBarVisible(row, column))
        return -1;
    return item(row, column)->data(ProgressValueRole).toInt();
}

QColor CustomTableWidget::progressColor() const
{
    return m_impl->progressColor;
}

void CustomTableWidget::setProgressColor(const QColor& color)
{
    m_impl->progressColor = color;
    viewport()->update();
}

QColor CustomTableWidget::progressBackgroundColor() const
{
    return m_impl->progressBackgroundColor;
}

void CustomTableWidget::setProgressBackgroundColor(const QColor& color)
{
    m_impl->progressBackgroundColor = color;
    viewport()->update();
}

QColor CustomTableWidget::progressTextColor() const
{
    return m_impl->progressTextColor;
}

void CustomTableWidget::setProgressTextColor(const QColor& color)
{
    m_impl->progressTextColor = color;
    viewport()->update();
}
