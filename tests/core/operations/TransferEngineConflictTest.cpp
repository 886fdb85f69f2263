#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>

#include "operations/TransferEngine.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

// What sits under a name, in one comparable string: a file's contents, a link's target, a
// folder's sorted entry names.
std::string fingerprint(const fs::path& path)
{
    const auto status = fs::symlink_status(path);
    if (fs::is_symlink(status))
        return "link:" + fs::read_symlink(path).native();
    if (fs::is_directory(status)) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(path))
            names.push_back(entry.path().filename().native());
        std::ranges::sort(names);
        std::string result = "folder:";
        for (const auto& name : names)
            result += name + ",";
        return result;
    }
    if (!fs::exists(status))
        return "absent";
    std::ifstream in(path, std::ios::binary);
    return "file:" + std::string(std::istreambuf_iterator<char>(in), {});
}

bool hasHiddenLeftovers(const fs::path& folder)
{
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().filename().native().find(".ob-") != std::string::npos)
            return true;
    return false;
}

enum class ItemKind { file, folder, link };

// Makes "item" of a kind in both places, the source version "new" and the existing one "old".
void makeClash(TempTree& tree, ItemKind kind)
{
    for (const std::string version : {"new", "old"}) {
        const std::string place = version == "new" ? "src/item" : "dst/item";
        switch (kind) {
        case ItemKind::file: tree.file(place, version == "new" ? "new contents" : "old"); break;
        case ItemKind::folder: tree.file(place + "/" + version + ".txt", version); break;
        case ItemKind::link:
            tree.folder(version == "new" ? "src" : "dst");
            tree.link(place, version + "-target");
            break;
        }
    }
    // The existing item is older, so that Replace if Older and Replace if Different replace.
    tree.setModificationTime("dst/item", 1'000'000'000);
}

struct Run {
    OperationReport report;
    std::vector<fs::path> trashed;
};

Run transfer(TempTree& tree, TransferEngine::Kind kind, std::vector<fs::path> sources, const fs::path& destination,
             const std::function<void(TransferEngine&)>& configure = {})
{
    CancellationToken token;
    OperationProgressTracker progress;
    TransferEngine engine(kind, std::move(sources), destination, token, progress);
    Run run;
    const fs::path trash = tree.folder("trash");
    engine.replacedItemDisposer = [&](const fs::path& item) -> std::expected<std::optional<fs::path>, int> {
        const fs::path where = trash / (std::to_string(run.trashed.size()) + "-" + item.filename().native());
        if (::rename(item.c_str(), where.c_str()) != 0)
            return std::unexpected(errno);
        run.trashed.push_back(where);
        return where;
    };
    if (configure)
        configure(engine);
    run.report = engine.run();
    EXPECT_EQ(progress.snapshot().phase, OperationProgress::Phase::finished);
    return run;
}

TEST(TransferEngineConflicts, EveryStandingChoiceOnFilesFoldersAndLinks)
{
    struct Expectation {
        ConflictChoice choice;
        ItemKind kind;
        std::string atName;     // what "dst/item" holds afterwards
        std::string besideName; // an extra entry the choice makes, and what it holds
        std::string besideValue;
        bool oldInTrash = false;
        bool skipped = false;
        bool cancelled = false;
        bool failed = false;
    };
    const std::string newFile = "file:new contents", oldFile = "file:old";
    const std::string newFolder = "folder:new.txt,", oldFolder = "folder:old.txt,";
    const std::string newLink = "link:new-target", oldLink = "link:old-target";
    const std::vector<Expectation> table = {
        {ConflictChoice::skip, ItemKind::file, oldFile, "", "", false, true},
        {ConflictChoice::skip, ItemKind::folder, oldFolder, "", "", false, true},
        {ConflictChoice::skip, ItemKind::link, oldLink, "", "", false, true},
        {ConflictChoice::keepBoth, ItemKind::file, oldFile, "item 2", newFile},
        {ConflictChoice::keepBoth, ItemKind::folder, oldFolder, "item 2", newFolder},
        {ConflictChoice::keepBoth, ItemKind::link, oldLink, "item 2", newLink},
        {ConflictChoice::cancel, ItemKind::file, oldFile, "", "", false, false, true},
        {ConflictChoice::cancel, ItemKind::folder, oldFolder, "", "", false, false, true},
        {ConflictChoice::replace, ItemKind::file, newFile, "", "", true},
        {ConflictChoice::replace, ItemKind::folder, newFolder, "", "", true},
        {ConflictChoice::replace, ItemKind::link, newLink, "", "", true},
        {ConflictChoice::replaceIfOlder, ItemKind::file, newFile, "", "", true},
        {ConflictChoice::replaceIfOlder, ItemKind::folder, newFolder, "", "", true},
        {ConflictChoice::replaceIfDifferent, ItemKind::file, newFile, "", "", true},
        {ConflictChoice::replaceIfDifferent, ItemKind::link, newLink, "", "", true},
        {ConflictChoice::renameExisting, ItemKind::file, newFile, "item (old)", oldFile},
        {ConflictChoice::renameExisting, ItemKind::folder, newFolder, "item (old)", oldFolder},
        {ConflictChoice::renameExisting, ItemKind::link, newLink, "item (old)", oldLink},
        {ConflictChoice::merge, ItemKind::folder, "folder:new.txt,old.txt,", "", ""},
        {ConflictChoice::merge, ItemKind::file, oldFile, "", "", false, false, false, true},
        {ConflictChoice::merge, ItemKind::link, oldLink, "", "", false, false, false, true},
    };
    for (const auto kind : {TransferEngine::Kind::copy, TransferEngine::Kind::move}) {
        for (const auto& row : table) {
            SCOPED_TRACE(std::string(rawValue(row.choice)) + " kind " + std::to_string(static_cast<int>(row.kind)) +
                         (kind == TransferEngine::Kind::move ? " move" : " copy"));
            TempTree tree;
            makeClash(tree, row.kind);
            const std::string sourceBefore = fingerprint(tree / "src/item");
            const auto run = transfer(tree, kind, {tree / "src/item"}, tree / "dst",
                                      [&](TransferEngine& e) { e.conflictPolicy = row.choice; });

            EXPECT_EQ(fingerprint(tree / "dst/item"), row.atName);
            if (!row.besideName.empty()) {
                EXPECT_EQ(fingerprint(tree / "dst" / row.besideName), row.besideValue);
            }
            EXPECT_EQ(run.trashed.size(), row.oldInTrash ? 1U : 0U);
            if (row.oldInTrash) {
                EXPECT_EQ(fingerprint(run.trashed[0]), row.kind == ItemKind::file     ? oldFile
                                                       : row.kind == ItemKind::folder ? oldFolder
                                                                                      : oldLink);
            }
            EXPECT_EQ(run.report.skipped.size(), row.skipped ? 1U : 0U);
            EXPECT_EQ(run.report.cancelled, row.cancelled);
            EXPECT_EQ(run.report.failures.size(), row.failed ? 1U : 0U);
            if (row.failed) {
                EXPECT_EQ(run.report.failures[0].message(), "“item” was not merged: only two folders can be merged.");
            }
            const bool done = !row.skipped && !row.cancelled && !row.failed;
            // A move takes the source away only when the item was done; otherwise it stays as it was.
            if (kind == TransferEngine::Kind::move && done) {
                EXPECT_FALSE(fs::exists(fs::symlink_status(tree / "src/item")));
            } else {
                EXPECT_EQ(fingerprint(tree / "src/item"), sourceBefore);
            }
            EXPECT_FALSE(hasHiddenLeftovers(tree / "dst"));
        }
    }
}

TEST(TransferEngineConflicts, ReplaceIfDifferentAndIfOlderCompareTimesAsTheyShould)
{
    struct Row {
        ConflictChoice choice;
        std::string sourceContents;
        long existingNanosecondsLater; // existing time minus source time
        bool replaces;
    };
    const std::vector<Row> table = {
        {ConflictChoice::replaceIfDifferent, "same", 1'500'000'000, false},
        {ConflictChoice::replaceIfDifferent, "same", -1'500'000'000, false},
        {ConflictChoice::replaceIfDifferent, "same", 2'000'000'000, true},
        {ConflictChoice::replaceIfDifferent, "longer", 0, true},
        {ConflictChoice::replaceIfOlder, "same", 1'000'000, false},
        {ConflictChoice::replaceIfOlder, "same", 0, false},
        {ConflictChoice::replaceIfOlder, "same", -1, true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(rawValue(row.choice)) + " " + std::to_string(row.existingNanosecondsLater));
        TempTree tree;
        tree.file("src/a.txt", row.sourceContents);
        tree.file("dst/a.txt", "SAME");
        const std::time_t base = 1'600'000'000;
        tree.setModificationTime("src/a.txt", base, 500'000'000);
        const long long existing = base * 1'000'000'000LL + 500'000'000 + row.existingNanosecondsLater;
        tree.setModificationTime("dst/a.txt", existing / 1'000'000'000, existing % 1'000'000'000);

        const auto run = transfer(tree, TransferEngine::Kind::copy, {tree / "src/a.txt"}, tree / "dst",
                                  [&](TransferEngine& e) { e.conflictPolicy = row.choice; });
        EXPECT_EQ(tree.read("dst/a.txt"), row.replaces ? row.sourceContents : "SAME");
        EXPECT_EQ(run.report.skipped.size(), row.replaces ? 0U : 1U);
        EXPECT_TRUE(run.report.isCompleteSuccess());
    }
}

TEST(TransferEngineConflicts, SameItemClashesOfferOnlySafeChoices)
{
    TempTree tree;
    tree.file("dir/a.txt", "mine");
    std::vector<NameConflict> asked;
    const auto answer = [&](ConflictChoice choice) {
        return [&asked, choice](TransferEngine& e) {
            e.conflictPolicy = ConflictChoice::replace; // a standing Replace must not apply here
            e.conflictHandler = [&asked, choice](const NameConflict& conflict) {
                asked.push_back(conflict);
                return ConflictDecision{choice, false};
            };
        };
    };

    auto run = transfer(tree, TransferEngine::Kind::copy, {tree / "dir/a.txt"}, tree / "dir",
                        answer(ConflictChoice::keepBoth));
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_TRUE(asked[0].isSameItem);
    EXPECT_FALSE(asked[0].canMerge);
    EXPECT_EQ(tree.read("dir/a 2.txt"), "mine");
    EXPECT_EQ(tree.read("dir/a.txt"), "mine");
    EXPECT_TRUE(run.trashed.empty());

    // A handler that answers with an unsafe choice anyway is refused, and the file stays.
    run =
        transfer(tree, TransferEngine::Kind::copy, {tree / "dir/a.txt"}, tree / "dir", answer(ConflictChoice::replace));
    ASSERT_EQ(run.report.failures.size(), 1U);
    EXPECT_EQ(run.report.failures[0].message(),
              "“a.txt” was not replaced: it is the item being copied or contains it.");
    EXPECT_EQ(tree.read("dir/a.txt"), "mine");
    EXPECT_TRUE(run.trashed.empty());

    // Nobody to ask: the safe answer is to cancel.
    run = transfer(tree, TransferEngine::Kind::copy, {tree / "dir/a.txt"}, tree / "dir",
                   [](TransferEngine& e) { e.conflictPolicy = ConflictChoice::replace; });
    EXPECT_TRUE(run.report.cancelled);
    EXPECT_FALSE(tree.exists("dir/a 3.txt"));
}

TEST(TransferEngineConflicts, AnAnswerForAllIsRememberedButMergeOnlyCoversFolders)
{
    TempTree tree;
    for (const char* name : {"one.txt", "two.txt"}) {
        tree.file(std::string("src/") + name, "new");
        tree.file(std::string("dst/") + name, "old");
    }
    tree.file("src/F/x", "new");
    tree.file("dst/F/y", "old");
    tree.file("src/G/z", "new");
    tree.file("dst/G/z", "old");
    int questions = 0;
    const auto run = transfer(tree, TransferEngine::Kind::copy,
                              {tree / "src/F", tree / "src/G", tree / "src/one.txt", tree / "src/two.txt"},
                              tree / "dst", [&](TransferEngine& e) {
                                  e.conflictHandler = [&](const NameConflict& conflict) {
                                      ++questions;
                                      if (conflict.canMerge)
                                          return ConflictDecision{ConflictChoice::merge, true};
                                      return ConflictDecision{ConflictChoice::keepBoth, true};
                                  };
                              });
    // F is asked (merge for all), G merges silently, its z clash is asked (keep both for all),
    // and the two files then follow the remembered answer.
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(fingerprint(tree / "dst/F"), "folder:x,y,");
    EXPECT_EQ(fingerprint(tree / "dst/G"), "folder:z,z 2,");
    EXPECT_EQ(tree.read("dst/one 2.txt"), "new");
    EXPECT_EQ(tree.read("dst/two 2.txt"), "new");
    EXPECT_TRUE(run.report.isCompleteSuccess());
}

TEST(TransferEngineConflicts, MergingResolvesNestedClashesAndEmptiesAMovedFolder)
{
    for (const bool copyThenDelete : {false, true}) {
        SCOPED_TRACE(copyThenDelete ? "copy then delete" : "rename");
        TempTree tree;
        tree.file("src/F/a", "new a");
        tree.file("src/F/sub/b", "new b");
        tree.file("src/F/sub/c", "new c");
        tree.file("dst/F/a", "old a");
        tree.file("dst/F/sub/b", "old b");
        tree.file("dst/F/x", "old x");
        const auto run =
            transfer(tree, TransferEngine::Kind::move, {tree / "src/F"}, tree / "dst", [&](TransferEngine& e) {
                e.mergeFolders = true;
                e.conflictPolicy = ConflictChoice::replace;
                e.forceCopyThenDelete = copyThenDelete;
            });
        EXPECT_TRUE(run.report.isCompleteSuccess())
            << (run.report.failures.empty() ? "" : run.report.failures[0].message());
        EXPECT_EQ(tree.read("dst/F/a"), "new a");
        EXPECT_EQ(tree.read("dst/F/sub/b"), "new b");
        EXPECT_EQ(tree.read("dst/F/sub/c"), "new c");
        EXPECT_EQ(tree.read("dst/F/x"), "old x");
        EXPECT_EQ(run.trashed.size(), 2U);
        EXPECT_FALSE(tree.exists("src/F"));
        ASSERT_FALSE(run.report.completed.empty());
        EXPECT_EQ(run.report.completed.back(), (TransferredItem{tree / "src/F", tree / "dst/F"}));
    }
}

TEST(TransferEngineConflicts, RenameExistingCountsUpAndNamesThatAreNotUtf8Survive)
{
    TempTree tree;
    const std::string name = "\xE9t\xE9.txt";
    tree.file("dst/" + name, "first");
    for (const std::string contents : {"second", "third"}) {
        tree.file("src/" + name, contents);
        const auto run = transfer(tree, TransferEngine::Kind::move, {tree / "src" / name}, tree / "dst",
                                  [](TransferEngine& e) { e.conflictPolicy = ConflictChoice::renameExisting; });
        EXPECT_TRUE(run.report.isCompleteSuccess());
    }
    EXPECT_EQ(tree.read("dst/" + name), "third");
    EXPECT_EQ(tree.read("dst/\xE9t\xE9 (old).txt"), "first");
    EXPECT_EQ(tree.read("dst/\xE9t\xE9 (old 2).txt"), "second");
    EXPECT_FALSE(tree.exists("src/" + name));
}

} // namespace
} // namespace orbisk
