#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QPushButton>

// Push button of the suite. The style selector picks one of the theme's
// looks; it is exposed as the property "cStyle" so that style sheets can
// match it (CustomPushButton[cStyle="1"]).
class CUSTOMCTR_EXPORT CustomPushButton : public QPushButton, public CustomObject
{
    Q_OBJECT
    Q_PROPERTY(int cStyle READ cStyle WRITE cSetStyle)

public:
    // Unscoped: the selector is passed as a plain int.
    enum Style {
        StyleFlat = 0,    // no frame until hovered; tool buttons
        StyleOutline = 1, // white with a thin frame; everyday actions
        StylePrimary = 2, // filled with the accent colour; the main action
        StyleTitleBar = 3 // square glyph button of a title bar
    };

    explicit CustomPushButton(QWidget* parent = nullptr, int style = StyleFlat);
    CustomPushButton(const QString& text, QWidget* parent = nullptr, int style = StyleFlat);
    ~CustomPushButton() override;

    int cStyle() const;
    // Unknown values fall back to StyleFlat.
    void cSetStyle(int style);

private:
    int m_nStyle = StyleFlat;
};
