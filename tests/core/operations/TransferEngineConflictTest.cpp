#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "operations/ItemActions.h"
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
        const fs::path where =
            trash / (std::to_string(run.trashed.size()) + "-" + item.filename().native().substr(0, 200));
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

// Long names: every new name the engine makes (Keep Both, Rename Existing, Duplicate, the hidden
// replacing name) must still fit in 255 bytes, shortened by whole characters before the extension.
TEST(TransferEngineConflicts, NamesMadeFromLongNamesAreShortenedToFitByWholeCharacters)
{
    std::string accented; // 125 two-byte letters: 250 bytes
    for (int i = 0; i < 125; ++i)
        accented += "\xC3\xA9";
    struct Case {
        std::string name;
        bool isFolder;
        std::string keptStem; ///< what is left of the stem in a Keep Both name
        std::string copyStem; ///< and in a Duplicate name
    };
    const Case cases[] = {
        {accented + ".txt", false, accented.substr(0, 248), accented.substr(0, 246)},
        {std::string(251, '\xFF') + ".txt", false, std::string(249, '\xFF'), std::string(246, '\xFF')},
        {std::string(255, 'f'), true, std::string(253, 'f'), std::string(250, 'f')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.isFolder ? "folder" : c.name.substr(0, 4));
        const auto extension = c.isFolder ? std::string() : std::string(".txt");
        const auto make = [&](TempTree& tree, const std::string& place, const std::string& contents) {
            if (c.isFolder)
                tree.file(place + "/" + contents, contents);
            else
                tree.file(place, contents);
        };
        const auto content = [&](TempTree& tree, const fs::path& item) {
            return c.isFolder ? fingerprint(item) : "file:" + tree.read(item.lexically_relative(tree.root()).native());
        };
        const auto expected = [&](const std::string& contents) {
            return c.isFolder ? "folder:" + contents + "," : "file:" + contents;
        };
        for (const auto choice : {ConflictChoice::keepBoth, ConflictChoice::renameExisting, ConflictChoice::replace,
                                  ConflictChoice::skip}) {
            SCOPED_TRACE(static_cast<int>(choice));
            TempTree tree;
            make(tree, "src/" + c.name, "new");
            make(tree, "dst/" + c.name, "old");
            const bool duplicate = choice == ConflictChoice::skip; // stands for Duplicate here
            const fs::path source = duplicate ? tree / "dst" / c.name : tree / "src" / c.name;
            const auto run = transfer(tree, TransferEngine::Kind::copy, {source}, tree / "dst", [&](TransferEngine& e) {
                e.conflictPolicy = choice;
                if (duplicate)
                    e.targetNames[source] = ItemActions::duplicateName(source);
            });
            ASSERT_TRUE(run.report.isCompleteSuccess()) << run.report.failures.front().message();
            EXPECT_FALSE(hasHiddenLeftovers(tree / "dst"));

            std::map<std::string, std::string> names; // every name in dst, by its contents
            std::set<std::string> all;
            for (const auto& entry : fs::directory_iterator(tree / "dst")) {
                const auto name = entry.path().filename().native();
                EXPECT_LE(name.size(), 255u);
                names[content(tree, entry.path())] = name;
                all.insert(name);
            }
            const auto made = names[expected(choice == ConflictChoice::renameExisting ? "old" : "new")];
            switch (choice) {
            case ConflictChoice::keepBoth:
                EXPECT_EQ(names[expected("old")], c.name);
                EXPECT_EQ(made, c.keptStem + " 2" + extension);
                break;
            case ConflictChoice::renameExisting:
                EXPECT_EQ(names[expected("new")], c.name);
                EXPECT_TRUE(made.ends_with(" (old)" + extension)) << made;
                EXPECT_TRUE(c.name.starts_with(made.substr(0, made.size() - 6 - extension.size())));
                break;
            case ConflictChoice::replace:
                EXPECT_EQ(names.size(), 1u);
                EXPECT_EQ(names[expected("new")], c.name);
                EXPECT_EQ(run.trashed.size(), 1u);
                break;
            default:
                ASSERT_EQ(all.size(), 2u);
                EXPECT_EQ(*all.rbegin(), c.name);
                EXPECT_EQ(*all.begin(), c.copyStem + " copy" + extension);
                break;
            }
            // The undo record names the items where they are now.
            for (const auto& change : run.report.undoChanges) {
                if (const auto* created = std::get_if<UndoChange::Created>(&change.change)) {
                    EXPECT_TRUE(fs::exists(fs::symlink_status(created->at)));
                }
                if (const auto* moved = std::get_if<UndoChange::Moved>(&change.change)) {
                    EXPECT_TRUE(fs::exists(fs::symlink_status(moved->to)));
                }
            }
        }
    }
}

} // namespace
} // namespace orbisk
