#pragma once

#include "CustomCtrExport.h"

#include <QString>

#include <memory>

class QWidget;

// Styling mix-in of every widget of the library. Each setter records one
// declaration for one item state and regenerates the host widget's style
// sheet, so the look is plain Qt style sheet text that can be read back with
// cStyleSheet() (or QWidget::styleSheet()).
//
// Item states: 0 normal, 1 hover (mouse over), 2 pressed.
// Border edges: 0 top, 1 bottom, 2 top and bottom, 3 all four sides,
//               4 left, 5 right, 6 left and right.
// Invalid arguments (unknown state or edge, a colour Qt cannot parse, a size
// below 1, an image path with characters that would break the style sheet)
// change nothing and make the setter return false.
//
// The generated sheet replaces whatever was set with setStyleSheet() on the
// host; use the setters instead of mixing both.
class CUSTOMCTR_EXPORT CustomObject
{
public:
    // Unscoped: callers pass these as plain ints.
    enum ItemState { StateNormal = 0, StateHover = 1, StatePressed = 2 };
    enum BorderEdge {
        EdgeTop = 0,
        EdgeBottom = 1,
        EdgeTopBottom = 2,
        EdgeAll = 3,
        EdgeLeft = 4,
        EdgeRight = 5,
        EdgeLeftRight = 6
    };

    virtual ~CustomObject();
    CustomObject(const CustomObject&) = delete;
    CustomObject& operator=(const CustomObject&) = delete;

    bool cSetBorderColor(const QString& color, int edge, int state);
    // Width in pixels of the borders set for that state (default 1).
    bool cSetBorderWidth(int width, int state);
    bool cSetFontColor(const QString& color, int state);
    // Size in pixels.
    bool cSetFontSize(int size, int state);
    bool cSetBackgroundColor(const QString& color, int state);
    // The image is stretched over the widget (a file path or a ":/" resource).
    bool cSetBackgroundImage(const QString& path, int state);

    // The rules generated from the setters (without the theme).
    QString cStyleSheet() const;

protected:
    // host: the widget that derives from this mix-in; selector: the type
    // selector its rules use (the library class name, which also matches
    // subclasses).
    CustomObject(QWidget* host, const QString& selector);

    // Rules placed before the generated ones, for example the default theme
    // of a top-level window.
    void cSetBaseStyleSheet(const QString& sheet);

private:
    struct Impl;
    void cApplyStyle();
    const std::unique_ptr<Impl> m_impl;
};
