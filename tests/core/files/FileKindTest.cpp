#include <gtest/gtest.h>

#include <map>

#include "files/FileKind.h"
#include "files/MimeTypeTable.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using test::TempTree;

FileItem item(const char* name, bool directory = false, bool link = false, bool package = false)
{
    FileItem result{std::filesystem::path("/d") / name};
    result.isDirectory = directory;
    result.isSymbolicLink = link;
    result.isPackage = package;
    return result;
}

TEST(FileKind, NamesFoldersTypesLinksAndTheRestInThatOrder)
{
    const std::map<std::string, std::string, std::less<>> types{{"txt", "plain text document"},
                                                                {"app", "application bundle"}};
    int lookups = 0;
    const TypeDescriptionLookup lookup = [&](std::string_view extension) -> std::optional<std::string> {
        ++lookups;
        const auto found = types.find(extension);
        return found == types.end() ? std::nullopt : std::optional(found->second);
    };
    const struct {
        const char* label;
        FileItem item;
        const char* kind;
        int lookups;
    } table[] = {
        {"parent row", FileItem::parentLink("/d/e"), "", 0},
        {"file without an extension", item("photos"), "Document", 0},
        {"folder", item("photos", true), "Folder", 0},
        {"folder with a known extension", item("notes.txt", true), "Folder", 0},
        {"link to a folder", item("photos", true, true), "Folder (link)", 0},
        {"known type", item("notes.txt"), "plain text document", 1},
        {"link to a known type", item("notes.txt", false, true), "plain text document (link)", 1},
        {"unknown type", item("data.zzz"), "Document", 1},
        {"dangling link", item("gone", false, true), "Link", 0},
        {"package of a known type", item("Mail.app", false, false, true), "application bundle", 1},
        {"package", item("Tool.bundle", false, false, true), "Package", 1},
        {"dot-name", item(".profile"), "Document", 0},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.label);
        lookups = 0;
        EXPECT_EQ(FileKind::describe(row.item, lookup), row.kind);
        EXPECT_EQ(lookups, row.lookups);
    }
    EXPECT_EQ(FileKind::describe(item("notes.txt"), nullptr), "Document") << "no look-up at all";
}

/// A shared-mime-info data folder with the given globs2 lines and type files.
void writeMimeFolder(TempTree& tree, const std::string& folder, const std::string& globs,
                     const std::map<std::string, std::string>& typeFiles)
{
    tree.file(folder + "/mime/globs2", "# generated\n" + globs);
    for (const auto& [type, xml] : typeFiles)
        tree.file(folder + "/mime/" + type + ".xml", xml);
}

std::string typeXml(const std::string& comments)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<mime-type "
           "xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\" type=\"x\">\n" +
           comments + "</mime-type>\n";
}

TEST(MimeTypeTable, ReadsTheFilesOnFirstUseWithEarlierFoldersWinning)
{
    TempTree tree;
    MimeTypeTable table({tree / "user", tree / "system"}, {"de_AT", "de"});
    // Written after the table was made: a table that read eagerly would know nothing.
    writeMimeFolder(tree, "user", "50:text/x-mine:*.txt\n", {{"text/x-mine", typeXml("<comment>my text</comment>\n")}});
    writeMimeFolder(tree, "system",
                    "60:text/x-c++src:*.C:cs\n50:text/plain:*.txt\n50:text/x-csrc:*.c\n"
                    "50:application/x-compressed-tar:*.tar.gz\n40:image/jpeg:*.jpg\n30:image/other:*.jpg\n",
                    {{"text/x-c++src", typeXml("<comment>C++ source code</comment>\n")},
                     {"text/x-csrc", typeXml("<comment xml:lang=\"fr\">source C</comment>\n"
                                             "<comment>C source code</comment>\n"
                                             "<comment xml:lang=\"de\">C-Quelltext</comment>\n")},
                     {"image/jpeg", typeXml("<comment>JPEG image &amp; &#x2192; &lt;photo&gt;</comment>\n")}});

    const struct {
        const char* extension;
        std::optional<std::string> type;
        std::optional<std::string> description;
    } rows[] = {
        {"txt", "text/x-mine", "my text"},
        {"TXT", "text/x-mine", "my text"},
        {"C", "text/x-c++src", "C++ source code"},
        {"c", "text/x-csrc", "C-Quelltext"},
        {"jpg", "image/jpeg", "JPEG image & \u2192 <photo>"},
        {"gz", std::nullopt, std::nullopt},
        {"zzz", std::nullopt, std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.extension);
        EXPECT_EQ(table.typeForExtension(row.extension), row.type);
        EXPECT_EQ(table.describe(row.extension), row.description);
    }
    MimeTypeTable english({tree / "system"}, {});
    EXPECT_EQ(english.describe("c"), "C source code");
}

} // namespace
} // namespace orbisk
