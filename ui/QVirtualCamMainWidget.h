#pragma once
// The tool's only window: the table of discovered code readers with the
// collect workflow on the left, the virtual cameras on the right.

#include "CollectJobs.h"
#include "CustomMainWindow.h"
#include "XqCodeReaderCtrl.h"

#include <QString>
#include <QVector>

class CustomComboBox;
class CustomLabel;
class CustomListWidget;
class CustomPushButton;
class CustomTableWidget;
class QHBoxLayout;
class QSettings;
class QSplitter;
class QVBoxLayout;

class QVirtualCamMainWidget : public CustomMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY(QVirtualCamMainWidget)

public:
    explicit QVirtualCamMainWidget(QWidget* parent = nullptr);
    ~QVirtualCamMainWidget() override;

    bool Init();
    bool InitUI();
    bool InitConnect();
    bool InitLayout();
    void RetranslateUI();

protected:
    void customEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, long* result) override;
    void changeEvent(QEvent* event) override;

private slots:
    void OnCloseBtnClicked();
    void OnOkBtnClicked();
    void OnButtonClicked(int nIndex);
    void OnCollectBtn();
    void OnAddVirtualBtn();
    void OnUpdateCollectProgress(int precent);
    void UpdateVirtualComBobox();
    void OnDeleteVirtualCamera();
    void UpdateVirtualCameraList(QString strDeviceModel, QString strSerialNumber);
    void UpDateCollectProgress(QString strSerialNumber, int nPercent);
    void OnCollectStatus(QString strSerialNumber, QString nInfo);
    void OnCollectFinish(QString strSerialNumber, QString nInfo);
    void OnCustomContextMenuRequested(const QPoint& pos);
    void onCellCheckStateChanged(int nRow, int nColumn);
    void onHeaderCheckStateChanged(int nColumn);
    void OnHelpDocClicked();

private:
    // Columns of the device table; unscoped, as they feed the table's
    // int-based interface.
    enum DeviceColumn { kCheckColumn, kModelColumn, kAddressColumn, kVersionColumn, kStatusColumn };
    // The table starts with empty rows that devices fill before new rows
    // are added.
    static constexpr int kPlaceholderRows = 13;
    static constexpr int kDeviceRowHeight = 38;

    // Device discovery and the device table.
    void InitDeviceTable();
    void FillDeviceRow(int row, const _XQ_CODEREADER_DEVICE_INFO_& record);
    int GetDeviceRowCount();
    void FindDeviceInfo(QString serial, _XQ_CODEREADER_DEVICE_INFO_& out);
    int FindDeviceRow(QString serial);
    void GetCheckCamera(QVector<_XQ_CODEREADER_DEVICE_INFO_>& out);

    // The collect workflow. Quitting waits this long for the jobs; a job
    // still running then is left to end with the process.
    static constexpr int kStopWaitMs = 3000;
    void RemoveCollectThread(QString serial);
    void DeleteCollectedFiles(QString serial);
    void StopAllCollect();

    // The collected-device selector and the virtual camera list.
    void InitComBoboxInfo();
    void InitVirtualCameraList();
    // Writes a new camera's configuration group; warns and returns false
    // when the store's file cannot be written.
    bool WriteVirtualCameraConfig(QString strGroup, QString strModel);

    CustomTableWidget* m_pDeviceTable = nullptr;
    CustomPushButton* m_pCollectBtn = nullptr;
    CustomComboBox* m_pVirtualComboBox = nullptr;
    CustomPushButton* m_pAddVirtualBtn = nullptr;
    CustomListWidget* m_pVirtualCameraList = nullptr;
    QHBoxLayout* m_pTopLayout = nullptr;
    QVBoxLayout* m_pLeftLayout = nullptr;
    QHBoxLayout* m_pVirtualTopLayout = nullptr;
    QVBoxLayout* m_pRightLayout = nullptr;
    QSplitter* m_pSplitter = nullptr;
    QSettings* m_pVirtualCamSettings = nullptr;
    // The collection jobs by serial number: the window's only record of
    // running work. Devices are collected all at once; the window lets go
    // of a job when it has shown the job's outcome.
    collect::CollectJobs m_mapCollectThread{
        collect::CollectRules{collect::ModelTurns::AllAtOnce, collect::JobRelease::ByFrontEnd, kStopWaitMs}};
    CustomPushButton* m_pHelpDocBtn = nullptr;
    CustomLabel* m_pWarningLabel = nullptr;
    _XQ_CODEREADER_DEVICE_INFO_LIST_ m_stDeviceList{};
};
