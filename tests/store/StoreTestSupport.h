#pragma once
// Helpers shared by the store's tests: collection folders on disk and file
// permissions that hold even for a privileged test user.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace StoreTest {

inline bool WriteFile(const QString& strPath, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(strPath).absolutePath());
    QFile file(strPath);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

inline QByteArray ReadFile(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A collection folder as the collection engine leaves it.
inline void MakeCollectionFolder(const QString& strFolder, const QString& strModel, int nImages = 3)
{
    WriteFile(strFolder + "/" + strModel + ".xml", "<RegisterDescription/>");
    WriteFile(strFolder + "/" + strModel + "_regfile.dat", QByteArray("registers of ") + strModel.toUtf8());
    WriteFile(strFolder + "/" + strModel + "_strRegFile.dat", "string registers");
    QByteArray csv("TriggerIndex,FrameNum,PicPath\n");
    for (int n = 1; n <= nImages; ++n) {
        WriteFile(QString("%1/Jpg/%2.jpg").arg(strFolder).arg(n), QByteArray("\xFF\xD8 frame ") + QByteArray::number(n));
        csv += "1," + QByteArray::number(n) + "," + QByteArray::number(n) + ".jpg\r\n";
    }
    WriteFile(strFolder + "/ImportInformation.csv", csv);
}

// Permission bits bind root too once the capabilities that override them
// are out of the effective set. Returns false if that could not be done.
class FilePermissionsEnforced final {
public:
    FilePermissionsEnforced()
    {
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
        for (const int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            reduced[cap / 32].effective &= ~(1u << (cap % 32));
        m_bActive = ::syscall(SYS_capset, &m_header, reduced) == 0;
    }
    ~FilePermissionsEnforced()
    {
        if (m_bActive)
            ::syscall(SYS_capset, &m_header, m_saved);
    }
    FilePermissionsEnforced(const FilePermissionsEnforced&) = delete;
    FilePermissionsEnforced& operator=(const FilePermissionsEnforced&) = delete;

    bool IsActive() const { return m_bActive; }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
    bool m_bActive = false;
};

} // namespace StoreTest
