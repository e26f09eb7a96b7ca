#include "CustomTitleBar.h"

#include "CustomPushButton.h"
#include "ThemeImages_p.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPixmap>
#include <QPointer>
#include <QWindow>

namespace {
constexpr int kDefaultHeight = 36;
constexpr int kGlyphSize = 12;
} // namespace

struct CustomTitleBar::Impl
{
    QHBoxLayout* layout = nullptr;
    QLabel* icon = nullptr;
    QLabel* text = nullptr;
    CustomPushButton* minimize = nullptr;
    CustomPushButton* maximize = nullptr;
    CustomPushButton* close = nullptr;
    QList<CustomPushButton*> menuButtons;
    TitleControls controls = AllControls;
    QPointer<QWidget> watchedWindow;
    bool dragging = false;
    QPoint dragOffset;
};

CustomTitleBar::CustomTitleBar(QWidget* parent)
    : QWidget(parent)
    , CustomObject(this, QStringLiteral("CustomTitleBar"))
    , m_impl(new Impl)
{
    // Plain QWidget subclasses paint style sheet backgrounds only with this.
    setAttribute(Qt::WA_StyledBackground);
    setFixedHeight(kDefaultHeight);

    m_impl->layout = new QHBoxLayout(this);
    m_impl->layout->setContentsMargins(10, 0, 0, 0);
    m_impl->layout->setSpacing(6);

    m_impl->icon = new QLabel(this);
    m_impl->icon->setObjectName(QStringLiteral("TitleIcon"));
    m_impl->icon->setFixedSize(20, 20);
    m_impl->icon->setScaledContents(true);
    m_impl->icon->hide();

    m_impl->text = new QLabel(this);
    m_impl->text->setObjectName(QStringLiteral("TitleText"));
    m_impl->text->setTextFormat(Qt::PlainText);

    const auto makeControl = [this](const QString& name) {
        auto* button = new CustomPushButton(this, CustomPushButton::StyleTitleBar);
        button->setObjectName(name);
        button->setFocusPolicy(Qt::NoFocus);
        button->setIconSize(QSize(kGlyphSize, kGlyphSize));
        return button;
    };
    m_impl->minimize = makeControl(QStringLiteral("MinimizeBtn"));
    m_impl->maximize = makeControl(QStringLiteral("MaximizeBtn"));
    m_impl->close = makeControl(QStringLiteral("CloseBtn"));
    m_impl->minimize->setIcon(CustomTheme::icon(QStringLiteral("title_min.svg"), QStyle::SP_TitleBarMinButton, this));
    m_impl->close->setIcon(CustomTheme::icon(QStringLiteral("title_close.svg"), QStyle::SP_TitleBarCloseButton, this));

    m_impl->layout->addWidget(m_impl->icon);
    m_impl->layout->addWidget(m_impl->text);
    m_impl->layout->addStretch(1);
    m_impl->layout->addWidget(m_impl->minimize);
    m_impl->layout->addWidget(m_impl->maximize);
    m_impl->layout->addWidget(m_impl->close);
    // The controls sit flush with each other and the window's edge.
    m_impl->layout->setSpacing(0);

    connect(m_impl->minimize, &QPushButton::clicked, this, [this] { window()->showMinimized(); });
    connect(m_impl->maximize, &QPushButton::clicked, this, &CustomTitleBar::toggleMaximized);
    connect(m_impl->close, &QPushButton::clicked, this, [this] { window()->close(); });

    cSetTitleHeight(kDefaultHeight);
    updateMaximizeButton();
    retranslate();
    watchWindow();
}

CustomTitleBar::~CustomTitleBar() = default;

void CustomTitleBar::cSetTitleText(const QString& text)
{
    m_impl->text->setText(text);
}

QString CustomTitleBar::cTitleText() const
{
    return m_impl->text->text();
}

void CustomTitleBar::cSetTitleIcon(const QString& path)
{
    const QPixmap pixmap(path);
    m_impl->icon->setPixmap(pixmap);
    m_impl->icon->setVisible(!pixmap.isNull());
}

void CustomTitleBar::cSetTitleControls(TitleControls controls)
{
    m_impl->controls = controls & AllControls;
    m_impl->minimize->setVisible(m_impl->controls.testFlag(MinimizeControl));
    m_impl->maximize->setVisible(m_impl->controls.testFlag(MaximizeControl));
    m_impl->close->setVisible(m_impl->controls.testFlag(CloseControl));
}

CustomTitleBar::TitleControls CustomTitleBar::cTitleControls() const
{
    return m_impl->controls;
}

void CustomTitleBar::cSetTitleHeight(int height)
{
    setFixedHeight(height);
    // Controls are a little wider than high, as on common desktops.
    const QSize controlSize(qMax(height * 5 / 4, 24), height);
    for (CustomPushButton* button : {m_impl->minimize, m_impl->maximize, m_impl->close})
        button->setFixedSize(controlSize);
    for (CustomPushButton* button : qAsConst(m_impl->menuButtons))
        button->setFixedHeight(qMax(height - 12, 16));
}

CustomPushButton* CustomTitleBar::cAddMenu(const QString& text, QMenu* menu)
{
    auto* button = new CustomPushButton(text, this, CustomPushButton::StyleFlat);
    button->setObjectName(QStringLiteral("TitleMenuBtn"));
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedHeight(qMax(height() - 12, 16));
    if (text.isEmpty())
        button->setFixedWidth(button->height());
    if (menu) {
        QPointer<QMenu> guardedMenu(menu);
        connect(button, &QPushButton::clicked, this, [button, guardedMenu] {
            if (guardedMenu)
                guardedMenu->popup(button->mapToGlobal(QPoint(0, button->height())));
        });
    }
    m_impl->layout->insertWidget(m_impl->layout->indexOf(m_impl->minimize), button);
    m_impl->menuButtons.append(button);
    return button;
}

QList<CustomPushButton*> CustomTitleBar::cMenuButtons() const
{
    return m_impl->menuButtons;
}

CustomPushButton* CustomTitleBar::cControlButton(TitleControl control) const
{
    switch (control) {
    case MinimizeControl: return m_impl->minimize;
    case MaximizeControl: return m_impl->maximize;
    case CloseControl: return m_impl->close;
    default: return nullptr;
    }
}

void CustomTitleBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    QWidget* const win = window();
    if (win == this || win->isMaximized() || win->isFullScreen()) {
        event->accept();
        return;
    }
    // Let the window manager move the window where it can (Wayland needs
    // that); otherwise move it ourselves.
    QWindow* const handle = win->windowHandle();
    if (handle && handle->startSystemMove()) {
        event->accept();
        return;
    }
    m_impl->dragging = true;
    m_impl->dragOffset = event->globalPos() - win->frameGeometry().topLeft();
    event->accept();
}

void CustomTitleBar::mouseMoveEvent(QMouseEvent* event)
{
    if (m_impl->dragging && (event->buttons() & Qt::LeftButton)) {
        window()->move(event->globalPos() - m_impl->dragOffset);
        event->accept();
        return;
    }
    QWidget::mouseMoveEvent(event);
}

void CustomTitleBar::mouseReleaseEvent(QMouseEvent* event)
{
    m_impl->dragging = false;
    QWidget::mouseReleaseEvent(event);
}

void CustomTitleBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_impl->controls.testFlag(MaximizeControl)) {
        m_impl->dragging = false;
        toggleMaximized();
        event->accept();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

void CustomTitleBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    else if (event->type() == QEvent::ParentChange)
        watchWindow();
    QWidget::changeEvent(event);
}

bool CustomTitleBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_impl->watchedWindow && event->type() == QEvent::WindowStateChange)
        updateMaximizeButton();
    return QWidget::eventFilter(watched, event);
}

void CustomTitleBar::showEvent(QShowEvent* event)
{
    watchWindow();
    updateMaximizeButton();
    QWidget::showEvent(event);
}

void CustomTitleBar::toggleMaximized()
{
    QWidget* const win = window();
    if (win == this)
        return;
    if (win->isMaximized())
        win->showNormal();
    else
        win->showMaximized();
    updateMaximizeButton();
}

void CustomTitleBar::updateMaximizeButton()
{
    const bool maximized = window() != this && window()->isMaximized();
    m_impl->maximize->setIcon(maximized
            ? CustomTheme::icon(QStringLiteral("title_restore.svg"), QStyle::SP_TitleBarNormalButton, this)
            : CustomTheme::icon(QStringLiteral("title_max.svg"), QStyle::SP_TitleBarMaxButton, this));
    m_impl->maximize->setToolTip(maximized ? tr("Restore") : tr("Maximize"));
}

void CustomTitleBar::retranslate()
{
    m_impl->minimize->setToolTip(tr("Minimize"));
    m_impl->close->setToolTip(tr("Close"));
    updateMaximizeButton();
}

void CustomTitleBar::watchWindow()
{
    QWidget* const win = window();
    if (win == m_impl->watchedWindow)
        return;
    if (m_impl->watchedWindow)
        m_impl->watchedWindow->removeEventFilter(this);
    m_impl->watchedWindow = (win != this) ? win : nullptr;
    if (m_impl->watchedWindow)
        m_impl->watchedWindow->installEventFilter(this);
}
