#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <set>
#include <sstream>

#include "files/DirectoryReader.h"
#include "support/Processes.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"
#include "text/TextFile.h"
#include "tools/FileSearch.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

struct Outcome {
    FileSearchSummary summary;
    std::vector<FoundItem> found;
    std::vector<std::size_t> batchSizes;

    /// The found paths relative to root, sorted.
    [[nodiscard]] std::vector<std::string> relative(const fs::path& root) const
    {
        std::vector<std::string> paths;
        for (const auto& f : found)
            paths.push_back(f.item.url().lexically_relative(root).native());
        std::ranges::sort(paths);
        return paths;
    }
};

Outcome search(const fs::path& root, FileSearchOptions options, const std::function<void(Outcome&)>& onBatch = {},
               CancellationToken* token = nullptr)
{
    Outcome outcome;
    CancellationToken own;
    const auto summary = FileSearch::run(root, options, token ? *token : own, [&](std::vector<FoundItem> batch) {
        outcome.batchSizes.push_back(batch.size());
        std::ranges::move(batch, std::back_inserter(outcome.found));
        if (onBatch)
            onBatch(outcome);
    });
    EXPECT_TRUE(summary.has_value());
    if (summary)
        outcome.summary = *summary;
    return outcome;
}

FileSearchOptions named(std::string pattern, bool hidden = false)
{
    FileSearchOptions options;
    options.pattern = std::move(pattern);
    options.includeHidden = hidden;
    return options;
}

void populate(TempTree& tree)
{
    tree.file("Report.PDF", "pdf");
    tree.file("notes/plan.docx", "docx");
    tree.file("notes/plan.doc", "doc");
    tree.file("notes/R\xC3\xA9sum\xC3\xA9.pages", "nfc");            // Résumé, precomposed
    tree.file("notes/old/Re\xCC\x81sume\xCC\x81-2019.pages", "nfd"); // Résumé, decomposed
    tree.file("caf\xE9/menu.pdf", "latin-1 folder name");            // not UTF-8
    tree.file("\xC3\xBC"
              "ber.txt",
              "u"); // über
    tree.file(".config/settings.pdf", "hidden folder");
    tree.file("notes/.draft.pdf", "hidden file");
    tree.file("notes/secret.pdf", "listed hidden");
    tree.file("notes/.hidden", "secret.pdf\n");
    tree.link("notes/to-root", "..");
    tree.link("loose.pdf", "Report.PDF");
}

TEST(FileSearch, MatchesWildcardListsAndNamesIgnoringCaseAndDiacritics)
{
    TempTree tree;
    populate(tree);
    const struct {
        std::string pattern;
        bool hidden;
        std::vector<std::string> expected;
    } table[] = {
        {"*.pdf;*.DOCX", false, {"caf\xE9/menu.pdf", "loose.pdf", "Report.PDF", "notes/plan.docx"}},
        {"*.pdf",
         true,
         {".config/settings.pdf", "caf\xE9/menu.pdf", "loose.pdf", "notes/.draft.pdf", "notes/secret.pdf",
          "Report.PDF"}},
        {"resume", false, {"notes/R\xC3\xA9sum\xC3\xA9.pages", "notes/old/Re\xCC\x81sume\xCC\x81-2019.pages"}},
        {"R\xC3\x89SUM", false, {"notes/R\xC3\xA9sum\xC3\xA9.pages", "notes/old/Re\xCC\x81sume\xCC\x81-2019.pages"}},
        {"\xC3\x9C"
         "BER",
         false,
         {"\xC3\xBC"
          "ber.txt"}},
        {"caf", false, {"caf\xE9"}},
        {"plan.do?", false, {"notes/plan.doc"}},
        {"to-root", false, {"notes/to-root"}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.pattern);
        const auto outcome = search(tree.root(), named(row.pattern, row.hidden));
        auto expected = row.expected;
        for (auto& path : expected)
            path = (tree / path).lexically_relative(tree.root()).native();
        std::ranges::sort(expected);
        EXPECT_EQ(outcome.relative(tree.root()), expected);
        EXPECT_EQ(outcome.summary.matched, static_cast<std::int64_t>(expected.size()));
        EXPECT_FALSE(outcome.summary.truncated);
    }
}

TEST(FileSearch, ReportsItemsAsAPaneListsThemWithoutFollowingLinks)
{
    TempTree tree;
    populate(tree);
    const auto outcome = search(tree.root(), named(""));
    // Every visible item once: the link back to the root is listed, not entered.
    const auto all = outcome.relative(tree.root());
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
    EXPECT_EQ(all.size(), 12u);
    EXPECT_EQ(outcome.summary.scanned, 16); // and the four hidden ones in the two top folders, not entered
    for (const auto& found : outcome.found) {
        const auto& item = found.item;
        SCOPED_TRACE(item.urlBytes());
        EXPECT_EQ(item, DirectoryReader::makeItem(item.url()));
        EXPECT_FALSE(found.content);
    }
}

TEST(FileSearch, StopsAtTheResultLimitAndHandsOverInBatches)
{
    TempTree tree;
    for (int i = 0; i < 50; ++i)
        tree.file("many/file-" + std::to_string(i) + ".log", "x");
    tree.file("many/other.txt");

    auto limited = named("*.log");
    limited.maxResults = 10;
    const auto outcome = search(tree.root(), limited);
    EXPECT_EQ(outcome.found.size(), 10u);
    EXPECT_EQ(outcome.summary.matched, 10);
    EXPECT_TRUE(outcome.summary.truncated);

    auto batched = named("*.log");
    batched.batchSize = 7;
    batched.batchInterval = std::chrono::hours(1);
    const auto all = search(tree.root(), batched);
    EXPECT_EQ(all.found.size(), 50u);
    EXPECT_FALSE(all.summary.truncated);
    EXPECT_EQ(all.summary.scanned, 52);
    ASSERT_FALSE(all.batchSizes.empty());
    EXPECT_TRUE(std::ranges::all_of(all.batchSizes, [](std::size_t n) { return n >= 1 && n <= 7; }));
    EXPECT_EQ(all.batchSizes.size(), 8u); // 7 × 7 and the one left at the end

    CancellationToken token;
    batched.batchSize = 1;
    const auto cancelled = search(
        tree.root(), batched, [&](Outcome&) { token.cancel(); }, &token);
    EXPECT_TRUE(cancelled.summary.cancelled);
    EXPECT_LT(cancelled.found.size(), 50u);
}

TEST(FileSearch, CountsFoldersItCannotReadAndGoesOn)
{
    TempTree tree;
    tree.file("open/target.txt");
    tree.file("locked/target.txt");
    ASSERT_EQ(::chmod((tree / "locked").c_str(), 0), 0);
    ASSERT_EQ(::chmod(tree.root().c_str(), 0755), 0);
    const auto result = test::runUnprivileged([&] {
        const CancellationToken token;
        std::int64_t found = 0;
        const auto summary = FileSearch::run(tree.root(), named("target"), token,
                                             [&](std::vector<FoundItem> batch) { found += std::ssize(batch); });
        return std::to_string(found) + " " + std::to_string(summary->unreadableFolders);
    });
    ::chmod((tree / "locked").c_str(), 0755);
    if (!result)
        GTEST_SKIP() << result.error();
    EXPECT_EQ(*result, "1 1");
}

TEST(FileSearch, ABindMountLeadingBackUpIsWalkedOnce)
{
    TempTree tree;
    tree.file("a/needle.txt");
    const auto loop = tree.folder("a/b/loop");
    if (::mount(tree.root().c_str(), loop.c_str(), nullptr, MS_BIND, nullptr) != 0)
        GTEST_SKIP() << "cannot bind-mount (needs root): " << std::strerror(errno);
    const auto outcome = search(tree.root(), named("needle"));
    ::umount2(loop.c_str(), MNT_DETACH);
    EXPECT_EQ(outcome.relative(tree.root()), std::vector<std::string>{"a/needle.txt"});
}

FileSearchOptions containing(std::string text, bool regex = false, bool caseSensitive = false)
{
    FileSearchOptions options;
    options.containing = std::move(text);
    options.regularExpression = regex;
    options.caseSensitive = caseSensitive;
    options.blockSize = 4096; // small blocks, so that lines and matches cross them
    return options;
}

TEST(FileSearch, FindsContentWithItsLineAndSkipsBinaryFiles)
{
    TempTree tree;
    std::string long_;
    for (int i = 0; i < 2000; ++i)
        long_ += "line " + std::to_string(i) + "\n";
    long_ += "the Needle is here\r\nafter\n";
    tree.file("long.txt", long_);
    tree.file("wide.txt", std::string(10'000, 'a') + "NEEDLE" + std::string(5000, 'b')); // one line of 15 kB
    tree.file("cut.txt", std::string(4093, 'z') + "needle\n"); // straddles the first block's end
    tree.file("binary.dat", std::string("needle\0\0\0", 9));
    tree.file("\xC3\x84pfel.txt", "GR\xC3\x9CNE \xC3\x84PFEL\n"); // GRÜNE ÄPFEL
    tree.file("none.txt", "nothing to see\n");
    tree.file("empty.txt");

    const auto plain = search(tree.root(), containing("needle"));
    EXPECT_EQ(plain.relative(tree.root()), (std::vector<std::string>{"cut.txt", "long.txt", "wide.txt"}));
    EXPECT_EQ(plain.summary.binaryFiles, 1);
    for (const auto& found : plain.found) {
        SCOPED_TRACE(found.item.name());
        ASSERT_TRUE(found.content);
        if (found.item.name() == "long.txt") {
            EXPECT_EQ(*found.content, (ContentMatch{2001, "the Needle is here"}));
        }
        if (found.item.name() == "cut.txt") {
            EXPECT_EQ(found.content->lineNumber, 1);
        }
        if (found.item.name() == "wide.txt") {
            EXPECT_LE(found.content->line.size(), 300u);
            EXPECT_NE(found.content->line.find("NEEDLE"), std::string::npos);
        }
    }

    EXPECT_EQ(search(tree.root(), containing("Needle", false, true)).relative(tree.root()),
              std::vector<std::string>{"long.txt"});
    const auto regex = search(tree.root(), containing("^line 1[0-9]{3}$", true));
    ASSERT_EQ(regex.found.size(), 1u);
    EXPECT_EQ(*regex.found[0].content, (ContentMatch{1001, "line 1000"}));
    // A non-ASCII text found ignoring case: grüne äpfel.
    const auto umlaut = search(tree.root(), containing("gr\xC3\xBCne \xC3\xA4pfel"));
    ASSERT_EQ(umlaut.found.size(), 1u);
    EXPECT_EQ(umlaut.found[0].content->line, "GR\xC3\x9CNE \xC3\x84PFEL");
    EXPECT_TRUE(search(tree.root(), containing("gr\xC3\xBCne", false, true)).found.empty());

    // The name pattern narrows the files read.
    auto both = containing("needle");
    both.pattern = "c*";
    EXPECT_EQ(search(tree.root(), both).relative(tree.root()), std::vector<std::string>{"cut.txt"});

    const CancellationToken token;
    const auto broken = FileSearch::run(tree.root(), containing("(unclosed", true), token, {});
    ASSERT_FALSE(broken.has_value());
    EXPECT_EQ(broken.error().reason, "U_REGEX_MISMATCHED_PAREN");
}

TEST(FileSearch, TellsBinaryFromTextByZeroBytesAndTheShareOfControlCharacters)
{
    // Control characters at the 5 % line, placed across the whole examined length (and beyond it,
    // where they no longer count); tab, line feed, form feed, carriage return and escape are text.
    for (const std::size_t length : {15u, 16u, 1000u, 4081u, 65536u, 100000u}) {
        SCOPED_TRACE(length);
        const std::size_t examined = std::min<std::size_t>(length, 65536);
        std::string text(length, 'a');
        for (std::size_t i = 0; i < length; i += 3)
            text[i] = "\t\n\f\r\x1b"[i % 5];
        const std::size_t allowed = examined / 20;
        for (std::size_t k = 0; k < allowed; ++k)
            text[(k * 7919 % examined) / 3 * 3 + 1] = '\x01';
        EXPECT_FALSE(TextFile::looksBinary(text)) << "at exactly 5 %";
        if (length > examined) {
            text[examined] = '\x02';
            EXPECT_FALSE(TextFile::looksBinary(text)) << "past what is examined";
        }
        std::size_t spot = 2;
        while (text[spot] == '\x01')
            spot += 3;
        text[spot] = '\x7f' - 0x70; // one more control character (0x0f)
        EXPECT_TRUE(TextFile::looksBinary(text)) << "above 5 %";
    }
    EXPECT_FALSE(TextFile::looksBinary(std::string()));
    EXPECT_FALSE(TextFile::looksBinary(std::string(70000, 'a') + std::string(1, '\0')))
        << "a zero byte beyond what is examined";
    EXPECT_TRUE(TextFile::looksBinary(std::string("text\0", 5)));
}

TEST(FileSearch, FindsTheSameFilesAsGrep)
{
    if (!test::haveProgram("grep"))
        GTEST_SKIP() << "grep is not installed";
    TempTree tree;
    std::mt19937 random(7);
    const char* words[] = {"alpha", "beta", "gamma", "delta", "Epsilon", "zeta", "eta", "theta\n", "\n", "iota"};
    for (int i = 0; i < 120; ++i) {
        std::string text;
        const auto length = random() % 20'000;
        while (text.size() < length)
            text += words[random() % std::size(words)] + std::string(" ");
        tree.file("f/" + std::to_string(i % 7) + "/file" + std::to_string(i), text);
    }
    for (const std::string needle : {"theta\nalpha", "gamma delta Epsilon", "zeta zeta eta", "iota \n\n"}) {
        SCOPED_TRACE(needle);
        auto options = containing(needle, false, true);
        const auto ours = search(tree.root(), options).relative(tree.root());
        // grep matches within lines; compare on needles without line breaks only.
        if (needle.find('\n') != std::string::npos) {
            continue;
        }
        const auto grep = test::run({"grep", "-rlF", "--", needle, "."}, tree.root());
        std::vector<std::string> theirs;
        std::istringstream lines(grep.out);
        for (std::string line; std::getline(lines, line);)
            theirs.push_back(fs::path(line).lexically_normal().native());
        std::ranges::sort(theirs);
        EXPECT_EQ(ours, theirs);
        EXPECT_FALSE(ours.empty());
    }
}

} // namespace
} // namespace orbisk
