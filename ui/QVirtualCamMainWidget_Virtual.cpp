// The collected-device selector, creating virtual cameras and their list.
// The store's logic lives in store/; these slots only connect it to the
// widgets.

#include "QVirtualCamMainWidget.h"

#include "AppFolders.h"
#include "CustomComboBox.h"
#include "CustomListWidget.h"
#include "CustomMenu.h"
#include "CustomMessageBox.h"
#include "FileOperations.h"
#include "StorePaths.h"
#include "SupportedModels.h"
#include "VirtualCameraActions.h"
#include "VirtualCameraConfig.h"
#include "VirtualCameraCreation.h"
#include "VirtualCameraList.h"

#include <QAction>
#include <QCursor>
#include <QDir>
#include <QListWidgetItem>
#include <QSettings>
#include <QtDebug>

namespace {

constexpr int kGroupRole = Qt::UserRole + 2;
constexpr int kModelRole = Qt::UserRole + 3;

} // namespace

void QVirtualCamMainWidget::InitComBoboxInfo()
{
    bool bRootExists = false;
    const QString strRoot = GetVirtualCameraRoot();
    const QStringList models = VirtualStore::listCollectedModels(strRoot, bRootExists);
    if (!bRootExists)
        qInfo() << "File is not exist.";
    if (m_pVirtualComboBox) {
        m_pVirtualComboBox->addItems(models);
        // An installed suite keeps collections per user: say where.
        m_pVirtualComboBox->setToolTip(tr("Collections are kept in %1").arg(QDir::cleanPath(strRoot)));
    }
}

void QVirtualCamMainWidget::InitVirtualCameraList()
{
    if (!m_pVirtualCamSettings)
        m_pVirtualCamSettings = VirtualStore::openVirtualCameraSettings(VirtualStore::configFilePath(), this);
    const QVector<VirtualStore::VirtualCameraEntry> entries =
        VirtualStore::readVirtualCameraList(*m_pVirtualCamSettings);
    for (const VirtualStore::VirtualCameraEntry& entry : entries)
        UpdateVirtualCameraList(entry.model, entry.group);
}

bool QVirtualCamMainWidget::WriteVirtualCameraConfig(QString strGroup, QString strModel)
{
    const QString strPath = VirtualStore::configFilePath();
    if (!VirtualStore::isConfigFileWritable(strPath)) {
        CustomMessageBox::warning(this, tr("The configuration file fails to be written. Start the tool as an administrator!"),
                                  tr("Prompt"), CustomMessageBox::ConfirmButton);
        return false;
    }
    if (!m_pVirtualCamSettings)
        m_pVirtualCamSettings = VirtualStore::openVirtualCameraSettings(strPath, this);
    if (!VirtualStore::writeVirtualCameraGroupToDisk(*m_pVirtualCamSettings, strGroup, strModel)) {
        qInfo() << "Writing the store's configuration file failed:" << strPath;
        CustomMessageBox::warning(this, tr("The configuration file fails to be written. Start the tool as an administrator!"),
                                  tr("Prompt"), CustomMessageBox::ConfirmButton);
        return false;
    }
    return true;
}

void QVirtualCamMainWidget::OnAddVirtualBtn()
{
    const QString strText = m_pVirtualComboBox ? m_pVirtualComboBox->currentText() : QString();
    const std::optional<VirtualStore::VirtualCameraPlan> plan =
        VirtualStore::planFreshVirtualCamera(strText, GetVirtualCameraRoot());
    if (!plan) {
        if (!strText.isEmpty())
            qInfo() << "Model name cannot name a camera folder:" << strText;
        return;
    }
    const VirtualStore::CreationOutcome outcome = VirtualStore::createVirtualCamera(
        *plan,
        [this](const QString& strGroup, const QString& strModel) { return WriteVirtualCameraConfig(strGroup, strModel); },
        [this] { return m_pVirtualCamSettings; });
    if (outcome == VirtualStore::CreationOutcome::GroupNotWritten)
        return;
    if (outcome == VirtualStore::CreationOutcome::CopyIncomplete) {
        qInfo() << "Copying" << plan->sourceFolder << "into" << plan->cameraFolder << "failed";
        CustomMessageBox::warning(this, tr("Copying the collected files failed. The virtual camera was not created!"),
                                  tr("Prompt"), CustomMessageBox::ConfirmButton);
        return;
    }
    UpdateVirtualCameraList(plan->model, plan->group);
}

void QVirtualCamMainWidget::UpdateVirtualComBobox()
{
    if (!m_pVirtualComboBox)
        return;
    m_pVirtualComboBox->clear();
    bool bExists = false;
    const QStringList names = VirtualStore::listCollectedModels("VirtualCamera/Cameras", bExists);
    if (!bExists)
        qInfo() << "File is not exist.";
    m_pVirtualComboBox->addItems(names);
}

void QVirtualCamMainWidget::OnDeleteVirtualCamera()
{
    QListWidgetItem* pItem = m_pVirtualCameraList ? m_pVirtualCameraList->currentItem() : nullptr;
    if (!pItem)
        return;
    const QString strGroup = pItem->data(kGroupRole).toString();
    const QString strModel = pItem->data(kModelRole).toString();
    QString strReason;
    switch (VirtualStore::deleteVirtualCamera(strGroup, strModel, m_pVirtualCamSettings, &strReason)) {
    case VirtualStore::DeletionOutcome::UnsafeGroup:
        qInfo() << "Refusing to delete a camera whose group cannot name a folder:" << strGroup;
        return;
    case VirtualStore::DeletionOutcome::HeldOpen:
        CustomMessageBox::warning(this, tr("The camera is connected, please disconnect and try again!"), tr("Prompt"),
                                  CustomMessageBox::ConfirmButton, QString());
        return;
    case VirtualStore::DeletionOutcome::OutsideStore:
        qInfo() << "Refusing to delete" << strGroup << ":" << strReason;
        CustomMessageBox::warning(this, tr("The camera's folder leads outside the store. Nothing was deleted!"),
                                  tr("Prompt"), CustomMessageBox::ConfirmButton, strReason);
        return;
    case VirtualStore::DeletionOutcome::ConfigNotWritten:
        CustomMessageBox::warning(this, tr("The configuration file fails to be written. Start the tool as an administrator!"),
                                  tr("Prompt"), CustomMessageBox::ConfirmButton);
        return;
    case VirtualStore::DeletionOutcome::Deleted:
        break;
    }
    delete m_pVirtualCameraList->takeItem(m_pVirtualCameraList->currentRow());
}

void QVirtualCamMainWidget::UpdateVirtualCameraList(QString strDeviceModel, QString strSerialNumber)
{
    if (!m_pVirtualCameraList)
        return;
    auto* pItem = new QListWidgetItem(VirtualStore::virtualCameraEntryText(strDeviceModel, strSerialNumber));
    pItem->setData(kGroupRole, strSerialNumber);
    pItem->setData(kModelRole, strDeviceModel);
    m_pVirtualCameraList->addItem(pItem);
}

void QVirtualCamMainWidget::OnCustomContextMenuRequested(const QPoint& pos)
{
    if (!m_pVirtualCameraList || !m_pVirtualCameraList->currentItem())
        return;
    auto* pMenu = new CustomMenu(m_pVirtualCameraList);
    auto* pDeleteAction = new QAction(tr("Delete"), pMenu);
    connect(pDeleteAction, &QAction::triggered, this, &QVirtualCamMainWidget::OnDeleteVirtualCamera);
    pMenu->addAction(pDeleteAction);
    pMenu->popup(m_pVirtualCameraList->mapToGlobal(pos));
    pMenu->exec(QCursor::pos());
    // A menu is made per request; once it has run it is no longer needed.
    pMenu->deleteLater();
}
