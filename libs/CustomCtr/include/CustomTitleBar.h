#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QFlags>
#include <QList>
#include <QWidget>

#include <memory>

class CustomPushButton;
class QMenu;

// Title bar of a frameless window: icon, title text, extra buttons added with
// cAddMenu, then the window controls (minimise, maximise/restore, close).
// The controls act on window(): close() goes through the window's closeEvent.
// Dragging the bar moves the window; a double click maximises or restores it
// (when the maximise control is shown).
//
// Object names, for style sheets and tests: "TitleIcon", "TitleText",
// "TitleMenuBtn" (every cAddMenu button), "MinimizeBtn", "MaximizeBtn",
// "CloseBtn".
class CUSTOMCTR_EXPORT CustomTitleBar : public QWidget, public CustomObject
{
    Q_OBJECT

public:
    enum TitleControl {
        NoControl = 0x0,
        MinimizeControl = 0x1,
        MaximizeControl = 0x2,
        CloseControl = 0x4,
        AllControls = MinimizeControl | MaximizeControl | CloseControl
    };
    Q_DECLARE_FLAGS(TitleControls, TitleControl)
    Q_FLAG(TitleControls)

    explicit CustomTitleBar(QWidget* parent = nullptr);
    ~CustomTitleBar() override;

    void cSetTitleText(const QString& text);
    QString cTitleText() const;

    // An image file or ":/" resource; an empty or unreadable path hides the icon.
    void cSetTitleIcon(const QString& path);

    // Which controls are shown; all three by default.
    void cSetTitleControls(TitleControls controls);
    TitleControls cTitleControls() const;

    // Same as setFixedHeight; the buttons scale with it.
    void cSetTitleHeight(int height);

    // Adds a button before the controls (after earlier ones) and returns it;
    // the bar owns it. With a menu, a click pops the menu up below the button
    // (the menu is not owned). An empty text gives a caption-less button,
    // usually dressed with cSetBackgroundImage.
    CustomPushButton* cAddMenu(const QString& text, QMenu* menu);
    QList<CustomPushButton*> cMenuButtons() const;

    // The button of one control (shown or not); null for other values.
    CustomPushButton* cControlButton(TitleControl control) const;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    struct Impl;
    void toggleMaximized();
    void updateMaximizeButton();
    void retranslate();
    void watchWindow();
    const std::unique_ptr<Impl> m_impl;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(CustomTitleBar::TitleControls)
