// The viewer (F3): any file, at once: text read in pages, binary files as a hex dump, images.
#pragma once

#include "text/PagedFile.h"

#include <QFutureWatcher>
#include <QMainWindow>

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

class QAction;
class QLabel;
class QScrollArea;
class QStackedWidget;
class QTimer;

namespace orbisk {

class FindBar;
class PagedTextView;

class ViewerWindow : public QMainWindow {
    Q_OBJECT
public:
    enum class Content { text, hex, image, failed };

    /// Opens path at once; a file that cannot be shown gives a window saying why.
    explicit ViewerWindow(const std::filesystem::path& path, QWidget* parent = nullptr);
    ~ViewerWindow() override;

    [[nodiscard]] Content content() const { return content_; }
    [[nodiscard]] PagedTextView* view() const { return view_; }
    [[nodiscard]] FindBar* findBar() const { return findBar_; }
    [[nodiscard]] QString statusText() const;
    [[nodiscard]] QAction* wrapAction() const { return wrap_; }
    [[nodiscard]] QAction* followAction() const { return follow_; }
    [[nodiscard]] QAction* hexAction() const { return hex_; }
    /// Whether a search is running on its worker thread.
    [[nodiscard]] bool searching() const { return search_.isRunning(); }
    /// How often a followed file is checked for growth, in milliseconds.
    void setFollowInterval(int milliseconds);

    /// Searches for the find bar's text after the current match (or the top), wrapping around once.
    void findNext();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void open();
    void showImage(const std::string& bytes);
    void showFailure(const QString& message);
    void buildActions();
    void updateStatus();
    void searchFinished();
    void stopSearch();

    std::filesystem::path path_;
    Content content_ = Content::failed;
    std::shared_ptr<PagedFile> file_;
    QString encodingText_;
    QStackedWidget* stack_;
    PagedTextView* view_;
    QScrollArea* imageArea_;
    QLabel* message_;
    FindBar* findBar_;
    QLabel* status_;
    QAction* wrap_ = nullptr;
    QAction* follow_ = nullptr;
    QAction* hex_ = nullptr;
    QTimer* followTimer_;
    struct SearchResult {
        std::optional<std::int64_t> offset;
        bool wrapped = false;
    };
    QFutureWatcher<SearchResult> search_;
    std::stop_source stopSearch_;
    std::int64_t searchLength_ = 0;
};

} // namespace orbisk
