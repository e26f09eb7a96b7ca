// Which discovered devices are listed, and how their fields read.

#include "DeviceListing.h"

#include <QtTest>

#include <cstring>

using namespace collect;

namespace {

XQ_CODEREADER_DEVICE_INFO record(const char* serial, const char* model)
{
    XQ_CODEREADER_DEVICE_INFO info{};
    std::strncpy(reinterpret_cast<char*>(info.stGigE.chSerialNumber), serial, sizeof info.stGigE.chSerialNumber);
    std::strncpy(reinterpret_cast<char*>(info.stGigE.chModelName), model, sizeof info.stGigE.chModelName);
    return info;
}

} // namespace

class DeviceListingTest : public QObject
{
    Q_OBJECT

private slots:
    void codeReadersAreListed_virtualCamerasAndOtherDevicesAreNot()
    {
        QVERIFY(IsListedCodeReader(record("QD24A10000", "QVX-ID2040M")));
        QVERIFY(!IsListedCodeReader(record("AB12Vir34", "QVX-ID2040M")));
        QVERIFY(IsListedCodeReader(record("AB12vir34", "QVX-ID2040M")));  // case-sensitive
        QVERIFY(!IsListedCodeReader(record("QD1", "QVX-id2040M")));
        QVERIFY(!IsListedCodeReader(record("QD1", "Fake camera")));
        QVERIFY(!IsListedCodeReader(record("", "")));
    }

    void fieldsFilledToTheirEnd_areBoundedAt64Bytes()
    {
        XQ_CODEREADER_DEVICE_INFO info{};
        std::memset(info.stGigE.chModelName, 'I', sizeof info.stGigE.chModelName);
        QCOMPARE(DeviceText(info.stGigE.chModelName).size(), 64);
    }

    void addressText_readsTheMostSignificantByteFirst()
    {
        QCOMPARE(IpAddressText(0x0A403402u), QString("10.64.52.2"));
        QCOMPARE(IpAddressText(0x7F000002u), QString("127.0.0.2"));
        QCOMPARE(IpAddressText(0u), QString("0.0.0.0"));
        QCOMPARE(IpAddressText(0xFFFFFFFFu), QString("255.255.255.255"));
    }
};

QTEST_GUILESS_MAIN(DeviceListingTest)
#include "tst_devicelisting.moc"
