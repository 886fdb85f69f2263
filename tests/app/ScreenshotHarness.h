// The real window over a made-up home folder, for the pictures in docs/screenshots. They are taken
// only when ORBISK_SCREENSHOT_DIR names a folder (run under Xvfb with QT_QPA_PLATFORM=xcb).
#pragma once

#include "AppSettings.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "windows/MainWindow.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {

class ScreenshotHarness : public ::testing::Test {
protected:
    /// Whether pictures were asked for; a fixture's SetUp skips the test when not.
    bool picturesWanted()
    {
        const auto folder = qgetenv("ORBISK_SCREENSHOT_DIR");
        output_ = folder.toStdString();
        return !folder.isEmpty();
    }

    /// Opens the window with HOME at home_ and the two panes on left and right, once they are read.
    void openWindow(const std::filesystem::path& left, const std::filesystem::path& right)
    {
        oldHome_ = qgetenv("HOME");
        qputenv("HOME", QByteArray::fromStdString(home_.root().native()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((home_ / ".local/share").native()));
        settings_ = std::make_unique<AppSettings>(QString::fromStdString((config_.root() / "s.ini").native()));
        window_ = std::make_unique<MainWindow>(*settings_);
        window_->resize(1400, 900);
        window_->move(0, 0);
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
        window_->pane(Side::left).navigate(left);
        window_->pane(Side::right).navigate(right);
        ASSERT_TRUE(QTest::qWaitFor(
            [this] { return !window_->pane(Side::left).isLoading() && !window_->pane(Side::right).isLoading(); }));
    }

    void TearDown() override
    {
        window_.reset();
        if (!oldHome_.isNull())
            qputenv("HOME", oldHome_);
    }

    /// The whole screen, after settle milliseconds for the last repaints, as output_/name.
    void snap(const char* name, int settle = 300)
    {
        QTest::qWait(settle);
        const auto picture = QGuiApplication::primaryScreen()->grabWindow(0);
        ASSERT_TRUE(picture.save(QString::fromStdString((output_ / name).native()), "PNG"));
    }

    std::filesystem::path output_;
    TempTree home_;
    TempTree config_;
    QByteArray oldHome_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace orbisk::test
