#include "CustomComboBox.h"

#include <QListView>

CustomComboBox::CustomComboBox(QWidget* parent, int style, bool editable)
    : QComboBox(parent)
    , CustomObject(this, QStringLiteral("CustomComboBox"))
    , m_nStyle(style >= StyleDefault && style <= StyleSelector ? style : StyleDefault)
{
    // The platform's own pop-up ignores item rules of style sheets; a plain
    // list view honours them.
    setView(new QListView(this));
    setEditable(editable);
    setCursor(Qt::PointingHandCursor);
    if (m_nStyle == StyleSelector)
        setSizeAdjustPolicy(QComboBox::AdjustToContents);
}

CustomComboBox::~CustomComboBox() = default;

int CustomComboBox::cStyle() const
{
    return m_nStyle;
}
