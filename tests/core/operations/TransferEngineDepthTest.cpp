// Trees deeper than the process has descriptors for folders.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include "TransferTestSupport.h"
#include "operations/TransferEngine.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::entriesBelow;
using test::SmallTmpfs;
using test::TempTree;

/// Lowers this process's soft limit of open files while it lives.
class LoweredFileLimit {
public:
    explicit LoweredFileLimit(rlim_t soft)
    {
        ::getrlimit(RLIMIT_NOFILE, &saved_);
        struct rlimit lowered = saved_;
        lowered.rlim_cur = soft;
        lowered_ = ::setrlimit(RLIMIT_NOFILE, &lowered) == 0;
    }
    ~LoweredFileLimit()
    {
        if (lowered_)
            ::setrlimit(RLIMIT_NOFILE, &saved_);
    }
    LoweredFileLimit(const LoweredFileLimit&) = delete;
    LoweredFileLimit& operator=(const LoweredFileLimit&) = delete;
    [[nodiscard]] bool lowered() const { return lowered_; }

private:
    struct rlimit saved_ {};
    bool lowered_ = false;
};

// levels folders one in another, each with a file: "d/f", "d/d/f", …
void makeDeepTree(TempTree& tree, const std::string& top, int levels)
{
    std::string path = top;
    for (int level = 0; level < levels; ++level) {
        path += "/d";
        tree.file(path + "/f", std::to_string(level));
    }
}

struct Outcome {
    OperationReport report;
    OperationProgress progress;
};

// Runs one engine with the soft limit of open files lowered to `limit` (the check afterwards
// walks with no such limit).
Outcome run(TransferEngine::Kind kind, const fs::path& source, const fs::path& destination, rlim_t limit)
{
    LoweredFileLimit lowered(limit);
    EXPECT_TRUE(lowered.lowered());
    CancellationToken token;
    OperationProgressTracker progress;
    TransferEngine engine(kind, {source}, destination, token, progress);
    Outcome outcome{engine.run(), {}};
    outcome.progress = progress.snapshot();
    return outcome;
}

TEST(TransferEngineDepth, ATreeDeeperThanTheDescriptorLimitIsCopiedMovedAndCountedWhole)
{
    constexpr int levels = 300;
    TempTree tree;
    TempTree other("/dev/shm");
    makeDeepTree(tree, "src", levels);
    const auto expected = entriesBelow(tree / "src");
    const auto entries = static_cast<std::int64_t>(expected.size()) + 1;
    tree.folder("copy");

    const auto copied = run(TransferEngine::Kind::copy, tree / "src", tree / "copy", 200);
    ASSERT_TRUE(copied.report.failures.empty()) << copied.report.failures[0].message();
    EXPECT_TRUE(copied.report.isCompleteSuccess());
    EXPECT_EQ(entriesBelow(tree / "copy/src"), expected);
    EXPECT_EQ(copied.progress.totalItems, entries);
    EXPECT_EQ(copied.progress.completedItems, entries);

    // Across volumes: copied, then removed from the deepest entry up.
    const auto moved = run(TransferEngine::Kind::move, tree / "copy/src", other.root(), 200);
    ASSERT_TRUE(moved.report.failures.empty()) << moved.report.failures[0].message();
    EXPECT_EQ(entriesBelow(other / "src"), expected);
    EXPECT_FALSE(tree.exists("copy/src"));
    ASSERT_EQ(moved.report.undoChanges.size(), 1U);
    const auto* change = std::get_if<UndoChange::Moved>(&moved.report.undoChanges[0].change);
    ASSERT_NE(change, nullptr);
    EXPECT_EQ(change->to, other / "src");
}

TEST(TransferEngineDepth, ADeepCopyThatRunsOutOfRoomIsRemovedWhole)
{
    constexpr int levels = 300;
    TempTree tree;
    // Room for the bytes but not for the entries: the copy fails far down the tree, and all of it
    // must go again.
    SmallTmpfs volume(tree / "small", "8m,nr_inodes=400");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    makeDeepTree(tree, "src", levels);

    const auto outcome = run(TransferEngine::Kind::copy, tree / "src", tree / "small", 200);

    ASSERT_TRUE(outcome.report.abortReason.has_value());
    EXPECT_EQ(*outcome.report.abortReason,
              "The destination volume is full (No space left on device). Remaining items were not processed.");
    EXPECT_TRUE(outcome.report.failures.empty()) << outcome.report.failures[0].message();
    EXPECT_TRUE(entriesBelow(tree / "small").empty());
    EXPECT_TRUE(outcome.report.undoChanges.empty());
}

} // namespace
} // namespace orbisk
