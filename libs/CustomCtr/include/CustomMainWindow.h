#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QDialog>

#include <memory>

class CustomTitleBar;

// Frameless top-level window of the suite: a CustomTitleBar on top, one
// central widget below. Carries the default theme (when its resource bundle
// is registered), so every widget inside is styled. A grip in the
// bottom-right corner resizes it. Escape does not close it, unlike a plain
// QDialog.
class CUSTOMCTR_EXPORT CustomMainWindow : public QDialog, public CustomObject
{
    Q_OBJECT

public:
    explicit CustomMainWindow(QWidget* parent = nullptr);
    ~CustomMainWindow() override;

    // Never null for the window's lifetime.
    CustomTitleBar* cTitleBar() const;

    // Takes ownership; a previous central widget is deleted.
    void cSetCentralWidget(QWidget* widget);
    QWidget* cCentralWidget() const;

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Impl;
    const std::unique_ptr<Impl> m_impl;
};
