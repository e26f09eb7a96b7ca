// Device discovery and the device table.

#include "QVirtualCamMainWidget.h"

#include "CustomCheckHeaderView.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "DeviceListing.h"

#include <QDebug>

#include <cstdio>

namespace {

constexpr int kSerialRole = Qt::UserRole + 1;

} // namespace

void QVirtualCamMainWidget::InitDeviceTable()
{
    const int ret = collect::enumerateDevices(m_stDeviceList);
    if (ret != XQ_OK) {
        std::printf("Enum Devices fail! nRet [0x%x]\n", static_cast<unsigned int>(ret));
        std::fflush(stdout);
        return;
    }
    if (!m_pDeviceTable || m_stDeviceList.nDeviceNum == 0)
        return;

    for (const _XQ_CODEREADER_DEVICE_INFO_& record : collect::recordsOf(m_stDeviceList)) {
        // Virtual cameras of the store and devices that are no code readers.
        if (!collect::isListedCodeReader(record))
            continue;

        const int row = GetDeviceRowCount();
        if (row >= kPlaceholderRows) {
            m_pDeviceTable->insertRow(row);
            m_pDeviceTable->setRowHeight(row, kDeviceRowHeight);
        }
        for (int column = 0; column < m_pDeviceTable->columnCount(); ++column)
            m_pDeviceTable->setItem(row, column, new QTableWidgetItem(0));
        m_pDeviceTable->setCheckBoxVisible(row, kCheckColumn, true);
        FillDeviceRow(row, record);
        if (row == 0)
            m_pDeviceTable->selectRow(0);
    }
}

void QVirtualCamMainWidget::FillDeviceRow(int row, const _XQ_CODEREADER_DEVICE_INFO_& record)
{
    if (!m_pDeviceTable || row < 0 || row >= m_pDeviceTable->rowCount())
        return;
    const collect::DeviceEntry device = collect::describeDevice(record);
    if (!device.accessible)
        m_pDeviceTable->setCheckBoxEnable(row, kCheckColumn, false);

    QTableWidgetItem* serialItem = m_pDeviceTable->item(row, kCheckColumn);
    if (!serialItem)
        return;
    serialItem->setData(kSerialRole, device.serial);

    if (QTableWidgetItem* modelItem = m_pDeviceTable->item(row, kModelColumn)) {
        modelItem->setText(device.model);
        modelItem->setToolTip(device.model);
    }
    QTableWidgetItem* ipItem = m_pDeviceTable->item(row, kAddressColumn);
    QTableWidgetItem* versionItem = m_pDeviceTable->item(row, kVersionColumn);
    if (ipItem && versionItem) {
        versionItem->setText(device.version);
        versionItem->setToolTip(device.version);
        if (QTableWidgetItem* statusItem = m_pDeviceTable->item(row, kStatusColumn)) {
            statusItem->setText(QString());
            m_pDeviceTable->setProgressBarVisible(row, kStatusColumn, false, 0, 100);
        }
        ipItem->setText(device.address);
        ipItem->setToolTip(device.address);
    }
}

int QVirtualCamMainWidget::GetDeviceRowCount()
{
    int count = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row)
        if (m_pDeviceTable->IsHaveCheckBox(row, kCheckColumn))
            ++count;
    return count;
}

void QVirtualCamMainWidget::FindDeviceInfo(QString serial, _XQ_CODEREADER_DEVICE_INFO_& out)
{
    for (unsigned int i = 0; i < m_stDeviceList.nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const _XQ_CODEREADER_DEVICE_INFO_* record = m_stDeviceList.pDeviceInfo[i];
        if (record && collect::deviceText(record->stGigE.chSerialNumber) == serial)
            out = *record;
    }
}

int QVirtualCamMainWidget::FindDeviceRow(QString serial)
{
    // Row 0 answers for a serial number that no row holds.
    int found = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row) {
        const QTableWidgetItem* item = m_pDeviceTable->item(row, kCheckColumn);
        if (!m_pDeviceTable->isRowHidden(row) && item && item->data(kSerialRole).toString() == serial)
            found = row;
    }
    return found;
}

void QVirtualCamMainWidget::GetCheckCamera(QVector<_XQ_CODEREADER_DEVICE_INFO_>& out)
{
    if (!m_pDeviceTable || m_pDeviceTable->rowCount() < 1)
        return;
    for (int row = 0; row < m_pDeviceTable->rowCount(); ++row) {
        if (m_pDeviceTable->isRowHidden(row))
            continue;
        const QTableWidgetItem* item = m_pDeviceTable->item(row, kCheckColumn);
        if (!item)
            break;
        const QString serial = item->data(kSerialRole).toString();
        if (m_pDeviceTable->cellCheckState(row, kCheckColumn) == Qt::Checked) {
            _XQ_CODEREADER_DEVICE_INFO_ record{};
            FindDeviceInfo(serial, record);
            qInfo().noquote() << collect::deviceText(record.stGigE.chSerialNumber);
            out.append(record);
        }
    }
}

void QVirtualCamMainWidget::onCellCheckStateChanged(int nRow, int nColumn)
{
    Q_UNUSED(nRow);
    Q_UNUSED(nColumn);
    int checked = 0;
    for (int row = 0; m_pDeviceTable && row < m_pDeviceTable->rowCount(); ++row)
        if (!m_pDeviceTable->isRowHidden(row) && m_pDeviceTable->cellCheckState(row, kCheckColumn) == Qt::Checked)
            ++checked;
    if (m_mapCollectThread.isEmpty())
        m_pCollectBtn->setEnabled(checked >= 1);
}

void QVirtualCamMainWidget::onHeaderCheckStateChanged(int nColumn)
{
    if (!m_pDeviceTable)
        return;
    auto* header = qobject_cast<CustomCheckHeaderView*>(m_pDeviceTable->horizontalHeader());
    if (!header)
        return;
    const Qt::CheckState state = header->checkState(kCheckColumn);
    if (state == Qt::PartiallyChecked)
        return;
    for (int row = 0; row < m_pDeviceTable->rowCount(); ++row) {
        const QTableWidgetItem* item = m_pDeviceTable->item(row, kCheckColumn);
        if (m_pDeviceTable->isRowHidden(row) || !item)
            continue;
        _XQ_CODEREADER_DEVICE_INFO_ record{};
        FindDeviceInfo(item->data(kSerialRole).toString(), record);
        // Asked live: a device taken by another client since start-up stays as it is.
        if (collect::isFreeToCollect(record))
            m_pDeviceTable->setCellCheckState(row, nColumn, state, false);
    }
}
