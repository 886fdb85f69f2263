// The quick preview (Space): a small window showing the item under the cursor, following it.
#pragma once

#include <QImage>
#include <QWidget>

#include <filesystem>

class QLabel;
class QPlainTextEdit;
class QStackedWidget;

namespace orbisk {

class QuickPreview : public QWidget {
    Q_OBJECT
public:
    enum class Content { none, text, hex, image, folder, message };

    explicit QuickPreview(QWidget* parent = nullptr);

    /// Shows path: the start of a text, an image, the start of a hex dump, or a folder's item
    /// count. The file is read on a worker thread; only the newest request is shown.
    void showItem(const std::filesystem::path& path);
    [[nodiscard]] const std::filesystem::path& item() const { return path_; }
    [[nodiscard]] Content content() const { return content_; }
    /// The text shown (the text, the hex dump, the folder's count or a message).
    [[nodiscard]] QString shownText() const;
    /// Whether a read for the current item is still under way.
    [[nodiscard]] bool loading() const { return loading_; }

signals:
    /// Space or Esc in the preview: the main window closes it.
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Result {
        Content content = Content::none;
        QString text;
        QImage image;
    };
    static Result read(const std::filesystem::path& path);
    void present(const Result& result);

    std::filesystem::path path_;
    Content content_ = Content::none;
    int generation_ = 0;
    bool loading_ = false;
    QLabel* title_;
    QStackedWidget* stack_;
    QPlainTextEdit* text_;
    QLabel* image_;
    QLabel* message_;
};

} // namespace orbisk
