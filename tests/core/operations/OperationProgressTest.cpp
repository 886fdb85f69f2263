#include <gtest/gtest.h>

#include <thread>

#include "operations/OperationProgressTracker.h"

namespace orbisk {
namespace {

TEST(OperationProgressTracker, ReadersNeverSeeHalfAnUpdate)
{
    OperationProgressTracker tracker;
    EXPECT_EQ(tracker.snapshot(), OperationProgress{});
    EXPECT_EQ(tracker.snapshot().phase, OperationProgress::Phase::preparing);

    static constexpr int updates = 20000;
    std::jthread worker([&] {
        tracker.update([](OperationProgress& p) {
            p.phase = OperationProgress::Phase::working;
            p.totalItems = updates;
        });
        for (int i = 1; i <= updates; ++i) {
            tracker.update([i](OperationProgress& p) {
                p.completedItems = i;
                p.completedBytes = std::int64_t{i} * 4096;
                p.setCurrentPath(i % 2 ? "/odd/path/that/is/long" : "/even");
            });
        }
        tracker.update([](OperationProgress& p) { p.phase = OperationProgress::Phase::finished; });
    });
    OperationProgress last;
    do {
        last = tracker.snapshot();
        // Fields changed in one update are seen together.
        ASSERT_EQ(last.completedBytes, last.completedItems * 4096);
        if (last.completedItems > 0) {
            ASSERT_TRUE(last.currentPath);
            ASSERT_EQ(*last.currentPath, last.completedItems % 2 ? "/odd/path/that/is/long" : "/even");
        }
    } while (last.phase != OperationProgress::Phase::finished);
    EXPECT_EQ(last.completedItems, updates);
    EXPECT_EQ(last.totalItems, updates);
}

} // namespace
} // namespace orbisk
