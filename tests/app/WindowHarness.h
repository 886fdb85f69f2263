// A real main window over a temporary home folder, with settings and a Trash of its own.
#pragma once

#include "AppSettings.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "windows/MainWindow.h"

#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace orbisk::test {

/// Derived fixtures fill home_ in their SetUp and then call WindowTest::SetUp, which points HOME
/// and XDG_DATA_HOME into home_ and shows the window; TearDown closes it and restores both.
class WindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        oldHome_ = qgetenv("HOME");
        oldData_ = qgetenv("XDG_DATA_HOME");
        qputenv("HOME", QByteArray::fromStdString(home_.root().native()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((home_ / ".local/share").native()));
        settings_ = std::make_unique<AppSettings>(QString::fromStdString((config_.root() / "s.ini").native()));
        window_ = std::make_unique<MainWindow>(*settings_);
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
    }
    void TearDown() override
    {
        window_.reset();
        qputenv("HOME", oldHome_);
        qputenv("XDG_DATA_HOME", oldData_);
    }

    /// Both panes on folders of home_, their listings read.
    void openPanes(const std::string& left, const std::string& right)
    {
        window_->pane(Side::left).navigate(home_ / left);
        window_->pane(Side::right).navigate(home_ / right);
        ASSERT_TRUE(panesSettled());
    }
    [[nodiscard]] bool panesSettled()
    {
        return QTest::qWaitFor(
            [this] { return !window_->pane(Side::left).isLoading() && !window_->pane(Side::right).isLoading(); });
    }

    TempTree home_;
    TempTree config_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<MainWindow> window_;

private:
    QByteArray oldHome_;
    QByteArray oldData_;
};

} // namespace orbisk::test
