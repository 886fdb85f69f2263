#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <string>
#include <vector>

#include "operations/AnyError.h"
#include "operations/FileOperationError.h"

namespace orbisk {
namespace {

using E = FileOperationError;

struct MessageCase {
    FileOperationError error;
    std::string message;
};

TEST(FileOperationError, EveryCaseReadsItsOwnMessage)
{
    const std::string noSuchFile = "No such file or directory";
    const std::vector<MessageCase> cases = {
        {E::destinationInsideSource("/a/Photos", "/a/Photos/2024"),
         "“Photos” can’t be copied or moved into itself or one of its own subfolders (/a/Photos/2024)."},
        {E::alreadyInDestination("notes.txt"), "“notes.txt” is already in the destination folder."},
        {E::destinationNotFolder("/x/y"), "The destination “/x/y” is not an existing folder."},
        {E::itemMissing("/x/gone.txt"),
         "“gone.txt” no longer exists. It may have been moved or deleted by another application."},
        {E::itemExists("a b"), "An item named “a b” already exists."},
        {E::invalidName("a/b", "a name can’t contain “/”."),
         "“a/b” can’t be used as a name: a name can’t contain “/”."},
        {E::unsupportedFileType("/dev/pipe"), "“pipe” is a special file (device, socket or pipe) and was not copied."},
        {E::insufficientSpace(1'200'000'000, 5'000),
         "Not enough free space on the destination volume: 1.2 GB needed, 5.0 kB available."},
        {E::sourceNotRemoved("/a/b.txt", "It is locked."),
         "“b.txt” was copied, but the original could not be removed: It is locked."},
        {E::notADirectory("/a/b.txt"), "“/a/b.txt” is not a folder."},
        {E::cleanupFailed("/a/part/", "Busy."), "The incomplete copy “part” could not be removed: Busy."},
        {E::cannotReplace("x", "Busy."), "“x” was not replaced: Busy."},
        {E::cannotMerge("x", "Busy."), "“x” was not merged: Busy."},
        {E::system(ENOENT, "copy", "/a/b.txt"), "Couldn’t copy “b.txt”: " + noSuchFile + "."},
        {E::renameLeftAtTemporaryName(ENOENT, "/a/b.txt", ".b.txt.tmp"),
         "Couldn’t rename (the item is now named .b.txt.tmp) “b.txt”: " + noSuchFile + "."},
        {E::changedSinceComparison("/a/b.txt"),
         "“b.txt” changed after the folders were compared, so it was left alone. Compare again to include it."},
    };
    ASSERT_EQ(cases.size(), 16U);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].message);
        EXPECT_EQ(static_cast<std::size_t>(cases[i].error.kind()), i) << "cases keep their order of declaration";
        EXPECT_EQ(cases[i].error.errorDescription(), cases[i].message);
        EXPECT_EQ(cases[i].error.posixCode().has_value(),
                  i == static_cast<std::size_t>(E::Kind::system) ||
                      i == static_cast<std::size_t>(E::Kind::renameLeftAtTemporaryName));
    }
}

TEST(FileOperationError, SystemErrorsChooseTheirMessageByTheExactAction)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"rename", "Couldn’t rename “b.txt”: %."},
        {"copy", "Couldn’t copy “b.txt”: %."},
        {"move", "Couldn’t move “b.txt”: %."},
        {"read", "Couldn’t read “b.txt”: %."},
        {"save", "Couldn’t save “b.txt”: %."},
        {"create", "Couldn’t create “b.txt”: %."},
        {"create the file", "Couldn’t create the file “b.txt”: %."},
        {"create the folder", "Couldn’t create the folder “b.txt”: %."},
        {"create the folder for", "Couldn’t create the folder for “b.txt”: %."},
        {"create the archive", "Couldn’t create the archive “b.txt”: %."},
        {"create the link", "Couldn’t create the link “b.txt”: %."},
        {"copy the link", "Couldn’t copy the link “b.txt”: %."},
        {"copy the attributes of", "Couldn’t copy the attributes of “b.txt”: %."},
        {"move the extracted item", "Couldn’t move the extracted item “b.txt”: %."},
        {"write into", "Couldn’t write into “b.txt”: %."},
        {"delete", "The operation on “b.txt” couldn’t be completed: %."},
        {"Copy", "The operation on “b.txt” couldn’t be completed: %."},
        {"", "The operation on “b.txt” couldn’t be completed: %."},
    };
    for (const auto& [action, pattern] : table) {
        SCOPED_TRACE(action);
        auto expected = pattern;
        expected.replace(expected.find('%'), 1, "No such file or directory");
        EXPECT_EQ(E::system(ENOENT, action, "/a/b.txt").errorDescription(), expected);
    }
    EXPECT_EQ(E::system(EACCES, "read", "/").errorDescription(), "Couldn’t read “/”: Permission denied.");
}

TEST(FileOperationError, NamesThatAreNotTextAreShownVisibly)
{
    EXPECT_EQ(E::itemMissing("/x/caf\xE9\n.txt").errorDescription(),
              "“caf\\xE9\\n.txt” no longer exists. It may have been moved or deleted by another application.");
}

// An error of another kind, as undo or ZIP reading would have, optionally with an underlying code.
struct OtherError {
    std::optional<std::error_code> underlying;
    [[nodiscard]] std::string errorDescription() const { return "other"; }
    [[nodiscard]] std::optional<std::error_code> underlyingError() const { return underlying; }
};

struct PlainError {
    [[nodiscard]] std::string errorDescription() const { return "plain"; }
};

TEST(AnyError, TellsPermissionProblemsByCodeAndDomain)
{
    const auto posix = [](int code) { return std::error_code(code, std::generic_category()); };
    const std::vector<std::tuple<const char*, AnyError, bool>> cases = {
        {"system EACCES", E::system(EACCES, "copy", "/a"), true},
        {"system EPERM", E::system(EPERM, "move", "/a"), true},
        {"system ENOENT", E::system(ENOENT, "copy", "/a"), false},
        {"left at temporary name, EACCES", E::renameLeftAtTemporaryName(EACCES, "/a", ".t"), true},
        {"item exists", E::itemExists("a"), false},
        {"a reason that reads like a permission problem", E::cannotReplace("a", "Permission denied."), false},
        {"generic EACCES", posix(EACCES), true},
        {"system category EPERM", std::error_code(EPERM, std::system_category()), true},
        {"generic ENOSPC", posix(ENOSPC), false},
        {"another domain with the same number", std::error_code(EACCES, std::future_category()), false},
        {"underlying POSIX EACCES", OtherError{posix(EACCES)}, true},
        {"underlying POSIX ENOENT", OtherError{posix(ENOENT)}, false},
        {"underlying in another domain", OtherError{std::error_code(EPERM, std::future_category())}, false},
        {"no underlying error", OtherError{}, false},
        {"nothing to go by", PlainError{}, false},
    };
    for (const auto& [name, error, denied] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(error.isPermissionDenied(), denied);
    }
}

TEST(AnyError, KeepsTheErrorItsTypeAndItsMessage)
{
    const AnyError error = E::itemExists("x");
    ASSERT_NE(error.as<FileOperationError>(), nullptr);
    EXPECT_EQ(*error.as<FileOperationError>(), E::itemExists("x"));
    EXPECT_EQ(error.as<std::error_code>(), nullptr);
    const AnyError code = std::error_code(ENOENT, std::generic_category());
    EXPECT_EQ(code.description(), "No such file or directory");
    ASSERT_NE(code.as<std::error_code>(), nullptr);
    EXPECT_EQ(code.as<std::error_code>()->value(), ENOENT);
}

} // namespace
} // namespace orbisk
