// Shows a PagedFile as lines of text or as hex rows, reading only what is on screen.
#pragma once

#include "text/PagedFile.h"

#include <QAbstractScrollArea>

#include <cstdint>
#include <memory>

namespace orbisk {

/// The scroll position is a byte offset, not a line number: a file of any size scrolls at once,
/// without counting its lines first. The scroll bar maps onto the bytes of the file.
class PagedTextView : public QAbstractScrollArea {
    Q_OBJECT
public:
    enum class Mode { text, hex };

    explicit PagedTextView(QWidget* parent = nullptr);

    void setFile(std::shared_ptr<PagedFile> file, Mode mode);
    [[nodiscard]] const std::shared_ptr<PagedFile>& file() const { return file_; }
    void setMode(Mode mode);
    [[nodiscard]] Mode mode() const { return mode_; }
    void setWrapping(bool wrap);
    [[nodiscard]] bool wrapping() const { return wrap_; }

    /// The first byte shown.
    [[nodiscard]] std::int64_t topOffset() const { return top_; }
    /// Shows the line or row holding offset at the top (a little below, to give it context).
    void scrollToOffset(std::int64_t offset);
    void scrollToEnd();
    /// Whether the last line of the file is on screen (for following a growing file).
    [[nodiscard]] bool atEnd() const;
    /// Marks the bytes of a match and brings them into view.
    void setHighlight(std::int64_t offset, std::int64_t length);
    [[nodiscard]] std::int64_t highlightEnd() const { return highlightOffset_ + highlightLength_; }
    /// The file grew or shrank: the scroll range follows.
    void fileSizeChanged();

    /// The text of the lines currently on screen, as painted (for tests and copying).
    [[nodiscard]] QStringList visibleLines() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    struct Line {
        std::int64_t offset = 0;
        std::int64_t length = 0;
        QString text;
    };
    [[nodiscard]] std::vector<Line> linesFrom(std::int64_t offset, int count) const;
    [[nodiscard]] int visibleLineCount() const;
    [[nodiscard]] int columns() const;
    /// Start of the display line holding offset (a wrapped piece, a file line or a hex row).
    [[nodiscard]] std::int64_t displayLineStart(std::int64_t offset) const;
    [[nodiscard]] std::int64_t stepDisplayLines(std::int64_t offset, int count) const;
    void setTop(std::int64_t offset);
    void updateScrollBar();

    std::shared_ptr<PagedFile> file_;
    Mode mode_ = Mode::text;
    bool wrap_ = false;
    std::int64_t top_ = 0;
    std::int64_t highlightOffset_ = -1;
    std::int64_t highlightLength_ = 0;
    int horizontal_ = 0; ///< characters scrolled to the left when not wrapping
    bool settingScrollBar_ = false;
};

} // namespace orbisk
