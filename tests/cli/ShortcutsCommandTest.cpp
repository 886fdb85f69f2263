#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/Processes.h"

namespace orbisk {
namespace {

TEST(ShortcutsCommand, RegeneratesTheCommittedDocumentAndTellsWhenItCannotWrite)
{
    const auto cli = test::binary("orbisk-cli").native();

    // The document says it is made by this command; its bytes must come out again.
    std::ifstream file(ORBISK_SOURCE_DIR "/docs/SHORTCUTS.md", std::ios::binary);
    ASSERT_TRUE(file);
    const std::string committed((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const auto printed = test::run({cli, "shortcuts"});
    EXPECT_EQ(printed.exitCode, 0) << printed.err;
    EXPECT_EQ(printed.out, committed);

    const auto extra = test::run({cli, "shortcuts", "--extra"});
    EXPECT_EQ(extra.exitCode, 2);
    EXPECT_TRUE(extra.out.empty());

    // A redirect into a full disk must not pass for a regenerated document.
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    const auto full = test::run({"/bin/sh", "-c", "exec \"$0\" shortcuts > /dev/full", cli});
    EXPECT_EQ(full.exitCode, 1) << full.err;
}

} // namespace
} // namespace orbisk
