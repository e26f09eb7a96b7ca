#include "CustomCheckHeaderView.h"

#include "CheckStates_p.h"

#include <QAbstractItemView>
#include <QMap>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionButton>

namespace {
// Clicks a few pixels outside the painted box still count: the box is small.
constexpr int kHitSlack = 3;

struct SectionBox
{
    bool enabled = true;
    Qt::CheckState state = Qt::Unchecked;
};
} // namespace

struct CustomCheckHeaderView::Impl
{
    // Only sections that show a box have an entry.
    QMap<int, SectionBox> boxes;
    int pressedSection = -1;
    QMetaObject::Connection resizedConnection;
    QMetaObject::Connection movedConnection;
};

CustomCheckHeaderView::CustomCheckHeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent)
    , m_impl(new Impl)
{
    // Section labels are clickable so that presses reach mousePressEvent
    // with the usual feedback; sorting stays the view's decision.
    setSectionsClickable(true);
    setHighlightSections(false);
}

CustomCheckHeaderView::~CustomCheckHeaderView() = default;

void CustomCheckHeaderView::setCheckBoxVisible(int section, bool visible)
{
    if (section < 0 || visible == m_impl->boxes.contains(section))
        return;
    if (visible)
        m_impl->boxes.insert(section, SectionBox{});
    else
        m_impl->boxes.remove(section);
    updateSection(section);
}

bool CustomCheckHeaderView::isCheckBoxVisible(int section) const
{
    return m_impl->boxes.contains(section);
}

void CustomCheckHeaderView::setCheckBoxEnable(int section, bool enable)
{
    const auto box = m_impl->boxes.find(section);
    if (box == m_impl->boxes.end() || box->enabled == enable)
        return;
    box->enabled = enable;
    updateSection(section);
}

bool CustomCheckHeaderView::isCheckBoxEnabled(int section) const
{
    return m_impl->boxes.value(section).enabled && m_impl->boxes.contains(section);
}

Qt::CheckState CustomCheckHeaderView::checkState(int section) const
{
    return m_impl->boxes.value(section).state;
}

void CustomCheckHeaderView::setCheckState(int section, Qt::CheckState state)
{
    const auto box = m_impl->boxes.find(section);
    const Qt::CheckState wanted = CheckStates::fromInt(state);
    if (box == m_impl->boxes.end() || box->state == wanted)
        return;
    box->state = wanted;
    updateSection(section);
}

QRect CustomCheckHeaderView::checkBoxRect(int section) const
{
    if (!m_impl->boxes.contains(section) || isSectionHidden(section) || section >= count())
        return {};
    const int position = sectionViewportPosition(section);
    const int size = sectionSize(section);
    const QRect sectionRect = orientation() == Qt::Horizontal ? QRect(position, 0, size, height())
                                                               : QRect(0, position, width(), size);
    const int indicatorWidth = qBound(12, style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this), 24);
    const int indicatorHeight = qBound(12, style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, this), 24);
    return QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, QSize(indicatorWidth, indicatorHeight),
                               sectionRect);
}

void CustomCheckHeaderView::connetSectionResized(bool connect)
{
    if (connect == bool(m_impl->resizedConnection))
        return;
    if (connect) {
        m_impl->resizedConnection = QObject::connect(this, &QHeaderView::sectionResized, this,
                                                     &CustomCheckHeaderView::repaintAfterResize);
        m_impl->movedConnection = QObject::connect(this, &QHeaderView::sectionMoved, this,
                                                   &CustomCheckHeaderView::repaintAfterResize);
    } else {
        QObject::disconnect(m_impl->resizedConnection);
        QObject::disconnect(m_impl->movedConnection);
        m_impl->resizedConnection = {};
        m_impl->movedConnection = {};
    }
}

void CustomCheckHeaderView::repaintAfterResize()
{
    viewport()->update();
    if (auto* const view = qobject_cast<QAbstractItemView*>(parentWidget()))
        view->viewport()->update();
}

void CustomCheckHeaderView::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    painter->save();
    QHeaderView::paintSection(painter, rect, logicalIndex);
    painter->restore();

    const auto box = m_impl->boxes.constFind(logicalIndex);
    if (box == m_impl->boxes.constEnd())
        return;
    QStyleOptionButton option;
    option.initFrom(this);
    const int indicatorWidth = qBound(12, style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this), 24);
    const int indicatorHeight = qBound(12, style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, this), 24);
    option.rect = QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, QSize(indicatorWidth, indicatorHeight), rect);
    option.state &= ~(QStyle::State_On | QStyle::State_Off | QStyle::State_NoChange | QStyle::State_Enabled
                      | QStyle::State_HasFocus);
    switch (box->state) {
    case Qt::Checked: option.state |= QStyle::State_On; break;
    case Qt::PartiallyChecked: option.state |= QStyle::State_NoChange; break;
    case Qt::Unchecked: option.state |= QStyle::State_Off; break;
    }
    if (box->enabled && isEnabled())
        option.state |= QStyle::State_Enabled;
    style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, painter, this);
}

int CustomCheckHeaderView::checkBoxSectionAt(const QPoint& pos) const
{
    const int section = logicalIndexAt(pos);
    if (!isCheckBoxEnabled(section))
        return -1;
    const QRect hit = checkBoxRect(section).adjusted(-kHitSlack, -kHitSlack, kHitSlack, kHitSlack);
    return hit.contains(pos) ? section : -1;
}

void CustomCheckHeaderView::mousePressEvent(QMouseEvent* event)
{
    const int section = event->button() == Qt::LeftButton ? checkBoxSectionAt(event->pos()) : -1;
    if (section < 0) {
        QHeaderView::mousePressEvent(event);
        return;
    }
    // The box takes the press: no sorting, selecting or dragging starts.
    m_impl->pressedSection = section;
    event->accept();
}

void CustomCheckHeaderView::mouseReleaseEvent(QMouseEvent* event)
{
    const int pressed = m_impl->pressedSection;
    if (pressed < 0) {
        QHeaderView::mouseReleaseEvent(event);
        return;
    }
    m_impl->pressedSection = -1;
    event->accept();
    if (event->button() != Qt::LeftButton || checkBoxSectionAt(event->pos()) != pressed)
        return;
    const auto box = m_impl->boxes.find(pressed);
    if (box->state != Qt::PartiallyChecked) {
        box->state = CheckStates::toggled(box->state);
        updateSection(pressed);
    }
    emit SigCheckStateChange(pressed);
}

void CustomCheckHeaderView::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The second click of a double click is a click on the box like any other.
    if (event->button() == Qt::LeftButton && checkBoxSectionAt(event->pos()) >= 0) {
        mousePressEvent(event);
        return;
    }
    QHeaderView::mouseDoubleClickEvent(event);
}
