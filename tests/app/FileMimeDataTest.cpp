// Clipboard and drag data for files, and typed text over prefilled paths, kept byte-exact.
#include "commands/FileMimeData.h"
#include "dialogs/TypedPath.h"

#include <QMimeData>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

using std::filesystem::path;

TEST(FileMimeData, RoundTripKeepsBytesAndTheCutMarker)
{
    const std::vector<path> paths = {"/tmp/caf\xE9", "/tmp/with space", "/tmp/\xFF\xFE"};
    for (const bool cut : {false, true}) {
        SCOPED_TRACE(cut);
        std::unique_ptr<QMimeData> data(FileMimeData::make(paths, cut));
        EXPECT_TRUE(data->hasUrls());
        EXPECT_EQ(data->data("application/x-kde-cutselection"), cut ? "1" : "0");
        EXPECT_TRUE(data->data("x-special/gnome-copied-files").startsWith(cut ? "cut\nfile:///" : "copy\nfile:///"));
        const auto offer = FileMimeData::read(data.get());
        ASSERT_TRUE(offer);
        EXPECT_EQ(offer->paths, paths);
        EXPECT_EQ(offer->cut, cut);
    }
}

TEST(FileMimeData, ReadsWhatOtherFileManagersPutThere)
{
    struct Case {
        const char* name;
        std::vector<std::pair<QString, QByteArray>> formats;
        std::optional<std::vector<path>> paths;
        bool cut;
    };
    const Case cases[] = {
        {"GNOME cut", {{"x-special/gnome-copied-files", "cut\nfile:///a%20b\nfile:///c"}}, {{"/a b", "/c"}}, true},
        {"GNOME copy with a final newline", {{"x-special/gnome-copied-files", "copy\nfile:///a\n"}}, {{"/a"}}, false},
        {"KDE cut", {{"text/uri-list", "file:///k\r\n"}, {"application/x-kde-cutselection", "1"}}, {{"/k"}}, true},
        {"a plain uri-list is a copy", {{"text/uri-list", "file:///u\r\n"}}, {{"/u"}}, false},
        {"remote files are not ours", {{"text/uri-list", "sftp://host/x\r\n"}}, std::nullopt, false},
        {"text alone is no files", {{"text/plain", "/etc/passwd"}}, std::nullopt, false},
        {"an odd GNOME verb falls back to the list",
         {{"x-special/gnome-copied-files", "link\nfile:///g"}, {"text/uri-list", "file:///l"}},
         {{"/l"}},
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QMimeData data;
        for (const auto& [type, bytes] : c.formats)
            data.setData(type, bytes);
        const auto offer = FileMimeData::read(&data);
        ASSERT_EQ(offer.has_value(), c.paths.has_value());
        if (offer) {
            EXPECT_EQ(offer->paths, *c.paths);
            EXPECT_EQ(offer->cut, c.cut);
        }
    }
}

TEST(FileMimeData, DropActionFollowsModifiersThenVolumes)
{
    EXPECT_EQ(FileMimeData::dropAction(Qt::NoModifier, true), Qt::MoveAction);
    EXPECT_EQ(FileMimeData::dropAction(Qt::NoModifier, false), Qt::CopyAction);
    EXPECT_EQ(FileMimeData::dropAction(Qt::ControlModifier, true), Qt::CopyAction);
    EXPECT_EQ(FileMimeData::dropAction(Qt::ShiftModifier, false), Qt::MoveAction);
}

TEST(TypedPath, EditsAroundBytesThatAreNotUtf8KeepThem)
{
    const std::string prefill = "/home/u/caf\xE9/report.txt";
    const QString shown = TypedPath::shown(prefill);
    ASSERT_EQ(shown, QStringLiteral("/home/u/caf\\xE9/report.txt"));
    const std::vector<std::pair<QString, std::string>> cases = {
        {shown, prefill},
        {shown + QStringLiteral(".bak"), prefill + ".bak"},
        {QStringLiteral("/home/u/caf\\xE9/summary.txt"), "/home/u/caf\xE9/summary.txt"},
        {QStringLiteral("/home/u/caf\\xE9/r\u00E9sum\u00E9.txt"), "/home/u/caf\xE9/r\xC3\xA9sum\xC3\xA9.txt"},
        {QStringLiteral("~/elsewhere"), "~/elsewhere"},
        {QString(), ""},
    };
    for (const auto& [typed, expected] : cases) {
        SCOPED_TRACE(typed.toStdString());
        EXPECT_EQ(TypedPath::bytes(prefill, typed), expected);
    }
    // The end of a prefill counts only once even when it also matches its start.
    EXPECT_EQ(TypedPath::bytes("aa", QStringLiteral("a")), "a");
    EXPECT_EQ(TypedPath::bytes("\xE9", QStringLiteral("\\xE9\\xE9")), "\xE9\\xE9");
}

} // namespace
} // namespace orbisk::test
