// The generated identity of a virtual camera: the ID rule and the MAC and
// address generators with their seed-per-second behaviour.

#include "QtPrinters.h"
#include "VirtualIdentity.h"

#include <QRegularExpression>
#include <QtCore>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using namespace VirtualStore;

TEST(VirtualIdentityTest, cameraId_isTheClockInTensOfMillisecondsModuloTenDigits)
{
    ASSERT_EQ(cameraIdFromClock(1731734400123), QString("73440012"));
    ASSERT_EQ(cameraIdFromClock(1731734400129), QString("73440012"));
    ASSERT_EQ(cameraIdFromClock(1731734400130), QString("73440013"));
    ASSERT_EQ(cameraIdFromClock(1600000000005), QString("00000000"));
    ASSERT_EQ(groupNameForId("73440012"), QString("Vir73440012"));
}

TEST(VirtualIdentityTest, generators_stayInTheirRanges)
{
    const QRegularExpression mac("^[0-9A-F]{8}$");
    const QRegularExpression ip("^a4034([0-9a-f]{2})$");
    for (int n = 0; n < 50; ++n) {
        ASSERT_TRUE(mac.match(GenerateVirtualMac()).hasMatch());
        const QRegularExpressionMatch match = ip.match(GenerateVirtualIp());
        ASSERT_TRUE(match.hasMatch());
        ASSERT_TRUE(match.captured(1).toInt(nullptr, 16) <= 252);
    }
}

TEST(VirtualIdentityTest, withinOneSecond_bothGeneratorsStartFromTheSameValue)
{
    // Retry when the second changes in between: the relation holds only
    // inside one second.
    for (int nAttempt = 0; nAttempt < 20; ++nAttempt) {
        const std::time_t before = std::time(nullptr);
        std::srand(static_cast<unsigned>(before));
        const int nFirst = std::rand();
        const QString strMac = GenerateVirtualMac();
        const QString strIp = GenerateVirtualIp();
        const QString strSecondMac = GenerateVirtualMac();
        const QString strSecondIp = GenerateVirtualIp();
        if (std::time(nullptr) != before)
            continue;
        ASSERT_EQ(strMac.left(2).toInt(nullptr, 16), nFirst & 0xFF);
        // Two lowercase digits, a single one padded with "0".
        ASSERT_EQ(strIp, QString("a4034%1").arg(nFirst % 253, 2, 16, QChar('0')));
        ASSERT_EQ(strSecondMac, strMac);
        ASSERT_EQ(strSecondIp, strIp);
        return;
    }
    FAIL() << ("the clock's second changed on every attempt");
}

