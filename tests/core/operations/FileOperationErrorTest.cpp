#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <set>
#include <string>
#include <vector>

#include "operations/AnyError.h"
#include "operations/FileOperationError.h"

namespace orbisk {
namespace {

using E = FileOperationError;

TEST(FileOperationError, EveryCaseHasItsOwnMessageNamingTheItemByItsLastComponent)
{
    // One awkward path for every case that carries one: blanks, a trailing "/", and parent folders
    // that the message must not show unless it shows the whole path.
    const E::Path path = "/home/u/My Photos/2024 trip/";
    const std::string name = "“2024 trip”";
    struct Case {
        FileOperationError error;
        std::string shows; // what the message must hold to tell the user which item it is about
        bool wholePath;
    };
    const std::vector<Case> cases = {
        {E::destinationInsideSource(path, "/home/u/My Photos/2024 trip/day 1"), name, false},
        {E::alreadyInDestination("a “quoted” name"), "“a “quoted” name”", false},
        {E::destinationNotFolder(path), "“/home/u/My Photos/2024 trip/”", true},
        {E::itemMissing(path), name, false},
        {E::itemExists("2024 trip"), name, false},
        {E::invalidName("a/b", "a reason."), "“a/b”", false},
        {E::unsupportedFileType(path), name, false},
        {E::insufficientSpace(1'200'000'000, 5'000), "1.2 GB", false},
        {E::sourceNotRemoved(path, "a reason."), name, false},
        {E::notADirectory(path), "“/home/u/My Photos/2024 trip/”", true},
        {E::cleanupFailed(path, "a reason."), name, false},
        {E::cannotReplace("2024 trip", "a reason."), name, false},
        {E::cannotMerge("2024 trip", "a reason."), name, false},
        {E::system(ENOENT, "copy", path), name, false},
        {E::renameLeftAtTemporaryName(ENOENT, path, ".2024 trip.tmp"), name, false},
        {E::changedSinceComparison(path), name, false},
    };
    std::set<E::Kind> kinds;
    std::set<std::string> messages;
    for (const auto& c : cases) {
        const auto message = c.error.errorDescription();
        SCOPED_TRACE(message);
        kinds.insert(c.error.kind());
        messages.insert(message);
        EXPECT_NE(message.find(c.shows), std::string::npos);
        if (!c.wholePath && c.error.kind() != E::Kind::destinationInsideSource) {
            EXPECT_EQ(message.find("My Photos"), std::string::npos) << "only the last component is shown";
        }
        EXPECT_TRUE(message.ends_with(".")) << "a message is a sentence";
        EXPECT_EQ(c.error.posixCode().has_value(),
                  c.error.kind() == E::Kind::system || c.error.kind() == E::Kind::renameLeftAtTemporaryName);
    }
    EXPECT_EQ(kinds.size(), cases.size()) << "every case is tried";
    EXPECT_EQ(messages.size(), cases.size()) << "no two cases share a message";
    EXPECT_EQ(E::itemMissing("/").errorDescription().find("“/”"), 0u) << "the root is shown as itself";
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
