#pragma once

#include "CustomCtrExport.h"
#include "CustomObject.h"

#include <QDialog>

#include <memory>


// Modal message box of the suite with its own title bar.
//
// Buttons value: 1 a confirm button, 2 a cancel button, 3 both. The result
// is the button pressed (1 confirm, 2 cancel) or 0 when the box was closed
// otherwise (Escape, the title bar's close control). Texts are shown as plain
// text. A non-empty detail text adds a "Details" toggle over a read-only
// text area.
//
// Object names, for tests and style sheets: the box "CustomMessageBox", its
// "ConfirmBtn", "CancelBtn", "DetailBtn", "MessageText", "DetailText",
// "MessageIcon".
class CUSTOMCTR_EXPORT CustomMessageBox : public QDialog, public CustomObject
{
    Q_OBJECT

public:
    // Unscoped: the values travel as plain ints through the static helpers.
    enum Button { NoButton = 0, ConfirmButton = 1, CancelButton = 2, ConfirmCancelButtons = 3 };
    enum Icon { QuestionIcon = 0, WarningIcon = 1, InformationIcon = 2 };

    // buttons outside 1..3 fall back to a single confirm button.
    CustomMessageBox(QWidget* parent, int icon, const QString& text, const QString& title,
                     int buttons = ConfirmButton, const QString& detailText = QString());
    ~CustomMessageBox() override;

    // Asks a question. bCancelIsDefault makes cancel the default button (the
    // one Enter presses), for questions whose confirmation loses work.
    static int ask(QWidget* parent, const QString& text, const QString& title,
                   int buttons = ConfirmCancelButtons, const QString& detailText = QString(),
                   bool bCancelIsDefault = false);
    static int warning(QWidget* parent, const QString& text, const QString& title,
                       int buttons = ConfirmButton, const QString& detailText = QString());

    // 1 confirm or 2 cancel: which button Enter presses.
    void setDefaultButton(int button);

protected:
    void changeEvent(QEvent* event) override;

private:
    struct Impl;
    void retranslate();
    const std::unique_ptr<Impl> m_impl;
};
