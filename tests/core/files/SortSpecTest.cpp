#include <gtest/gtest.h>

#include "files/SortSpec.h"

namespace orbisk {
namespace {

TEST(SortSpec, StoresAsTwoKeysAndReadsItselfBack)
{
    EXPECT_EQ((SortSpec{SortColumn::size, false}).encoded(), R"({"column":"size","ascending":false})");
    for (const auto column : {SortColumn::name, SortColumn::size, SortColumn::date, SortColumn::kind}) {
        for (const bool ascending : {true, false}) {
            const SortSpec spec{column, ascending};
            SCOPED_TRACE(spec.encoded());
            EXPECT_EQ(sortColumnFromRaw(rawValue(column)), column);
            EXPECT_EQ(SortSpec::decode(spec.encoded()), spec);
        }
    }
}

TEST(SortSpec, RefusesEverythingButTheExactShape)
{
    EXPECT_EQ(SortSpec::decode(R"( {"ascending": true, "column": "kind"} )"), (SortSpec{SortColumn::kind, true}));
    const char* refused[] = {
        R"({"column":"type","ascending":true})",
        R"({"column":"Name","ascending":true})",
        R"({"column":"name","ascending":1})",
        R"({"column":"name","ascending":"true"})",
        R"({"column":"name"})",
        R"({"column":"name","ascending":true,"extra":0})",
        R"({"column":"name","column":"size","ascending":true})",
        R"({"column":null,"ascending":true})",
        R"(["name",true])",
        R"({"column":"name","ascending":true)",
        "",
        "\xFF",
    };
    for (const char* text : refused) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(SortSpec::decode(text));
    }
    EXPECT_FALSE(sortColumnFromRaw("dates"));
}

} // namespace
} // namespace orbisk
