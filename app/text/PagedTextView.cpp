#include "text/PagedTextView.h"

#include "text/TextFile.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace orbisk {
namespace {

constexpr int tabWidth = 8;
constexpr int scrollRange = 1'000'000; // the scroll bar's steps, spread over the bytes of the file
constexpr std::int64_t hexRow = static_cast<std::int64_t>(TextFile::hexBytesPerLine);

// Length of the UTF-8 sequence a lead byte starts; 1 for a stray byte, which shows as U+FFFD.
int sequenceLength(unsigned char lead)
{
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    if (lead >= 0xE0)
        return lead <= 0xEF ? 3 : 1;
    if (lead >= 0xC2)
        return 2;
    return 1;
}

struct Piece {
    std::int64_t offset = 0; ///< of its first byte
    std::int64_t length = 0;
    QString text;
};

// Cuts one line of the file into display lines of at most `columns` characters (no limit when
// columns is 0), with tabs expanded and control characters shown as U+FFFD.
std::vector<Piece> layoutLine(const std::string& bytes, std::int64_t offset, int columns)
{
    std::vector<Piece> pieces(1, Piece{offset, 0, {}});
    int column = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[at]);
        auto length = static_cast<std::size_t>(sequenceLength(lead));
        length = std::min(length, bytes.size() - at);
        QString character;
        if (lead == '\t') {
            character = QString(tabWidth - column % tabWidth, QLatin1Char(' '));
        } else if (lead == '\n' || lead == '\r') {
            character.clear(); // the end of the line is not shown
        } else if (lead < 0x20 || lead == 0x7F) {
            character = QChar(0xFFFD);
        } else {
            character = QString::fromUtf8(bytes.data() + at, static_cast<qsizetype>(length));
            if (character.contains(QChar(0xFFFD)) && length > 1) {
                length = 1; // a broken sequence: one replacement per byte, then resynchronise
                character = QChar(0xFFFD);
            }
        }
        const int width = static_cast<int>(character.size());
        if (columns > 0 && column + width > columns && column > 0) {
            pieces.push_back(Piece{offset + static_cast<std::int64_t>(at), 0, {}});
            column = 0;
            if (lead == '\t')
                character = QString(tabWidth, QLatin1Char(' '));
        }
        pieces.back().text += character;
        pieces.back().length += static_cast<std::int64_t>(length);
        column += static_cast<int>(character.size());
        at += length;
    }
    return pieces;
}

} // namespace

PagedTextView::PagedTextView(QWidget* parent) : QAbstractScrollArea(parent)
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setFocusPolicy(Qt::StrongFocus);
    verticalScrollBar()->setRange(0, 0);
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this](int action) {
        const int lines = visibleLineCount();
        std::int64_t next = top_;
        switch (action) {
        case QAbstractSlider::SliderSingleStepAdd: next = stepDisplayLines(top_, 1); break;
        case QAbstractSlider::SliderSingleStepSub: next = stepDisplayLines(top_, -1); break;
        case QAbstractSlider::SliderPageStepAdd: next = stepDisplayLines(top_, std::max(1, lines - 1)); break;
        case QAbstractSlider::SliderPageStepSub: next = stepDisplayLines(top_, -std::max(1, lines - 1)); break;
        default: return;
        }
        setTop(next);
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        if (settingScrollBar_ || !file_ || file_->size() == 0)
            return;
        const auto offset =
            static_cast<std::int64_t>(static_cast<double>(value) / scrollRange * static_cast<double>(file_->size()));
        top_ = displayLineStart(std::min(offset, file_->size()));
        viewport()->update();
    });
}

void PagedTextView::setFile(std::shared_ptr<PagedFile> file, Mode mode)
{
    file_ = std::move(file);
    mode_ = mode;
    top_ = 0;
    horizontal_ = 0;
    highlightOffset_ = -1;
    highlightLength_ = 0;
    updateScrollBar();
    viewport()->update();
}

void PagedTextView::setMode(Mode mode)
{
    if (mode == mode_)
        return;
    mode_ = mode;
    setTop(top_);
}

void PagedTextView::setWrapping(bool wrap)
{
    wrap_ = wrap;
    horizontal_ = 0;
    horizontalScrollBar()->setValue(0);
    setTop(top_);
}

int PagedTextView::visibleLineCount() const
{
    return std::max(1, viewport()->height() / std::max(1, fontMetrics().lineSpacing()));
}

int PagedTextView::columns() const
{
    return std::max(8, viewport()->width() / std::max(1, fontMetrics().horizontalAdvance(QLatin1Char('M'))));
}

std::int64_t PagedTextView::displayLineStart(std::int64_t offset) const
{
    if (!file_)
        return 0;
    offset = std::clamp<std::int64_t>(offset, 0, file_->size());
    if (mode_ == Mode::hex)
        return offset / hexRow * hexRow;
    const auto line = file_->lineStart(offset);
    if (!wrap_)
        return line;
    const auto bytes = file_->read(line, static_cast<std::size_t>(file_->nextLineStart(line) - line));
    std::int64_t start = line;
    for (const auto& piece : layoutLine(bytes, line, columns()))
        if (piece.offset <= offset)
            start = piece.offset;
    return start;
}

std::int64_t PagedTextView::stepDisplayLines(std::int64_t offset, int count) const
{
    if (!file_)
        return 0;
    if (mode_ == Mode::hex) {
        const auto last = std::max<std::int64_t>(0, (file_->size() - 1) / hexRow * hexRow);
        return std::clamp<std::int64_t>(offset + count * hexRow, 0, last);
    }
    for (; count > 0; --count) {
        const auto next = linesFrom(offset, 2);
        if (next.size() < 2)
            break;
        offset = next[1].offset;
    }
    for (; count < 0 && offset > 0; ++count)
        offset = displayLineStart(offset - 1);
    return offset;
}

std::vector<PagedTextView::Line> PagedTextView::linesFrom(std::int64_t offset, int count) const
{
    std::vector<Line> lines;
    if (!file_)
        return lines;
    const auto size = file_->size();
    while (static_cast<int>(lines.size()) < count && offset < size) {
        if (mode_ == Mode::hex) {
            auto dump = TextFile::hexDump(file_->read(offset, static_cast<std::size_t>(hexRow)),
                                          static_cast<std::uint64_t>(offset));
            if (dump.empty())
                break;
            dump.pop_back();
            const auto length = std::min(hexRow, size - offset);
            lines.push_back(Line{offset, length, QString::fromLatin1(dump)});
            offset += length;
            continue;
        }
        const auto lineStart = file_->lineStart(offset);
        const auto next = file_->nextLineStart(lineStart);
        if (next <= lineStart)
            break;
        const auto bytes = file_->read(lineStart, static_cast<std::size_t>(next - lineStart));
        for (auto& piece : layoutLine(bytes, lineStart, wrap_ ? columns() : 0)) {
            if (piece.offset < offset)
                continue; // pieces of this line above the starting point
            lines.push_back(Line{piece.offset, piece.length, std::move(piece.text)});
            if (static_cast<int>(lines.size()) == count)
                break;
        }
        offset = next;
    }
    return lines;
}

QStringList PagedTextView::visibleLines() const
{
    QStringList texts;
    for (const auto& line : linesFrom(top_, visibleLineCount()))
        texts << line.text;
    return texts;
}

bool PagedTextView::atEnd() const
{
    if (!file_)
        return true;
    const int count = visibleLineCount();
    const auto lines = linesFrom(top_, count + 1);
    return static_cast<int>(lines.size()) <= count;
}

void PagedTextView::setTop(std::int64_t offset)
{
    top_ = displayLineStart(offset);
    updateScrollBar();
    viewport()->update();
}

void PagedTextView::scrollToOffset(std::int64_t offset)
{
    const auto line = displayLineStart(offset);
    setTop(stepDisplayLines(line, -std::min(3, visibleLineCount() / 3)));
}

void PagedTextView::scrollToEnd()
{
    if (!file_)
        return;
    setTop(stepDisplayLines(displayLineStart(file_->size()), -(visibleLineCount() - 1)));
}

void PagedTextView::setHighlight(std::int64_t offset, std::int64_t length)
{
    highlightOffset_ = offset;
    highlightLength_ = length;
    const auto lines = linesFrom(top_, visibleLineCount());
    const bool shown = !lines.empty() && offset >= lines.front().offset &&
                       offset + length <= lines.back().offset + lines.back().length;
    if (!shown)
        scrollToOffset(offset);
    viewport()->update();
}

void PagedTextView::fileSizeChanged()
{
    updateScrollBar();
    viewport()->update();
}

void PagedTextView::updateScrollBar()
{
    settingScrollBar_ = true;
    auto* bar = verticalScrollBar();
    const auto size = file_ ? file_->size() : 0;
    const bool scrollable = size > 0 && (top_ > 0 || !atEnd());
    bar->setRange(0, scrollable ? scrollRange : 0);
    bar->setPageStep(scrollable ? std::max(1, scrollRange / 20) : 0);
    bar->setValue(size > 0 ? static_cast<int>(static_cast<double>(top_) / static_cast<double>(size) * scrollRange) : 0);
    horizontalScrollBar()->setRange(0, wrap_ || mode_ == Mode::hex ? 0 : 4096);
    horizontalScrollBar()->setPageStep(columns());
    settingScrollBar_ = false;
}

void PagedTextView::scrollContentsBy(int, int)
{
    horizontal_ = horizontalScrollBar()->value();
    viewport()->update();
}

void PagedTextView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    setTop(top_);
}

void PagedTextView::wheelEvent(QWheelEvent* event)
{
    const int steps = event->angleDelta().y() / 40; // three lines per notch of 120
    if (steps != 0)
        setTop(stepDisplayLines(top_, -steps));
    event->accept();
}

void PagedTextView::keyPressEvent(QKeyEvent* event)
{
    const int page = std::max(1, visibleLineCount() - 1);
    switch (event->key()) {
    case Qt::Key_Down: setTop(stepDisplayLines(top_, 1)); break;
    case Qt::Key_Up: setTop(stepDisplayLines(top_, -1)); break;
    case Qt::Key_PageDown:
    case Qt::Key_Space: setTop(stepDisplayLines(top_, page)); break;
    case Qt::Key_PageUp: setTop(stepDisplayLines(top_, -page)); break;
    case Qt::Key_Home: setTop(0); break;
    case Qt::Key_End: scrollToEnd(); break;
    case Qt::Key_Right: horizontalScrollBar()->setValue(horizontalScrollBar()->value() + 8); break;
    case Qt::Key_Left: horizontalScrollBar()->setValue(horizontalScrollBar()->value() - 8); break;
    default: QAbstractScrollArea::keyPressEvent(event); return;
    }
    event->accept();
}

void PagedTextView::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().base());
    const auto metrics = fontMetrics();
    const int height = metrics.lineSpacing();
    const int advance = metrics.horizontalAdvance(QLatin1Char('M'));
    const int left = 4 - (wrap_ ? 0 : horizontal_ * advance);
    int y = 0;
    const auto highlightEnd = highlightOffset_ + highlightLength_;
    for (const auto& line : linesFrom(top_, visibleLineCount() + 1)) {
        const auto lineEnd = line.offset + std::max<std::int64_t>(line.length, 1);
        if (highlightOffset_ >= 0 && highlightOffset_ < lineEnd && highlightEnd > line.offset) {
            QRect band(0, y, viewport()->width(), height);
            if (mode_ == Mode::text) {
                // Columns of the match within this line: the characters before it and in it.
                const auto bytes = file_->read(line.offset, static_cast<std::size_t>(line.length));
                const auto from = std::max<std::int64_t>(0, highlightOffset_ - line.offset);
                const auto to = std::min<std::int64_t>(line.length, highlightEnd - line.offset);
                const auto before =
                    layoutLine(bytes.substr(0, static_cast<std::size_t>(from)), 0, 0).front().text.size();
                const auto inside =
                    layoutLine(bytes.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)), 0, 0)
                        .front()
                        .text.size();
                // Measured on the text itself: a fixed font's advance is rarely a whole pixel.
                const int start = metrics.horizontalAdvance(line.text.left(before));
                const int end = metrics.horizontalAdvance(line.text.left(before + inside));
                band = QRect(left + start, y, end - start, height);
            }
            painter.fillRect(band, palette().highlight());
        }
        painter.setPen(palette().text().color());
        painter.drawText(left, y + metrics.ascent(), line.text);
        y += height;
    }
}

} // namespace orbisk
