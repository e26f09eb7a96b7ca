#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QColor>
#include <QTableWidget>

// Table of the suite whose cells can carry a check box and a progress bar.
//
// Both live in the cell's item data (roles below) and are painted by the
// table's delegate, so they move with the item and cost no widget per cell.
// Setting a check box or a progress bar visible on a cell without an item
// creates an empty item there; hiding one on a cell without an item does
// nothing. Out-of-range cells are ignored (getters return "nothing there").
//
// Check boxes: a left click on an enabled box (or Space on the current cell)
// toggles it between unchecked and checked and emits
// SigCellCheckStateChanged at once. setCellCheckState with bNotifyNow true
// emits the signal at once when the state changes; with bNotifyNow false the
// changes of the current batch are announced by a single
// SigCellCheckStateChanged (for the last changed cell) on the next turn of
// the event loop, so that a loop over many rows gives one notification.
//
// When the horizontal header is a CustomCheckHeaderView, every column whose
// header shows a check box follows its cells: checked when all enabled
// check boxes of visible rows are checked, unchecked when none is (or there
// is none), partially checked otherwise.
class CUSTOMCTR_EXPORT CustomTableWidget : public QTableWidget, public CustomObject
{
    Q_OBJECT
    // Colours of the painted progress bars, settable from style sheets with
    // qproperty-progressColor etc.
    Q_PROPERTY(QColor progressColor READ progressColor WRITE setProgressColor)
    Q_PROPERTY(QColor progressBackgroundColor READ progressBackgroundColor WRITE setProgressBackgroundColor)
    Q_PROPERTY(QColor progressTextColor READ progressTextColor WRITE setProgressTextColor)

public:
    // Unscoped: these values feed Qt's int-based item data API. Far above
    // Qt::UserRole so that callers' own roles (UserRole + n) never collide.
    enum CellRole {
        CheckBoxVisibleRole = Qt::UserRole + 0x4300,
        CheckBoxEnabledRole,
        CellCheckStateRole,
        ProgressVisibleRole,
        ProgressMinimumRole,
        ProgressMaximumRole,
        ProgressValueRole
    };

    explicit CustomTableWidget(QWidget* parent = nullptr);
    CustomTableWidget(int rows, int columns, QWidget* parent = nullptr);
    ~CustomTableWidget() override;

    void setCheckBoxVisible(int row, int column, bool visible);
    // Whether the cell shows a check box.
    bool IsHaveCheckBox(int row, int column) const;
    // A disabled box stays visible but cannot be ticked by the user.
    void setCheckBoxEnable(int row, int column, bool enable);
    bool isCheckBoxEnabled(int row, int column) const;
    // Qt::Unchecked for cells without a check box.
    Qt::CheckState cellCheckState(int row, int column) const;
    // Works on disabled boxes too; does nothing on cells without a box.
    void setCellCheckState(int row, int column, Qt::CheckState state, bool bNotifyNow = true);
    // The painted box in viewport coordinates; empty without a visible box.
    QRect checkBoxRect(int row, int column) const;

    // Shows or hides the cell's bar and sets its range (a reversed range is
    // swapped). The value is kept within the range; showing a bar starts it
    // at its minimum unless it already shows.
    void setProgressBarVisible(int row, int column, bool visible, int minimum = 0, int maximum = 100);
    bool isProgressBarVisible(int row, int column) const;
    // Clamped to the bar's range; ignored when the cell has no bar.
    void updateProgressBarValue(int row, int column, int value);
    // The bar's value, or -1 when the cell shows no bar.
    int progressBarValue(int row, int column) const;

    QColor progressColor() const;
    void setProgressColor(const QColor& color);
    QColor progressBackgroundColor() const;
    void setProgressBackgroundColor(const QColor& color);
    QColor progressTextColor() const;
    void setProgressTextColor(const QColor& color);

signals:
    void SigCellCheckStateChanged(int row, int column);

private:
    struct Impl;
    friend class CustomTableItemDelegate;
    void initTable();
    QTableWidgetItem* cellItem(int row, int column, bool create);
    // A user action on a check box (click or key), already checked for
    // enabledness by the delegate.
    void toggleCellCheckState(int row, int column);
    void scheduleNotification(int row, int column);
    void updateHeaderCheckState(int column);
    void updateAllHeaderCheckStates();
    const std::unique_ptr<Impl> m_impl;
};
