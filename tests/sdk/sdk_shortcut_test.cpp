// Which feature shapes the camera SDK reads straight from their register,
// and what it learns of the register. A shape that silently loses its
// shortcut still reads correctly through the node graph, only slower, so
// the agreement tests against the simulator cannot catch it; this does.
#include "FeatureShortcut.h"
#include "GObjectPtr.h"
#include "SdkTestHelpers.h"
#include "XQSdkDefs.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using Kind = xq::FeatureShortcut::Kind;

class FeatureShortcutShapes : public ::testing::Test {
protected:
    void SetUp() override
    {
        // One feature of each shape the shortcut knows, and the rules around them.
        const std::string description = xqtest::readFile(QUORVEX_TEST_DATA_DIR "/data/feature_shapes.xml");
        ASSERT_FALSE(description.empty()) << "feature_shapes.xml is missing";
        m_description.reset(arv_gc_new(nullptr, description.data(), description.size()));
        ASSERT_TRUE(m_description);
    }

    std::optional<xq::FeatureShortcut> shortcutOf(const char* name)
    {
        ArvGcNode* node = arv_gc_get_node(m_description.get(), name);
        EXPECT_TRUE(node && ARV_IS_GC_FEATURE_NODE(node)) << name;
        if (!node || !ARV_IS_GC_FEATURE_NODE(node))
            return std::nullopt;
        return xq::featureShortcutFor(ARV_GC_FEATURE_NODE(node));
    }

    xq::GObjectPtr<ArvGc> m_description;
};

TEST_F(FeatureShortcutShapes, plainShapesReadThroughTheirRegister)
{
    const auto gain = shortcutOf("Gain");
    ASSERT_TRUE(gain) << "a Float with a display notation and precision";
    EXPECT_EQ(gain->kind, Kind::Float);
    EXPECT_EQ(gain->place.address, 0x100u);
    EXPECT_EQ(gain->place.length, 8u);
    EXPECT_TRUE(gain->place.bigEndian);
    EXPECT_EQ(gain->accessMode, unsigned(XQ_AM_RW));

    const auto enable = shortcutOf("Enable");
    ASSERT_TRUE(enable);
    EXPECT_EQ(enable->kind, Kind::Boolean);
    EXPECT_EQ(enable->onValue, 3);
    EXPECT_FALSE(enable->place.bigEndian) << "GenICam registers are little-endian unless they say otherwise";

    const auto mode = shortcutOf("Mode");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->kind, Kind::Enumeration);
    EXPECT_EQ(mode->entryValues, (std::vector<std::int64_t>{0, 1, 7})) << "entries in description order";

    const auto label = shortcutOf("Label");
    ASSERT_TRUE(label);
    EXPECT_EQ(label->kind, Kind::String);
    EXPECT_EQ(label->place.length, 64u);
    EXPECT_EQ(label->accessMode, unsigned(XQ_AM_RO));
}

TEST_F(FeatureShortcutShapes, rulesThatTheSdkEvaluatesKeepTheShortcut)
{
    const auto width = shortcutOf("Width");
    ASSERT_TRUE(width) << "availability from a formula over plain registers";
    EXPECT_TRUE(width->place.isSigned);
    ASSERT_TRUE(width->availability);
    ASSERT_EQ(width->availability->variables.size(), 1u);
    EXPECT_EQ(width->availability->variables[0].name, "M");
    EXPECT_EQ(width->availability->variables[0].place.address, 0x10Cu);
    EXPECT_TRUE(width->availability->formula);

    const auto line = shortcutOf("LineLevel");
    ASSERT_TRUE(line) << "a register indexed by one selector";
    EXPECT_EQ(line->place.address, 0x300u) << "the fixed part only; the index is asked at each read";
    EXPECT_NE(line->place.index, nullptr);
}

TEST_F(FeatureShortcutShapes, aLockRuleLeavesTheReadToTheNodeGraph)
{
    EXPECT_FALSE(shortcutOf("Locked"));
}

} // namespace
