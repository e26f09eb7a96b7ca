#include "VirtualIdentity.h"

#include "XqFileNames.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace VirtualStore {

namespace {

constexpr int kIdPosition = 4;
constexpr int kIdLength = 8;
constexpr int kLastOctetRange = 253;

// Seeded per call on purpose: within one second both generators start from
// the same first value, so their results line up.
void SeedFromSeconds()
{
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

} // namespace

QString cameraIdFromClock(qint64 nMSecsSinceEpoch)
{
    return QString::number(nMSecsSinceEpoch).mid(kIdPosition, kIdLength);
}

QString groupNameForId(const QString& strId)
{
    return QLatin1String(xq::names::kVirtualCameraPrefix) + strId;
}

QString GenerateVirtualMac()
{
    SeedFromSeconds();
    QString strMac;
    for (int nByte = 0; nByte < 4; ++nByte) {
        char chByte[3] = {};
        std::snprintf(chByte, sizeof chByte, "%02X", static_cast<unsigned>(std::rand()) & 0xFFu);
        strMac += QString::fromLatin1(chByte);
    }
    return strMac;
}

QString GenerateVirtualIp()
{
    SeedFromSeconds();
    const int nLastOctet = std::rand() % kLastOctetRange;
    QString strOctet = QString::number(nLastOctet, 16);
    if (strOctet.size() == 1)
        strOctet.prepend('0');
    return QStringLiteral("a4034%1").arg(strOctet.left(2));
}

} // namespace VirtualStore
