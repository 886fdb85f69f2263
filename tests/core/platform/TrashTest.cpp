#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

#include "platform/Trash.h"
#include "support/LoopVolume.h"
#include "support/Processes.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const Identity&) const = default;
};

std::optional<Identity> identity(const fs::path& path)
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    return Identity{status.st_dev, status.st_ino};
}

std::string readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string percentDecoded(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            out += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// The Path recorded for an item in a trash, decoded.
std::string recordedPath(const fs::path& inTrash)
{
    const auto text = readFile(Trash::infoFileFor(inTrash));
    const auto start = text.find("\nPath=");
    if (start == std::string::npos)
        return {};
    const auto end = text.find('\n', start + 1);
    return percentDecoded(std::string_view(text).substr(start + 6, end - start - 6));
}

std::vector<std::string> entries(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        names.push_back(entry.path().filename().native());
    std::sort(names.begin(), names.end());
    return names;
}

// A private home for the trash and for the tools that read it.
struct Home {
    TempTree tree;
    fs::path data = tree.folder("data");
    Trash trash{data / "Trash", ::getuid()};
    std::vector<std::string> environment = {"HOME=" + tree.folder("home").native(), "XDG_DATA_HOME=" + data.native()};
};

TEST(Trash, HomeTrashTakesEveryKindOfNameAndRecordsTheExactPath)
{
    Home home;
    const std::vector<std::pair<std::string, std::string>> items = {
        {"plain.txt", "file"},           {"100% #1?.txt", "file"},     {"new\nline", "file"}, {"caf\xE9", "file"},
        {std::string(255, 'n'), "file"}, {"dir with space", "folder"}, {"dangling", "link"},
    };
    for (const auto& [name, kind] : items) {
        SCOPED_TRACE(name.substr(0, 30) + " (" + kind + ")");
        const auto item = kind == "folder" ? home.tree.folder("items/" + name)
                          : kind == "link" ? home.tree.link("items/" + name, "/nonexistent")
                                           : home.tree.file("items/" + name, "contents");
        if (kind == "folder")
            home.tree.file("items/" + name + "/inner", "x");
        const auto before = identity(item);

        const auto location = home.trash.moveToTrash(item);
        ASSERT_TRUE(location) << std::strerror(location.error());
        EXPECT_FALSE(identity(item)) << "the item left its place";
        EXPECT_EQ(location->parent_path(), home.data / "Trash/files");
        EXPECT_EQ(identity(*location), before) << "renamed, not copied";
        EXPECT_EQ(recordedPath(*location), fs::canonical(home.tree.root()).native() + "/items/" + name);
        EXPECT_LE(Trash::infoFileFor(*location).filename().native().size(), 255U);
    }
    EXPECT_EQ(entries(home.data / "Trash/files").size(), items.size());
    EXPECT_EQ(entries(home.data / "Trash/info").size(), items.size()) << "one info file per item, no orphans";
}

TEST(Trash, ItemsOfTheSameNameGetEntriesOfTheirOwn)
{
    Home home;
    std::vector<fs::path> locations;
    for (const char* folder : {"a", "b", "c"}) {
        const auto item = home.tree.file(std::string(folder) + "/report.txt", folder);
        const auto location = home.trash.moveToTrash(item);
        ASSERT_TRUE(location);
        locations.push_back(*location);
        EXPECT_EQ(readFile(*location), folder);
        EXPECT_EQ(recordedPath(*location), item.native());
    }
    EXPECT_EQ(entries(home.data / "Trash/files"),
              (std::vector<std::string>{"report 2.txt", "report 3.txt", "report.txt"}));
}

TEST(Trash, PuttingBackRestoresTheItemAndForgetsItsInfoButNeverReplaces)
{
    Home home;
    const auto item = home.tree.file("doc", "mine");
    const auto location = home.trash.moveToTrash(item);
    ASSERT_TRUE(location);
    home.tree.file("doc", "newcomer");
    const auto refused = Trash::putBack(*location, item);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), EEXIST);
    EXPECT_EQ(home.tree.read("doc"), "newcomer");
    EXPECT_TRUE(fs::exists(Trash::infoFileFor(*location)));

    fs::remove(item);
    ASSERT_TRUE(Trash::putBack(*location, item));
    EXPECT_EQ(home.tree.read("doc"), "mine");
    EXPECT_EQ(entries(home.data / "Trash/info"), std::vector<std::string>{});
}

TEST(Trash, ReportsAMissingItemAndTouchesNothing)
{
    Home home;
    const auto location = home.trash.moveToTrash(home.tree / "missing");
    ASSERT_FALSE(location);
    EXPECT_EQ(location.error(), ENOENT);
    EXPECT_EQ(entries(home.data / "Trash/info"), std::vector<std::string>{});
}

TEST(Trash, NeverCopiesAcrossVolumesAndLeavesNoInfoFileBehind)
{
    // A mount table that says everything is one volume sends an item of /dev/shm to the home
    // trash; the rename then crosses volumes, as it would under a bind mount nobody saw.
    Home home;
    TempTree other("/dev/shm");
    const auto item = other.file("elsewhere.txt", "stay");
    const auto here = identity(home.tree.root());
    const auto there = identity(other.root());
    if (!here || !there || here->device == there->device)
        GTEST_SKIP() << "/dev/shm is not another volume here";
    const Trash lying(home.data / "Trash", ::getuid(), MountTable::parse("1 0 8:1 / / rw - ext4 /dev/x rw\n"));

    const auto location = lying.moveToTrash(item);
    ASSERT_FALSE(location);
    EXPECT_EQ(location.error(), EXDEV);
    EXPECT_EQ(other.read("elsewhere.txt"), "stay");
    EXPECT_EQ(entries(home.data / "Trash/info"), std::vector<std::string>{});
    EXPECT_EQ(entries(home.data / "Trash/files"), std::vector<std::string>{});
}

TEST(Trash, ItemsOnAnotherVolumeGoToThatVolumesTrash)
{
    Home home;
    test::LoopVolume volume(home.tree.root());
    if (!volume.available())
        GTEST_SKIP() << volume.reason();
    const auto top = volume.mountPoint();
    const std::string uid = std::to_string(::getuid());
    const fs::path shared = top / ".Trash";

    struct Case {
        const char* name;
        std::function<void()> prepare;
        fs::path expectedTrash;
    };
    const std::vector<Case> cases = {
        {"no shared trash", [] {}, top / (".Trash-" + uid)},
        {"shared trash without the sticky bit",
         [&] {
             fs::remove_all(top / (".Trash-" + uid));
             fs::create_directory(shared);
             fs::permissions(shared, fs::perms::all);
         },
         top / (".Trash-" + uid)},
        {"shared trash that is a link",
         [&] {
             fs::remove_all(top / (".Trash-" + uid));
             fs::remove_all(shared);
             fs::create_directory(top / "elsewhere");
             ::chmod((top / "elsewhere").c_str(), 01777);
             fs::create_directory_symlink("elsewhere", shared);
         },
         top / (".Trash-" + uid)},
        {"shared sticky trash",
         [&] {
             fs::remove_all(top / (".Trash-" + uid));
             fs::remove(shared);
             fs::create_directory(shared);
             ::chmod(shared.c_str(), 01777);
         },
         shared / uid},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.prepare();
        const auto item = top / "sub dir" / "file #1";
        fs::create_directories(item.parent_path());
        std::ofstream(item) << "on the volume";

        const auto location = home.trash.moveToTrash(item);
        ASSERT_TRUE(location) << std::strerror(location.error());
        EXPECT_EQ(location->parent_path(), c.expectedTrash / "files");
        EXPECT_EQ(readFile(*location), "on the volume");
        EXPECT_EQ(recordedPath(*location), "sub dir/file #1") << "relative to the top of the volume";
        struct stat status {};
        ASSERT_EQ(::lstat(c.expectedTrash.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U);
        EXPECT_TRUE(entries(home.data / "Trash/files").empty()) << "nothing went to the home trash";
    }
    EXPECT_TRUE(entries(top / "elsewhere").empty()) << "the linked shared trash was never used";

    if (test::haveProgram("trash-list")) {
        const auto listed = test::run({"trash-list"}, {}, home.environment);
        EXPECT_NE(listed.out.find(" " + (top / "sub dir/file #1").native() + "\n"), std::string::npos)
            << "trash-list finds the volume's trash: " << listed.out << listed.err;
    }
}

TEST(Trash, APermissionFailureLeavesTheItemAndNoInfoFile)
{
    TempTree tree;
    ::chmod(tree.root().c_str(), 0755);
    tree.file("locked/item", "keep");
    ::chmod((tree / "locked").c_str(), 0755); // nobody may read but not remove
    const auto open = tree.folder("open");
    ::chmod(open.c_str(), 0777);
    const auto outcome = test::runUnprivileged([&]() -> std::string {
        const Trash trash(open / "data/Trash", ::getuid());
        const auto location = trash.moveToTrash(tree / "locked/item");
        if (location)
            return "moved";
        return std::to_string(location.error()) + " " + std::to_string(entries(open / "data/Trash/info").size());
    });
    if (!outcome)
        GTEST_SKIP() << outcome.error();
    EXPECT_EQ(*outcome, std::to_string(EACCES) + " 0");
    EXPECT_EQ(tree.read("locked/item"), "keep");
}

// The trash as other programs read it: trash-cli and GLib's gio (through gvfs).

// trash-cli reads Path as UTF-8 and loses other bytes, so it gets UTF-8 names only.
std::vector<std::string> trashedNames()
{
    return {"plain.txt", "100% #1?.txt", "with space", "caf\xC3\xA9 \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D"};
}

// gio shows a path in the C locale with every byte beyond ASCII as "\xNN", which keeps it exact.
std::string asGioShowsIt(std::string_view path)
{
    std::string out;
    for (const char c : path) {
        if (static_cast<unsigned char>(c) < 0x80) {
            out += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(c));
            out += escape;
        }
    }
    return out;
}

TEST(TrashInterop, TrashListShowsTheExactOriginalPaths)
{
    if (!test::haveProgram("trash-list"))
        GTEST_SKIP() << "trash-cli is not installed";
    Home home;
    std::vector<std::string> originals;
    for (const auto& name : trashedNames()) {
        const auto item = home.tree.file("items/" + name, name);
        originals.push_back(fs::canonical(item).native());
        ASSERT_TRUE(home.trash.moveToTrash(item));
    }
    const auto listed = test::run({"trash-list"}, {}, home.environment);
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    for (const auto& original : originals) {
        SCOPED_TRACE(original);
        EXPECT_NE(listed.out.find(" " + original + "\n"), std::string::npos) << listed.out;
    }
}

TEST(TrashInterop, GioListsTheTrashedItemsWithTheirOriginalPaths)
{
    if (!test::haveProgram("gio") || !test::haveProgram("dbus-run-session") || !fs::exists("/usr/libexec/gvfsd-trash"))
        GTEST_SKIP() << "gio, dbus or gvfs is not installed";
    Home home;
    std::vector<std::string> originals;
    auto names = trashedNames();
    names.push_back("latin1 caf\xE9");
    for (const auto& name : names) {
        const auto item = home.tree.file("items/" + name, name);
        originals.push_back(fs::canonical(item).native());
        ASSERT_TRUE(home.trash.moveToTrash(item));
    }
    auto environment = home.environment;
    environment.push_back("LC_ALL=C");
    const auto listed = test::run({"dbus-run-session", "--", "gio", "trash", "--list"}, {}, environment);
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    for (const auto& original : originals) {
        SCOPED_TRACE(original);
        EXPECT_NE(listed.out.find("\t" + asGioShowsIt(original) + "\n"), std::string::npos) << listed.out;
    }
}

TEST(TrashInterop, TrashRestoreBringsItemsBackByteIdentical)
{
    if (!test::haveProgram("trash-restore"))
        GTEST_SKIP() << "trash-cli is not installed";
    Home home;
    const std::string contents("binary\0data\xFF with all bytes", 27);
    for (const auto& name : trashedNames()) {
        SCOPED_TRACE(name);
        const auto item = home.tree.file("items/" + name, contents);
        ASSERT_TRUE(home.trash.moveToTrash(item));
        ASSERT_FALSE(home.tree.exists("items/" + name));
        // trash-restore lists what was trashed from the given path and asks which to restore.
        const auto restored =
            test::run({"sh", "-c", "echo 0 | trash-restore \"$0\"", fs::canonical(item.parent_path()) / name}, {},
                      home.environment);
        EXPECT_EQ(restored.exitCode, 0) << restored.out << restored.err;
        EXPECT_EQ(home.tree.read("items/" + name), contents);
    }
    EXPECT_TRUE(entries(home.data / "Trash/info").empty());
}

} // namespace
} // namespace orbisk
