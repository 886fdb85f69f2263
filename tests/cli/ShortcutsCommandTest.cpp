#include <gtest/gtest.h>

#include "shortcuts/ShortcutCatalog.h"
#include "support/Processes.h"

namespace orbisk {
namespace {

TEST(ShortcutsCommand, PrintsTheShortcutDocumentExactly)
{
    const auto printed = test::run({test::binary("orbisk-cli").string(), "shortcuts"});
    EXPECT_EQ(printed.exitCode, 0) << printed.err;
    EXPECT_EQ(printed.out, ShortcutCatalog::markdown());

    const auto extra = test::run({test::binary("orbisk-cli").string(), "shortcuts", "--extra"});
    EXPECT_EQ(extra.exitCode, 2);
    EXPECT_TRUE(extra.out.empty());
}

} // namespace
} // namespace orbisk
