#include <gtest/gtest.h>

#include "platform/DirectoryWatcher.h"
#include "support/TempTree.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>

namespace orbisk {
namespace {

using test::TempTree;
using Event = DirectoryWatcher::Event;
namespace fs = std::filesystem;

// Long enough for a loaded machine; a test only ever waits this long when it is about to fail.
constexpr int eventWaitMilliseconds = 5000;
// How long "nothing more arrives" is given to prove itself.
constexpr int quietMilliseconds = 200;

bool readable(const DirectoryWatcher& watcher, int milliseconds)
{
    pollfd entry{watcher.descriptor(), POLLIN, 0};
    return ::poll(&entry, 1, milliseconds) == 1 && (entry.revents & POLLIN);
}

std::optional<Event> nextEvent(DirectoryWatcher& watcher)
{
    if (!readable(watcher, eventWaitMilliseconds))
        return std::nullopt;
    return watcher.readPendingEvents();
}

TEST(DirectoryWatcher, ReportsEveryKindOfChangeInsideTheFolderAsContentsChanged)
{
    const std::vector<std::pair<const char*, std::function<void(TempTree&)>>> changes = {
        {"create a file", [](TempTree& t) { t.file("watched/new.txt"); }},
        {"delete a file", [](TempTree& t) { fs::remove(t / "watched/old.txt"); }},
        {"rename inside", [](TempTree& t) { fs::rename(t / "watched/old.txt", t / "watched/renamed.txt"); }},
        {"move in", [](TempTree& t) { fs::rename(t / "outside.txt", t / "watched/outside.txt"); }},
        {"write to a file", [](TempTree& t) { std::ofstream(t / "watched/old.txt", std::ios::app) << "more"; }},
        {"change permissions", [](TempTree& t) { fs::permissions(t / "watched/old.txt", fs::perms::owner_read); }},
    };
    for (const auto& [what, change] : changes) {
        SCOPED_TRACE(what);
        TempTree tree;
        tree.file("watched/old.txt", "old");
        tree.file("outside.txt");
        auto watcher = DirectoryWatcher::open(tree / "watched");
        ASSERT_TRUE(watcher);
        EXPECT_FALSE(readable(*watcher, 0)) << "nothing happened yet";
        change(tree);
        EXPECT_EQ(nextEvent(*watcher), Event::contentsChanged);
    }
}

TEST(DirectoryWatcher, SumsUpABurstOfChangesAsOneEvent)
{
    TempTree tree;
    tree.folder("watched");
    auto watcher = DirectoryWatcher::open(tree / "watched");
    ASSERT_TRUE(watcher);
    for (int i = 0; i < 500; ++i)
        tree.file("watched/file" + std::to_string(i));
    fs::remove(tree / "watched/file7");
    EXPECT_EQ(nextEvent(*watcher), Event::contentsChanged);
    EXPECT_FALSE(readable(*watcher, 0)) << "one call drains everything that was queued";
    EXPECT_EQ(watcher->readPendingEvents(), std::nullopt) << "a call with nothing queued reports nothing";
}

TEST(DirectoryWatcher, ReportsTheFolderGoneWhenRenamedDeletedOrMovedAwayAndThenFallsSilent)
{
    const std::vector<std::pair<const char*, std::function<void(TempTree&)>>> departures = {
        {"renamed", [](TempTree& t) { fs::rename(t / "watched", t / "renamed"); }},
        {"moved into another folder", [](TempTree& t) { fs::rename(t / "watched", t / "other/watched"); }},
        {"deleted", [](TempTree& t) { fs::remove_all(t / "watched"); }},
        {"changed, then renamed",
         [](TempTree& t) {
             t.file("watched/late.txt");
             fs::rename(t / "watched", t / "renamed");
         }},
    };
    for (const auto& [what, depart] : departures) {
        SCOPED_TRACE(what);
        TempTree tree;
        tree.file("watched/a.txt");
        tree.folder("other");
        auto watcher = DirectoryWatcher::open(tree / "watched");
        ASSERT_TRUE(watcher);
        depart(tree);
        EXPECT_EQ(nextEvent(*watcher), Event::directoryGone) << "gone wins over changes in the same delivery";

        // Whatever now happens in the folder under its new name is none of this watcher's business.
        for (const auto* moved : {"renamed", "other/watched"}) {
            if (tree.exists(moved))
                tree.file(std::string(moved) + "/after.txt");
        }
        if (readable(*watcher, quietMilliseconds)) {
            EXPECT_EQ(watcher->readPendingEvents(), std::nullopt);
        }
    }
}

TEST(DirectoryWatcher, CancelDropsPendingEventsAndClosesTheDescriptor)
{
    TempTree tree;
    tree.folder("watched");
    auto watcher = DirectoryWatcher::open(tree / "watched");
    ASSERT_TRUE(watcher);
    const int descriptor = watcher->descriptor();
    tree.file("watched/pending.txt");
    ASSERT_TRUE(readable(*watcher, eventWaitMilliseconds));

    watcher->cancel();
    EXPECT_TRUE(watcher->isCancelled());
    EXPECT_EQ(watcher->descriptor(), -1);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1) << "the descriptor is closed";
    EXPECT_EQ(watcher->readPendingEvents(), std::nullopt) << "the pending event is dropped";
    watcher->cancel();
    tree.file("watched/later.txt");
    EXPECT_EQ(watcher->readPendingEvents(), std::nullopt);
}

TEST(DirectoryWatcher, MovingAWatcherHandsOverItsDescriptorAndAssigningCancelsTheOldOne)
{
    TempTree tree;
    tree.folder("one");
    tree.folder("two");
    auto first = DirectoryWatcher::open(tree / "one");
    auto second = DirectoryWatcher::open(tree / "two");
    ASSERT_TRUE(first && second);
    const int firstDescriptor = first->descriptor();
    const int secondDescriptor = second->descriptor();

    DirectoryWatcher moved(std::move(*first));
    EXPECT_TRUE(first->isCancelled());
    EXPECT_EQ(moved.descriptor(), firstDescriptor);
    moved = std::move(*second);
    EXPECT_EQ(moved.descriptor(), secondDescriptor);
    EXPECT_EQ(::fcntl(firstDescriptor, F_GETFD), -1) << "the replaced watcher was closed";

    tree.file("two/x");
    EXPECT_EQ(nextEvent(moved), Event::contentsChanged);
}

TEST(DirectoryWatcher, GivesNoWatcherForWhatCannotBeWatchedButFollowsLinksToFolders)
{
    TempTree tree;
    tree.file("file.txt");
    tree.folder("real");
    tree.link("to-real", "real");
    tree.link("dangling", "missing");
    EXPECT_FALSE(DirectoryWatcher::open(tree / "missing"));
    EXPECT_FALSE(DirectoryWatcher::open(tree / "file.txt"));
    EXPECT_FALSE(DirectoryWatcher::open(tree / "dangling"));

    auto linked = DirectoryWatcher::open(tree / "to-real");
    ASSERT_TRUE(linked);
    EXPECT_EQ(::fcntl(linked->descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(::fcntl(linked->descriptor(), F_GETFL) & O_NONBLOCK, O_NONBLOCK);
    tree.file("real/x");
    EXPECT_EQ(nextEvent(*linked), Event::contentsChanged);
}

TEST(DirectoryWatcher, GivesNoWatcherForAFolderItMayNotRead)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads every folder, so an unreadable folder cannot be made here";
    TempTree tree;
    const auto locked = tree.folder("locked");
    fs::permissions(locked, fs::perms::none);
    EXPECT_FALSE(DirectoryWatcher::open(locked));
}

TEST(DirectoryWatcher, ReportsTheFolderGoneWhenItsVolumeIsUnmounted)
{
    TempTree tree;
    const auto mountPoint = tree.folder("volume");
    if (::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root): " << std::strerror(errno);
    fs::create_directory(mountPoint / "watched");
    auto watcher = DirectoryWatcher::open(mountPoint / "watched");
    ASSERT_TRUE(watcher);
    ASSERT_EQ(::umount2(mountPoint.c_str(), MNT_DETACH), 0) << std::strerror(errno);
    EXPECT_EQ(nextEvent(*watcher), Event::directoryGone);
}

} // namespace
} // namespace orbisk
