#include <gtest/gtest.h>

#include "operations/TransferTarget.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

TEST(TransferTargetResolver, ReadsFoldersNewNamesAndMasks)
{
    TempTree tree;
    const auto base = tree.folder("pane");
    const auto home = tree.folder("home");
    tree.folder("pane/backup");
    tree.folder("pane/odd*name");
    tree.folder("home/Music");
    tree.file("pane/file.txt");
    tree.folder("pane/dest ");
    tree.folder("pane/dest");
    tree.link("pane/lnk", "../home/Music");

    struct Case {
        std::string text;
        std::size_t sources;
        TransferTarget expected;
    };
    const Case cases[] = {
        {"backup", 3, TransferTarget::into(base / "backup")},
        {"backup/", 3, TransferTarget::into(base / "backup")},
        {base.native() + "/dest ", 3, TransferTarget::into(base / "dest ")},
        {" backup", 1, TransferTarget::renamed(base, " backup")},
        {"backup/..", 2, TransferTarget::into(fs::canonical(base))},
        {"lnk/../new", 1, TransferTarget::renamed(fs::canonical(home), "new")},
        {tree.root().native() + "/pane/backup", 1, TransferTarget::into(base / "backup")},
        {"odd*name", 2, TransferTarget::into(base / "odd*name")},
        {"~/Music", 1, TransferTarget::into(home / "Music")},
        {"~", 1, TransferTarget::into(home)},
        {"newname.txt", 1, TransferTarget::renamed(base, "newname.txt")},
        {"../home/new", 1, TransferTarget::renamed(home, "new")},
        {"backup/*.bak", 4, TransferTarget::masked(base / "backup", "*.bak")},
        {"*.txt", 1, TransferTarget::masked(base, "*.txt")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto result = TransferTargetResolver::resolve(c.text, base, c.sources, home);
        ASSERT_TRUE(result) << result.error().errorDescription();
        EXPECT_EQ(*result, c.expected);
    }
}

TEST(TransferTargetResolver, RefusesWhatCannotBeADestination)
{
    TempTree tree;
    const auto base = tree.folder("pane");
    tree.file("pane/file.txt");

    struct Case {
        std::string text;
        std::size_t sources;
        FileOperationError expected;
    };
    const Case cases[] = {
        {"newname.txt", 2, FileOperationError::destinationNotFolder(base / "newname.txt")},
        {"some/missing/folder/", 1, FileOperationError::destinationNotFolder(base / "some/missing/folder")},
        {"missing/name", 1, FileOperationError::destinationNotFolder(base / "missing")},
        {"missing/*.bak", 1, FileOperationError::destinationNotFolder(base / "missing")},
        {"file.txt/inside", 1, FileOperationError::destinationNotFolder(base / "file.txt")},
        {"b*/x?", 1, FileOperationError::destinationNotFolder(base / "b*")},
        {"", 1, FileOperationError::invalidName("", "enter a destination.")},
        {" \t\n", 1, FileOperationError::invalidName(" \t\n", "enter a destination.")},
        {"  backup/ \n", 3, FileOperationError::destinationNotFolder(base / "  backup/ \n")},
        {"missing/..", 1, FileOperationError::destinationNotFolder(base / "missing/..")},
        {std::string(256, 'n'), 1,
         FileOperationError::invalidName(std::string(256, 'n'), "the name is longer than 255 bytes.")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto result = TransferTargetResolver::resolve(c.text, base, c.sources, tree / "home");
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), c.expected) << result.error().errorDescription();
    }
    EXPECT_FALSE(tree.exists("pane/missing")) << "no folder is created";
    EXPECT_FALSE(tree.exists("pane/some"));
}

} // namespace
} // namespace orbisk
