#include "CustomTableItemDelegate_p.h"

#include "CheckStates_p.h"
#include "CustomTableWidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int kCellPadding = 8;
// Clicks a few pixels outside the painted box still count: the box is small.
constexpr int kHitSlack = 3;

QStyle* styleOf(const QWidget* widget)
{
    return widget ? widget->style() : QApplication::style();
}

QSize indicatorSize(const QWidget* widget)
{
    QStyle* const style = styleOf(widget);
    const int width = style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, widget);
    const int height = style->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, widget);
    return {qBound(12, width, 24), qBound(12, height, 24)};
}

bool hasContent(const QModelIndex& index)
{
    return !index.data(Qt::DisplayRole).toString().isEmpty()
        || !index.data(Qt::DecorationRole).isNull();
}

bool boxEnabled(const QModelIndex& index)
{
    const QVariant enabled = index.data(CustomTableWidget::CheckBoxEnabledRole);
    return (index.flags() & Qt::ItemIsEnabled) && (!enabled.isValid() || enabled.toBool());
}

} // namespace

CustomTableItemDelegate::CustomTableItemDelegate(CustomTableWidget* table)
    : QStyledItemDelegate(table)
    , m_pTable(table)
{
}

QRect CustomTableItemDelegate::checkBoxRect(const QRect& cellRect, const QModelIndex& index, const QWidget* widget)
{
    const QSize size = indicatorSize(widget);
    const Qt::LayoutDirection direction = widget ? widget->layoutDirection() : Qt::LeftToRight;
    if (!hasContent(index))
        return QStyle::alignedRect(direction, Qt::AlignCenter, size, cellRect);
    return QStyle::alignedRect(direction, Qt::AlignLeft | Qt::AlignVCenter, size,
                               cellRect.adjusted(kCellPadding, 0, 0, 0));
}

void CustomTableItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const
{
    const bool hasBox = index.data(CustomTableWidget::CheckBoxVisibleRole).toBool();
    const bool hasBar = index.data(CustomTableWidget::ProgressVisibleRole).toBool();
    if (!hasBox && !hasBar) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }

    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const QWidget* const widget = opt.widget;
    QStyle* const style = styleOf(widget);

    // Background and selection over the whole cell first.
    QStyleOptionViewItem background(opt);
    background.text.clear();
    background.icon = QIcon();
    background.features &= ~(QStyleOptionViewItem::HasDisplay | QStyleOptionViewItem::HasDecoration);
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, widget);

    if (hasBox)
        paintCheckBox(painter, opt, index);
    if (hasBar) {
        paintProgress(painter, opt, index);
    } else if (hasContent(index)) {
        // Text and icon to the right of the box.
        QStyleOptionViewItem content(opt);
        const QRect box = checkBoxRect(opt.rect, index, widget);
        content.rect.setLeft(box.right() + 1);
        content.backgroundBrush = Qt::NoBrush;
        style->drawControl(QStyle::CE_ItemViewItem, &content, painter, widget);
    }
}

void CustomTableItemDelegate::paintCheckBox(QPainter* painter, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const
{
    QStyleOptionViewItem box(option);
    box.rect = checkBoxRect(option.rect, index, option.widget);
    box.state &= ~(QStyle::State_On | QStyle::State_Off | QStyle::State_NoChange | QStyle::State_Enabled);
    switch (CheckStates::fromInt(index.data(CustomTableWidget::CellCheckStateRole).toInt())) {
    case Qt::Checked: box.state |= QStyle::State_On; break;
    case Qt::PartiallyChecked: box.state |= QStyle::State_NoChange; break;
    case Qt::Unchecked: box.state |= QStyle::State_Off; break;
    }
    if (boxEnabled(index))
        box.state |= QStyle::State_Enabled;
    styleOf(option.widget)->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, painter, option.widget);
}

void CustomTableItemDelegate::paintProgress(QPainter* painter, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const
{
    QRect area = option.rect.adjusted(kCellPadding, 0, -kCellPadding, 0);
    if (index.data(CustomTableWidget::CheckBoxVisibleRole).toBool())
        area.setLeft(checkBoxRect(option.rect, index, option.widget).right() + kCellPadding);
    if (area.width() < 4)
        return;
    const int barHeight = qBound(6, option.rect.height() - 2 * kCellPadding, 16);
    const QRectF bar(area.left(), area.top() + (area.height() - barHeight) / 2.0, area.width(), barHeight);

    const qint64 minimum = index.data(CustomTableWidget::ProgressMinimumRole).toInt();
    const qint64 maximum = index.data(CustomTableWidget::ProgressMaximumRole).toInt();
    const qint64 value = index.data(CustomTableWidget::ProgressValueRole).toInt();
    const double fraction = maximum > minimum ? double(value - minimum) / double(maximum - minimum) : 0.0;
    const int percent = qRound(qBound(0.0, fraction, 1.0) * 100.0);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QPainterPath track;
    track.addRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
    painter->fillPath(track, m_pTable->progressBackgroundColor());

    const QRectF chunk(bar.left(), bar.top(), bar.width() * percent / 100.0, bar.height());
    painter->setClipPath(track);
    painter->fillRect(chunk, m_pTable->progressColor());

    QFont font = option.font;
    font.setPixelSize(qMax(8, barHeight - 5));
    painter->setFont(font);
    const QString text = QString::number(percent) + QLatin1Char('%');
    // The label changes colour where the chunk passes under it.
    painter->setClipRect(chunk);
    painter->setPen(Qt::white);
    painter->drawText(bar, Qt::AlignCenter, text);
    painter->setClipRect(QRectF(chunk.right(), bar.top(), bar.right() - chunk.right(), bar.height()));
    painter->setPen(m_pTable->progressTextColor());
    painter->drawText(bar, Qt::AlignCenter, text);
    painter->restore();
}

bool CustomTableItemDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                          const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (!index.data(CustomTableWidget::CheckBoxVisibleRole).toBool())
        return QStyledItemDelegate::editorEvent(event, model, option, index);

    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QRect hit = checkBoxRect(option.rect, index, option.widget)
                              .adjusted(-kHitSlack, -kHitSlack, kHitSlack, kHitSlack);
        if (mouse->button() != Qt::LeftButton || !hit.contains(mouse->pos()))
            return false;
        // The box changes on release, as a push button does.
        if (event->type() == QEvent::MouseButtonRelease && boxEnabled(index))
            m_pTable->toggleCellCheckState(index.row(), index.column());
        return true;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Space && key != Qt::Key_Select)
            return false;
        if (boxEnabled(index))
            m_pTable->toggleCellCheckState(index.row(), index.column());
        return true;
    }
    default:
        return false;
    }
}
