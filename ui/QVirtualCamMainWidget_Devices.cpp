// Device discovery and the device table.

#include "QVirtualCamMainWidget.h"

#include "CustomCheckHeaderView.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "DeviceListing.h"

#include <QDebug>

#include <cstdio>
#include <cstring>

namespace {

constexpr int kSerialRole = Qt::UserRole + 1;
constexpr int kPlaceholderRows = 13;
constexpr int kDeviceRowHeight = 38;
constexpr int kCollectAccessMode = 1;


} // namespace

void QVirtualCamMainWidget::InitDeviceTable()
{
    std::memset(&m_stDeviceList, 0, sizeof(m_stDeviceList));
    const int nRet = XQ_CODEREADER_EnumDevices(&m_stDeviceList, 1);
    if (nRet != 0) {
        std::printf("Enum Devices fail! nRet [0x%x]\n", static_cast<unsigned int>(nRet));
        std::fflush(stdout);
        return;
    }
    if (!m_pDeviceTable || m_stDeviceList.nDeviceNum == 0)
        return;

    for (unsigned int i = 0; i < m_stDeviceList.nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const _XQ_CODEREADER_DEVICE_INFO_* pRecord = m_stDeviceList.pDeviceInfo[i];
        if (!pRecord)
            break;
        // Virtual cameras of the store and devices that are no code readers.
        if (!collect::IsListedCodeReader(*pRecord))
            continue;

        const int row = GetDeviceRowCount();
        if (row >= kPlaceholderRows) {
            m_pDeviceTable->insertRow(row);
            m_pDeviceTable->setRowHeight(row, kDeviceRowHeight);
        }
        for (int nColumn = 0; nColumn < m_pDeviceTable->columnCount(); ++nColumn)
            m_pDeviceTable->setItem(row, nColumn, new QTableWidgetItem(0));
        m_pDeviceTable->setCheckBoxVisible(row, 0, true);
        FillDeviceRow(row, *pRecord);
        if (row == 0)
            m_pDeviceTable->selectRow(0);
    }
}

void QVirtualCamMainWidget::FillDeviceRow(int row, const _XQ_CODEREADER_DEVICE_INFO_& record)
{
    if (!m_pDeviceTable || row < 0 || row >= m_pDeviceTable->rowCount())
        return;
    if (!XQ_CODEREADER_IsDeviceAccessible(&record, kCollectAccessMode))
        m_pDeviceTable->setCheckBoxEnable(row, 0, false);

    QTableWidgetItem* pSerialItem = m_pDeviceTable->item(row, 0);
    if (!pSerialItem)
        return;
    pSerialItem->setData(kSerialRole, collect::DeviceText(record.stGigE.chSerialNumber));

    const QString strModel = collect::DeviceText(record.stGigE.chModelName);
    if (QTableWidgetItem* pModelItem = m_pDeviceTable->item(row, 1)) {
        pModelItem->setText(strModel);
        pModelItem->setToolTip(strModel);
    }
    QTableWidgetItem* pIpItem = m_pDeviceTable->item(row, 2);
    QTableWidgetItem* pVersionItem = m_pDeviceTable->item(row, 3);
    if (pIpItem && pVersionItem) {
        const QString strVersion = collect::DeviceText(record.stGigE.chDeviceVersion);
        pVersionItem->setText(strVersion);
        pVersionItem->setToolTip(strVersion);
        if (QTableWidgetItem* pStatusItem = m_pDeviceTable->item(row, 4)) {
            pStatusItem->setText(QString());
            m_pDeviceTable->setProgressBarVisible(row, 4, false, 0, 100);
        }
        const QString strIp = collect::IpAddressText(record.stGigE.nCurrentIp);
        pIpItem->setText(strIp);
        pIpItem->setToolTip(strIp);
    }
}

int QVirtualCamMainWidget::GetDeviceRowCount()
{
    int nCount = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row)
        if (m_pDeviceTable->IsHaveCheckBox(row, 0))
            ++nCount;
    return nCount;
}

void QVirtualCamMainWidget::FindDeviceInfo(QString serial, _XQ_CODEREADER_DEVICE_INFO_& out)
{
    for (unsigned int i = 0; i < m_stDeviceList.nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const _XQ_CODEREADER_DEVICE_INFO_* pRecord = m_stDeviceList.pDeviceInfo[i];
        if (pRecord && collect::DeviceText(pRecord->stGigE.chSerialNumber) == serial)
            out = *pRecord;
    }
}

int QVirtualCamMainWidget::FindDeviceRow(QString serial)
{
    // Row 0 answers for a serial number that no row holds.
    int nFound = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row) {
        const QTableWidgetItem* pItem = m_pDeviceTable->item(row, 0);
        if (!m_pDeviceTable->isRowHidden(row) && pItem && pItem->data(kSerialRole).toString() == serial)
            nFound = row;
    }
    return nFound;
}

void QVirtualCamMainWidget::GetCheckCamera(QVector<_XQ_CODEREADER_DEVICE_INFO_>& out)
{
    if (!m_pDeviceTable || m_pDeviceTable->rowCount() < 1)
        return;
    for (int row = 0; row < m_pDeviceTable->rowCount(); ++row) {
        if (m_pDeviceTable->isRowHidden(row))
            continue;
        const QTableWidgetItem* pItem = m_pDeviceTable->item(row, 0);
        if (!pItem)
            break;
        const QString strSerial = pItem->data(kSerialRole).toString();
        if (m_pDeviceTable->cellCheckState(row, 0) == Qt::Checked) {
            _XQ_CODEREADER_DEVICE_INFO_ record{};
            FindDeviceInfo(strSerial, record);
            qInfo().noquote() << collect::DeviceText(record.stGigE.chSerialNumber);
            out.append(record);
        }
    }
}

void QVirtualCamMainWidget::onCellCheckStateChanged(int nRow, int nColumn)
{
    Q_UNUSED(nRow);
    Q_UNUSED(nColumn);
    int nChecked = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row)
        if (!m_pDeviceTable->isRowHidden(row) && m_pDeviceTable->cellCheckState(row, 0) == Qt::Checked)
            ++nChecked;
    if (m_mapCollectThread.isEmpty())
        m_pCollectBtn->setEnabled(nChecked >= 1);
}

void QVirtualCamMainWidget::onHeaderCheckStateChanged(int nColumn)
{
    if (!m_pDeviceTable)
        return;
    auto* pHeader = qobject_cast<CustomCheckHeaderView*>(m_pDeviceTable->horizontalHeader());
    if (!pHeader)
        return;
    const Qt::CheckState state = pHeader->checkState(0);
    if (state == Qt::PartiallyChecked)
        return;
    for (int row = 0; row < m_pDeviceTable->rowCount(); ++row) {
        const QTableWidgetItem* pItem = m_pDeviceTable->item(row, 0);
        if (m_pDeviceTable->isRowHidden(row) || !pItem)
            continue;
        _XQ_CODEREADER_DEVICE_INFO_ record{};
        FindDeviceInfo(pItem->data(kSerialRole).toString(), record);
        // Asked live: a device taken by another client since start-up stays as it is.
        if (XQ_CODEREADER_IsDeviceAccessible(&record, kCollectAccessMode))
            m_pDeviceTable->setCellCheckState(row, nColumn, state, false);
    }
}
