// The checks a device's description passes before Aravis sees it: URL
// register texts and zipped descriptions, hostile ones as tables.
#include "DescriptionCheck.h"
#include "ZipBuilder.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using xqtest::Bytes;
using xqtest::makeZip;
using xqtest::putLe;
using xqtest::Zip;

TEST(DescriptionUrl, onlyTheDevicesOwnMemoryWithinTheCapIsAccepted)
{
    // The reason each refusal gives: "" for accepted URLs.
    constexpr char kScheme[] = "scheme";
    constexpr char kForm[] = "not of the form";
    constexpr char kNumber[] = "not a 32-bit hex number";
    constexpr char kSize[] = "size";
    const struct {
        const char* url;
        const char* refusal;
    } cases[] = {
        {"Local:QVX.zip;10000;2a4f", ""},
        {"local:QVX.xml;0x10000;0x2A4F?SchemaVersion=1.1.0", ""},
        {"File:///dev/zero;0;10000000", kScheme},
        {"file:/etc/passwd", kScheme},
        {"Http://vendor.example/QVX.xml", kScheme},
        {"sftp://host/QVX.zip;0;100", kScheme},
        {"garbage", kScheme},
        {"", kScheme},
        {"Local:QVX.zip", kForm},
        {"Local:QVX.zip;10000", kForm},
        {"Local:QVX.zip;10000;200;5", kForm},
        {"Local:QVX.zip;10000;;200", kForm},
        {"Local:../QVX.zip;10000;200", kForm},
        {"Local: QVX.zip;10000;200", kForm},
        {"Local:;10000;200", kForm},
        {"Local:QVX.zip;1x000;200", kNumber},
        {"Local:QVX.zip;10000;10000000", kSize}, // 256 MiB
        {"Local:QVX.zip;10000;0", kSize},
        {"Local:QVX.zip;FFFFFF00;200", kSize}, // beyond the address space
    };
    for (const auto& c : cases) {
        std::string reason;
        const auto place = xq::parseLocalUrl(c.url, reason);
        EXPECT_EQ(place.has_value(), !*c.refusal) << c.url << ": " << reason;
        EXPECT_NE(reason.find(c.refusal), std::string::npos) << c.url << ": " << reason;
    }
    std::string reason;
    const auto place = xq::parseLocalUrl("local:QVX.zip;0x10000;0x2A4F?SchemaVersion=1.1.0", reason);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->address, 0x10000u);
    EXPECT_EQ(place->size, 0x2A4Fu);
    EXPECT_TRUE(place->zipped);
    EXPECT_EQ(xq::urlRegisterText({'L', 'o', 0, 'x'}), "Lo");

    const char* first = "Local:QVX.zip;10000;200";
    for (const char* harmless : {"", first, "http://vendor.example/manual"})
        EXPECT_TRUE(xq::isHarmlessSecondUrl(harmless, first)) << harmless;
    for (const char* hostile : {"File:/dev/zero", "https://vendor.example/x.xml", "Local:other.zip;0;10"})
        EXPECT_FALSE(xq::isHarmlessSecondUrl(hostile, first)) << hostile;
}

TEST(ZippedDescription, malformedOversizedAndLyingArchivesAreRefusedBeforeAnythingUnpacksThem)
{
    const std::string xml = "<RegisterDescription>" + std::string(4000, ' ') + "</RegisterDescription>";
    struct Case {
        const char* name;
        bool deflate;
        std::function<void(Zip&)> spoil;
        bool accepted;
    };
    const Case cases[] = {
        {"deflated", true, [](Zip&) {}, true},
        {"stored", false, [](Zip&) {}, true},
        {"directory offset beyond the file", true, [](Zip& z) { putLe(z.bytes, z.end + 16, 0xFFFFFF00, 4); }, false},
        {"directory size beyond the file", true, [](Zip& z) { putLe(z.bytes, z.end + 12, 0x7FFFFFFF, 4); }, false},
        {"truncated", true, [](Zip& z) { z.bytes.resize(z.bytes.size() - 10); }, false},
        {"cut before the directory", true, [](Zip& z) { z.bytes.resize(z.directory); }, false},
        {"two entries", true, [](Zip& z) { putLe(z.bytes, z.end + 8, 2, 2), putLe(z.bytes, z.end + 10, 2, 2); }, false},
        {"65535 entries", true, [](Zip& z) { putLe(z.bytes, z.end + 8, 0xFFFF, 2), putLe(z.bytes, z.end + 10, 0xFFFF, 2); }, false},
        {"entry counts disagree", true, [](Zip& z) { putLe(z.bytes, z.end + 8, 0, 2); }, false},
        {"name length past the directory", true, [](Zip& z) { putLe(z.bytes, z.directory + 28, 0xFFFF, 2); }, false},
        {"local header offset beyond the file", true, [](Zip& z) { putLe(z.bytes, z.directory + 42, 0x7FFFFFF0, 4); }, false},
        {"local header missing", true, [](Zip& z) { z.bytes[0] = 'X'; }, false},
        {"packed size past the data", true,
         [](Zip& z) { putLe(z.bytes, z.directory + 20, 0xFFFFFF, 4), putLe(z.bytes, 18, 0xFFFFFF, 4); }, false},
        {"wrong CRC", true, [](Zip& z) { z.bytes[z.directory + 16] ^= 1, z.bytes[14] ^= 1; }, false},
        {"corrupt deflate data", true, [](Zip& z) { z.bytes[36] ^= 0xFF, z.bytes[40] ^= 0xFF; }, false},
        {"unpacked size understated", true,
         [](Zip& z) { putLe(z.bytes, z.directory + 24, 100, 4), putLe(z.bytes, 22, 100, 4); }, false},
        {"encrypted", true, [](Zip& z) { z.bytes[z.directory + 8] |= 1, z.bytes[6] |= 1; }, false},
        {"only the local header says encrypted", true, [](Zip& z) { z.bytes[6] |= 1; }, false},
        // Streamed archives leave the local sizes to a descriptor after the data.
        {"sizes in a data descriptor", true,
         [](Zip& z) { z.bytes[6] |= 8, putLe(z.bytes, 14, 0, 4), putLe(z.bytes, 18, 0, 4), putLe(z.bytes, 22, 0, 4); }, true},
        {"method other than stored or deflated", true,
         [](Zip& z) { putLe(z.bytes, z.directory + 10, 12, 2), putLe(z.bytes, 8, 12, 2); }, false},
        {"comment after the end record", true, [](Zip& z) { z.bytes.push_back(0), z.bytes[z.end + 20] = 1; }, false},
    };
    for (const Case& c : cases) {
        Zip zip = makeZip(xml, c.deflate);
        c.spoil(zip);
        std::string reason;
        EXPECT_EQ(xq::isSafeZippedDescription(zip.bytes, xq::kMaxDescriptionBytes, reason), c.accepted)
            << c.name << ": " << reason;
    }

    // A bomb: 17 MiB of blanks pack into a few KiB; its stated size is over
    // the cap, and a smaller stated size does not make it unpack further.
    Zip bomb = makeZip(std::string(17u << 20, ' '), true);
    std::string reason;
    EXPECT_FALSE(xq::isSafeZippedDescription(bomb.bytes, xq::kMaxDescriptionBytes, reason));
    putLe(bomb.bytes, bomb.directory + 24, 1u << 20, 4);
    putLe(bomb.bytes, 22, 1u << 20, 4);
    EXPECT_FALSE(xq::isSafeZippedDescription(bomb.bytes, xq::kMaxDescriptionBytes, reason));
}

} // namespace
