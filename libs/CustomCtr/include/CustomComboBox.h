#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QComboBox>

// Combo box of the suite. The style selector picks the theme's look and is
// exposed as the property "cStyle" for style sheets.
class CUSTOMCTR_EXPORT CustomComboBox : public QComboBox, public CustomObject
{
    Q_OBJECT
    Q_PROPERTY(int cStyle READ cStyle)

public:
    // Unscoped: the selector is passed as a plain int.
    enum Style {
        StyleDefault = 0,  // framed box
        StyleUnderline = 1, // only a bottom line; inside forms and toolbars
        StyleSelector = 2  // framed box with a minimum width for picking a named item
    };

    // editable: whether the user may type a text that is not in the list.
    explicit CustomComboBox(QWidget* parent = nullptr, int style = StyleDefault, bool editable = false);
    ~CustomComboBox() override;

    int cStyle() const;

private:
    int m_nStyle = StyleDefault;
};
