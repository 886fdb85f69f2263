#include <gtest/gtest.h>

#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "ZipTestSupport.h"
#include "core/operations/UndoTestSupport.h"
#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::TempTree;

std::uintmax_t bytesUnder(const fs::path& root)
{
    std::uintmax_t total = 0;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it)
        if (it->is_regular_file() && !it->is_symlink())
            total += it->file_size();
    return total;
}

// Each archive of the generator is extracted into a fresh folder beside a decoy "outside" folder;
// whatever the archive tries, only the destination may change, and only by one new item.
TEST(ZipHostile, NothingOutsideChangesAndWhatIsCreatedStaysInside)
{
    if (!test::haveProgram("python3"))
        GTEST_SKIP() << "python3 is needed to build the hostile archives";
    TempTree tree;
    const auto archives = tree / "archives";
    const auto made =
        test::run({"python3", ORBISK_SOURCE_DIR "/tests/core/zip/hostile_archives.py", archives.native()});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const json manifest = json::parse(test::bytesOf(archives / "manifest.json"));
    ASSERT_GT(manifest.size(), 40u);

    for (const auto& expect : manifest) {
        const std::string archiveName = expect["archive"];
        SCOPED_TRACE(archiveName);
        TempTree scene;
        scene.file("outside/file", "decoy");
        scene.folder("outside/dir");
        scene.file("work/existing.txt", "mine");
        const auto dest = scene.folder("work/dest");
        const auto before = test::picture(scene.root());

        const auto report = test::extract(archives / archiveName, dest);

        auto after = test::picture(scene.root());
        std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("work/dest/"); });
        auto expected = before;
        std::erase_if(expected, [](const auto& entry) { return entry.first.starts_with("work/dest/"); });
        EXPECT_EQ(after, expected) << "something outside the destination changed";
        EXPECT_FALSE(fs::exists(fs::symlink_status("/tmp/orbisk-evil3")));
        EXPECT_TRUE(test::stagingLeftIn(dest).empty());

        std::vector<fs::path> created;
        for (const auto& entry : fs::directory_iterator(dest))
            created.push_back(entry.path());
        ASSERT_LE(created.size(), 1u);
        for (const auto& item : created)
            EXPECT_EQ(test::linksLeaving(item), std::vector<std::string>{});

        if (expect.contains("abort")) {
            ASSERT_TRUE(report.abortReason);
            EXPECT_NE(report.abortReason->find(expect["abort"].get<std::string>()), std::string::npos)
                << *report.abortReason;
            EXPECT_TRUE(created.empty());
            continue;
        }
        if (expect.contains("truncated")) {
            // Cut anywhere: refused as a whole, or what is readable comes out; never a crash.
            EXPECT_TRUE(report.abortReason || !report.completed.empty() || !report.failures.empty());
            continue;
        }
        if (expect.contains("nothing")) {
            EXPECT_TRUE(created.empty());
            EXPECT_TRUE(report.isCompleteSuccess());
            continue;
        }
        ASSERT_EQ(created.size(), 1u) << testing::PrintToString(test::messages(report));
        const fs::path result = created.front();
        EXPECT_EQ(result.filename(), fs::path(archiveName).stem());
        EXPECT_EQ(report.undoChanges.size(), 1u);

        const auto texts = test::messages(report);
        std::vector<std::string> wanted = expect.value("failures", std::vector<std::string>{});
        EXPECT_EQ(texts.size(), wanted.size()) << testing::PrintToString(texts);
        for (const auto& piece : wanted) {
            const auto found =
                std::ranges::find_if(texts, [&](const auto& text) { return text.find(piece) != std::string::npos; });
            EXPECT_NE(found, texts.end()) << "no failure says “" << piece << "”: " << testing::PrintToString(texts);
        }
        for (const auto& path : expect.value("present", std::vector<std::string>{}))
            EXPECT_TRUE(fs::exists(fs::symlink_status(result / path))) << path;
        for (const auto& path : expect.value("absent", std::vector<std::string>{}))
            EXPECT_FALSE(fs::exists(fs::symlink_status(result / path))) << path;
        const json contentsOf = expect.value("contents", json::object());
        const json modesOf = expect.value("modes", json::object());
        for (const auto& [path, contents] : contentsOf.items())
            EXPECT_EQ(test::bytesOf(result / path), contents.get<std::string>()) << path;
        for (const auto& [path, mode] : modesOf.items())
            EXPECT_EQ(test::modeOf(result / path) & 07777, mode.get<unsigned>()) << path;
        if (expect.contains("small")) {
            EXPECT_LT(bytesUnder(result), 1u << 20) << "a lying size must not fill the disk";
        }
        if (expect.contains("plain_types")) {
            for (auto it = fs::recursive_directory_iterator(result); it != fs::recursive_directory_iterator(); ++it) {
                const mode_t mode = test::modeOf(it->path());
                EXPECT_TRUE(S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode)) << it->path();
                EXPECT_EQ(mode & 07000, 0u) << it->path() << " kept a set-ID or sticky bit";
            }
        }
    }
}

} // namespace
} // namespace orbisk
