// Construction, layout, connections and texts of the main window.

#include "QVirtualCamMainWidget.h"

#include "CustomCheckHeaderView.h"
#include "CustomComboBox.h"
#include "CustomLabel.h"
#include "CustomListWidget.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "CustomTitleBar.h"
#include "XQInterface.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>

#include <new>

namespace {

constexpr int kDeviceColumnCount = 5;
constexpr int kDeviceColumnWidths[kDeviceColumnCount] = {38, 180, 115, 125, 167};
const char* const kAccentColor = "#f76900";

} // namespace

QVirtualCamMainWidget::QVirtualCamMainWidget(QWidget* parent)
    : CustomMainWindow(parent)
{
    CustomTitleBar* pTitleBar = cTitleBar();
    if (!pTitleBar)
        return;
    pTitleBar->cSetTitleText(QString("%1 %2").arg(tr("Quorvex"), XQInterface::curExeVersion()));
    pTitleBar->cSetTitleControls(pTitleBar->cTitleControls());
    pTitleBar->cSetTitleIcon(":/Orbicle/tools/DriverTool.png");
    pTitleBar->setFixedHeight(40);
    setWindowTitle(tr("Quorvex"));
    resize(1058, 630);
}

bool QVirtualCamMainWidget::Init()
{
    if (!InitUI() || !InitConnect() || !InitLayout())
        return false;
    InitDeviceTable();
    return true;
}

bool QVirtualCamMainWidget::InitUI()
{
    m_pCollectBtn = new CustomPushButton(this, CustomPushButton::StyleOutline);
    m_pCollectBtn->setText(tr("Record"));
    m_pCollectBtn->setObjectName("CollectBtn");
    m_pCollectBtn->setFixedSize(86, 26);
    m_pCollectBtn->cSetBorderColor(kAccentColor, 3, 0);
    m_pCollectBtn->setEnabled(false);

    m_pWarningLabel = new (std::nothrow) CustomLabel(this);
    if (!m_pWarningLabel)
        return false;
    m_pWarningLabel->setText(tr("The tool does not support discovery code readers when private protocol is enabled"));
    m_pWarningLabel->cSetFontColor("#7F000000", 0);
    m_pWarningLabel->cSetFontSize(14, 0);

    m_pDeviceTable = new CustomTableWidget(this);
    auto* pHeader = new (std::nothrow) CustomCheckHeaderView(Qt::Horizontal, m_pDeviceTable);
    if (!pHeader)
        return false;
    m_pDeviceTable->setHorizontalHeader(pHeader);
    pHeader->setCheckBoxVisible(0, true);
    m_pDeviceTable->setWordWrap(false);
    pHeader->setFixedHeight(32);
    pHeader->connetSectionResized(true);
    m_pDeviceTable->setColumnCount(kDeviceColumnCount);
    for (int nColumn = 0; nColumn < kDeviceColumnCount; ++nColumn)
        m_pDeviceTable->setColumnWidth(nColumn, kDeviceColumnWidths[nColumn]);
    m_pDeviceTable->setIconSize(QSize(34, 34));
    pHeader->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    pHeader->setSectionResizeMode(0, QHeaderView::Fixed);
    m_pDeviceTable->setHorizontalHeaderLabels(
        {QString(), tr("Model Name"), tr("IP Address"), tr("Version"), tr("Collect Status")});
    pHeader->setFixedHeight(34);
    m_pDeviceTable->setSortingEnabled(false);
    pHeader->setStretchLastSection(true);
    for (int nRow = 0; nRow < kPlaceholderRows; ++nRow) {
        m_pDeviceTable->insertRow(nRow);
        m_pDeviceTable->setRowHeight(nRow, kDeviceRowHeight);
    }

    m_pVirtualComboBox = new CustomComboBox(this, 2, false);

    m_pAddVirtualBtn = new CustomPushButton(this, CustomPushButton::StyleOutline);
    m_pAddVirtualBtn->setText(tr("Add"));
    m_pAddVirtualBtn->setFixedSize(86, 26);
    m_pAddVirtualBtn->cSetBorderColor(kAccentColor, 3, 0);

    m_pVirtualCameraList = new CustomListWidget(this);
    m_pVirtualCameraList->setContextMenuPolicy(Qt::CustomContextMenu);

    CustomTitleBar* pTitleBar = cTitleBar();
    m_pHelpDocBtn = pTitleBar ? pTitleBar->cAddMenu(QString(), nullptr) : nullptr;
    if (!m_pHelpDocBtn)
        return false;
    for (int nState = 0; nState <= 2; ++nState)
        m_pHelpDocBtn->cSetBackgroundImage(":/Orbicle/button/icon_helpdoc.png", nState);
    m_pHelpDocBtn->setToolTip(tr("View Document"));
    return true;
}

bool QVirtualCamMainWidget::InitConnect()
{
    if (!connect(m_pCollectBtn, SIGNAL(clicked()), this, SLOT(OnCollectBtn())))
        return false;
    if (!connect(m_pAddVirtualBtn, SIGNAL(clicked()), this, SLOT(OnAddVirtualBtn())))
        return false;
    if (!connect(m_pVirtualCameraList, SIGNAL(customContextMenuRequested(const QPoint&)), this,
                 SLOT(OnCustomContextMenuRequested(const QPoint&))))
        return false;
    if (!connect(m_pDeviceTable, SIGNAL(SigCellCheckStateChanged(int, int)), this,
                 SLOT(onCellCheckStateChanged(int, int))))
        return false;
    auto* pHeader = qobject_cast<CustomCheckHeaderView*>(m_pDeviceTable->horizontalHeader());
    if (!pHeader
        || !connect(pHeader, &CustomCheckHeaderView::SigCheckStateChange, this,
                    &QVirtualCamMainWidget::onHeaderCheckStateChanged))
        return false;
    if (!connect(m_pHelpDocBtn, SIGNAL(clicked()), this, SLOT(OnHelpDocClicked())))
        return false;
    return true;
}

bool QVirtualCamMainWidget::InitLayout()
{
    // The layouts are owned through the panes they end up in; giving them the
    // window as parent would make each the window's own layout in turn.
    m_pTopLayout = new QHBoxLayout();
    m_pTopLayout->addWidget(m_pCollectBtn);
    m_pTopLayout->addWidget(m_pWarningLabel);

    m_pLeftLayout = new QVBoxLayout();
    m_pLeftLayout->addSpacing(10);
    m_pLeftLayout->addLayout(m_pTopLayout);
    m_pLeftLayout->addSpacing(10);
    m_pLeftLayout->addWidget(m_pDeviceTable);
    m_pLeftLayout->addSpacing(10);

    m_pVirtualTopLayout = new QHBoxLayout();
    m_pVirtualTopLayout->addWidget(m_pVirtualComboBox);
    m_pVirtualTopLayout->addStretch();
    m_pVirtualTopLayout->addWidget(m_pAddVirtualBtn);

    m_pRightLayout = new QVBoxLayout();
    m_pRightLayout->addSpacing(10);
    m_pRightLayout->addLayout(m_pVirtualTopLayout);
    m_pRightLayout->addSpacing(10);
    m_pRightLayout->addWidget(m_pVirtualCameraList);
    m_pRightLayout->addSpacing(10);

    auto* pLeftWidget = new QWidget(this);
    pLeftWidget->setLayout(m_pLeftLayout);
    auto* pRightWidget = new QWidget(this);
    pRightWidget->setLayout(m_pRightLayout);

    m_pSplitter = new (std::nothrow) QSplitter(Qt::Horizontal, this);
    if (!m_pSplitter)
        return false;
    m_pSplitter->setStyleSheet("QSplitter::handle{background:#f2f3f5;}QSplitter::handle:horizontal{width: 1px;}"
                               "QSplitter::handle:vertical{height: 1px;}");
    m_pSplitter->setContentsMargins(0, 0, 0, 0);
    m_pSplitter->addWidget(pLeftWidget);
    m_pSplitter->addWidget(pRightWidget);
    m_pSplitter->setStretchFactor(0, 6);
    m_pSplitter->setStretchFactor(1, 4);
    m_pSplitter->setFixedWidth(1);

    auto* pCentralLayout = new QHBoxLayout();
    pCentralLayout->setContentsMargins(0, 0, 0, 0);
    pCentralLayout->setSpacing(0);
    pCentralLayout->addWidget(m_pSplitter);
    auto* pCentralWidget = new QWidget(this);
    pCentralWidget->setLayout(pCentralLayout);
    cSetCentralWidget(pCentralWidget);

    InitComBoboxInfo();
    InitVirtualCameraList();
    return true;
}

void QVirtualCamMainWidget::RetranslateUI()
{
    CustomTitleBar* pTitleBar = cTitleBar();
    if (!pTitleBar)
        return;
    pTitleBar->cSetTitleText(QString("%1 %2").arg(tr("Quorvex"), XQInterface::curExeVersion()));
    setWindowTitle(tr("Quorvex"));

    if (!m_pCollectBtn || !m_pWarningLabel || !m_pAddVirtualBtn || !m_pHelpDocBtn)
        return;
    m_pCollectBtn->setText(tr("Record"));
    m_pWarningLabel->setText(tr("The tool does not support discovery code readers when private protocol is enabled"));
    m_pAddVirtualBtn->setText(tr("Add"));
    m_pHelpDocBtn->setToolTip(tr("View Document"));

    if (!m_pDeviceTable)
        return;
    m_pDeviceTable->setHorizontalHeaderLabels(
        {QString(), tr("Model Name"), tr("IP Address"), tr("Version"), tr("Collect Status")});
}

void QVirtualCamMainWidget::customEvent(QEvent* event)
{
    if (event)
        event->accept();
}

void QVirtualCamMainWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        RetranslateUI();
    CustomMainWindow::changeEvent(event);
}
