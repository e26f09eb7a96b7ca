#pragma once

#include <Qt>

// Check-state arithmetic shared by the table and its header, kept free of
// widgets.
namespace CheckStates {

// The state a "select all" box shows for a set of boxes.
struct Tally
{
    int total = 0;
    int checked = 0;

    void add(Qt::CheckState state)
    {
        ++total;
        if (state == Qt::Checked)
            ++checked;
    }

    Qt::CheckState summary() const
    {
        if (checked == 0)
            return Qt::Unchecked;
        return checked == total ? Qt::Checked : Qt::PartiallyChecked;
    }
};

// What a user click makes of a cell's box: partially checked counts as not
// yet checked.
inline Qt::CheckState toggled(Qt::CheckState state)
{
    return state == Qt::Checked ? Qt::Unchecked : Qt::Checked;
}

// Values stored in item data may come from anywhere; keep them to the enum.
inline Qt::CheckState fromInt(int value)
{
    switch (value) {
    case Qt::Checked: return Qt::Checked;
    case Qt::PartiallyChecked: return Qt::PartiallyChecked;
    default: return Qt::Unchecked;
    }
}

} // namespace CheckStates
