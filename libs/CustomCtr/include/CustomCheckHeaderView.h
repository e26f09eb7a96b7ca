#pragma once

#include "CustomCtrExport.h"

#include <QHeaderView>

#include <memory>

// Header view with a check box on chosen sections, typically set on a
// CustomTableWidget, which keeps each box following the cells of its column.
//
// A click on an unchecked box checks it, a click on a checked box unchecks
// it; either emits SigCheckStateChange(section) after the state has changed.
// A partially checked box is a read-out of mixed cells: a click leaves it as
// it is and still emits the signal, so the receiver sees the partial state and
// decides. setCheckState never emits.
class CUSTOMCTR_EXPORT CustomCheckHeaderView : public QHeaderView
{
    Q_OBJECT

public:
    explicit CustomCheckHeaderView(Qt::Orientation orientation, QWidget* parent = nullptr);
    ~CustomCheckHeaderView() override;

    void setCheckBoxVisible(int section, bool visible);
    bool isCheckBoxVisible(int section) const;
    void setCheckBoxEnable(int section, bool enable);
    bool isCheckBoxEnabled(int section) const;

    // Qt::Unchecked for sections without a box.
    Qt::CheckState checkState(int section) const;
    void setCheckState(int section, Qt::CheckState state);

    // The painted box in header coordinates; empty when not shown.
    QRect checkBoxRect(int section) const;

    // While on, resizing or moving a section repaints the header and the
    // view's cells at once, so check boxes and bars stay centred while the
    // user drags a section edge.
    void connetSectionResized(bool connect);

signals:
    void SigCheckStateChange(int section);

protected:
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    struct Impl;
    int checkBoxSectionAt(const QPoint& pos) const;
    void repaintAfterResize();
    const std::unique_ptr<Impl> m_impl;
};
