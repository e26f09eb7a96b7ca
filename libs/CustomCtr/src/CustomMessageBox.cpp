#include "CustomMessageBox.h"

#include "Custom.h"
#include "CustomLabel.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"
#include "ThemeImages_p.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace {
constexpr int kIconSize = 32;

QIcon iconFor(int icon, const QWidget* widget)
{
    switch (icon) {
    case CustomMessageBox::WarningIcon:
        return CustomTheme::icon(QStringLiteral("msg_warning.svg"), QStyle::SP_MessageBoxWarning, widget);
    case CustomMessageBox::InformationIcon:
        return CustomTheme::icon(QStringLiteral("msg_info.svg"), QStyle::SP_MessageBoxInformation, widget);
    default:
        return CustomTheme::icon(QStringLiteral("msg_question.svg"), QStyle::SP_MessageBoxQuestion, widget);
    }
}

int showBox(QWidget* parent, int icon, const QString& text, const QString& title, int buttons,
            const QString& detailText, int defaultButton)
{
    // exec() deletes a delete-on-close dialog itself once its loop ends, and
    // copes with the parent (and so the box) being deleted meanwhile.
    auto* const box = new CustomMessageBox(parent, icon, text, title, buttons, detailText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(defaultButton);
    return box->exec();
}
} // namespace

struct CustomMessageBox::Impl
{
    CustomTitleBar* titleBar = nullptr;
    CustomPushButton* confirm = nullptr;
    CustomPushButton* cancel = nullptr;
    CustomPushButton* details = nullptr;
    QPlainTextEdit* detailText = nullptr;
};

CustomMessageBox::CustomMessageBox(QWidget* parent, int icon, const QString& text, const QString& title,
                                   int buttons, const QString& detailText)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , CustomObject(this, QStringLiteral("CustomMessageBox"))
    , m_impl(new Impl)
{
    setObjectName(QStringLiteral("CustomMessageBox"));
    setModal(true);
    setWindowTitle(title);
    if (buttons < ConfirmButton || buttons > ConfirmCancelButtons)
        buttons = ConfirmButton;

    auto* const outer = new QVBoxLayout(this);
    outer->setContentsMargins(1, 1, 1, 1);
    outer->setSpacing(0);

    m_impl->titleBar = new CustomTitleBar(this);
    m_impl->titleBar->cSetTitleControls(CustomTitleBar::CloseControl);
    m_impl->titleBar->cSetTitleHeight(32);
    m_impl->titleBar->cSetTitleText(title);
    outer->addWidget(m_impl->titleBar);

    auto* const body = new QVBoxLayout;
    body->setContentsMargins(20, 18, 20, 16);
    body->setSpacing(14);
    outer->addLayout(body);

    auto* const messageRow = new QHBoxLayout;
    messageRow->setSpacing(14);
    auto* const iconLabel = new CustomLabel(this);
    iconLabel->setObjectName(QStringLiteral("MessageIcon"));
    iconLabel->setPixmap(iconFor(icon, this).pixmap(kIconSize, kIconSize));
    iconLabel->setFixedSize(kIconSize, kIconSize);
    auto* const message = new CustomLabel(text, this);
    message->setObjectName(QStringLiteral("MessageText"));
    message->setWordWrap(true);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message->setMinimumWidth(260);
    messageRow->addWidget(iconLabel, 0, Qt::AlignTop);
    messageRow->addWidget(message, 1);
    body->addLayout(messageRow);

    if (!detailText.isEmpty()) {
        m_impl->detailText = new QPlainTextEdit(detailText, this);
        m_impl->detailText->setObjectName(QStringLiteral("DetailText"));
        m_impl->detailText->setReadOnly(true);
        m_impl->detailText->setMinimumHeight(100);
        m_impl->detailText->hide();
        body->addWidget(m_impl->detailText);
    }

    auto* const buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(10);
    if (m_impl->detailText) {
        m_impl->details = new CustomPushButton(this, CustomPushButton::StyleFlat);
        m_impl->details->setObjectName(QStringLiteral("DetailBtn"));
        m_impl->details->setCheckable(true);
        m_impl->details->setAutoDefault(false);
        connect(m_impl->details, &QPushButton::toggled, this, [this](bool shown) {
            m_impl->detailText->setVisible(shown);
            adjustSize();
        });
        buttonRow->addWidget(m_impl->details);
    }
    buttonRow->addStretch(1);
    if (buttons & ConfirmButton) {
        m_impl->confirm = new CustomPushButton(this, CustomPushButton::StylePrimary);
        m_impl->confirm->setObjectName(QStringLiteral("ConfirmBtn"));
        m_impl->confirm->setMinimumSize(86, 28);
        connect(m_impl->confirm, &QPushButton::clicked, this, [this] { done(ConfirmButton); });
        buttonRow->addWidget(m_impl->confirm);
    }
    if (buttons & CancelButton) {
        m_impl->cancel = new CustomPushButton(this, CustomPushButton::StyleOutline);
        m_impl->cancel->setObjectName(QStringLiteral("CancelBtn"));
        m_impl->cancel->setMinimumSize(86, 28);
        connect(m_impl->cancel, &QPushButton::clicked, this, [this] { done(CancelButton); });
        buttonRow->addWidget(m_impl->cancel);
    }
    body->addLayout(buttonRow);

    setDefaultButton(m_impl->confirm ? ConfirmButton : CancelButton);
    retranslate();
    cSetBaseStyleSheet(Custom::defaultStyleSheet());
}

CustomMessageBox::~CustomMessageBox() = default;

int CustomMessageBox::ask(QWidget* parent, const QString& text, const QString& title, int buttons,
                          const QString& detailText, bool bCancelIsDefault)
{
    return showBox(parent, QuestionIcon, text, title, buttons, detailText,
                   bCancelIsDefault ? CancelButton : ConfirmButton);
}

int CustomMessageBox::warning(QWidget* parent, const QString& text, const QString& title, int buttons,
                              const QString& detailText)
{
    return showBox(parent, WarningIcon, text, title, buttons, detailText, ConfirmButton);
}

void CustomMessageBox::setDefaultButton(int button)
{
    CustomPushButton* const wanted = button == CancelButton ? m_impl->cancel : m_impl->confirm;
    if (!wanted)
        return;
    for (CustomPushButton* candidate : {m_impl->confirm, m_impl->cancel}) {
        if (candidate)
            candidate->setDefault(candidate == wanted);
    }
    wanted->setFocus();
}

void CustomMessageBox::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}

void CustomMessageBox::retranslate()
{
    if (m_impl->confirm)
        m_impl->confirm->setText(tr("Confirm"));
    if (m_impl->cancel)
        m_impl->cancel->setText(tr("Cancel"));
    if (m_impl->details)
        m_impl->details->setText(tr("Details"));
}
