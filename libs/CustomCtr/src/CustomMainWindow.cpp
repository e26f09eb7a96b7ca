#include "CustomMainWindow.h"

#include "Custom.h"
#include "CustomTitleBar.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QVBoxLayout>

namespace {
// Room for the one-pixel frame the theme draws around the window.
constexpr int kFrameMargin = 1;
} // namespace

struct CustomMainWindow::Impl
{
    QVBoxLayout* layout = nullptr;
    CustomTitleBar* titleBar = nullptr;
    QPointer<QWidget> central;
};

CustomMainWindow::CustomMainWindow(QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint
                  | Qt::WindowMinMaxButtonsHint)
    , CustomObject(this, QStringLiteral("CustomMainWindow"))
    , m_impl(new Impl)
{
    m_impl->layout = new QVBoxLayout(this);
    m_impl->layout->setContentsMargins(kFrameMargin, kFrameMargin, kFrameMargin, kFrameMargin);
    m_impl->layout->setSpacing(0);
    m_impl->titleBar = new CustomTitleBar(this);
    m_impl->layout->addWidget(m_impl->titleBar);
    m_impl->layout->addStretch(1);
    setSizeGripEnabled(true);
    cSetBaseStyleSheet(Custom::defaultStyleSheet());
}

CustomMainWindow::~CustomMainWindow() = default;

CustomTitleBar* CustomMainWindow::cTitleBar() const
{
    return m_impl->titleBar;
}

void CustomMainWindow::cSetCentralWidget(QWidget* widget)
{
    if (widget && widget == m_impl->central)
        return;
    // Taken out first, in case it lives inside the widget being replaced.
    if (widget)
        widget->setParent(this);
    // Everything below the title bar goes: the old central widget or the
    // stretch that keeps the title bar on top while there is none.
    while (m_impl->layout->count() > 1) {
        std::unique_ptr<QLayoutItem> item(m_impl->layout->takeAt(1));
        delete item->widget();
    }
    m_impl->central = widget;
    if (widget)
        m_impl->layout->addWidget(widget, 1);
    else
        m_impl->layout->addStretch(1);
}

QWidget* CustomMainWindow::cCentralWidget() const
{
    return m_impl->central;
}

void CustomMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange) {
        // A maximised window has no frame to draw.
        const int margin = isMaximized() || isFullScreen() ? 0 : kFrameMargin;
        m_impl->layout->setContentsMargins(margin, margin, margin, margin);
    }
    QDialog::changeEvent(event);
}

void CustomMainWindow::keyPressEvent(QKeyEvent* event)
{
    // A main window must not vanish on Escape as a dialog would.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
