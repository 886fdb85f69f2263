#include "text/ViewerWindow.h"

#include "shortcuts/ShortcutCommand.h"
#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "text/FindBar.h"
#include "text/PagedTextView.h"
#include "text/TextFile.h"
#include "windows/CommandKeys.h"

#include <QAction>
#include <QBuffer>
#include <QCloseEvent>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMimeDatabase>
#include <QScrollArea>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

// Images up to this size are shown as images; larger ones as a hex dump, like any binary.
constexpr std::int64_t imageSizeLimit = 256 << 20;

bool looksLikeImage(const std::string& head)
{
    const QByteArray bytes = QByteArray::fromRawData(head.data(), static_cast<qsizetype>(head.size()));
    const auto type = QMimeDatabase().mimeTypeForData(bytes);
    return type.name().startsWith(QLatin1String("image/")) &&
           QImageReader::supportedMimeTypes().contains(type.name().toLatin1());
}

} // namespace

ViewerWindow::ViewerWindow(const std::filesystem::path& path, QWidget* parent)
    : QMainWindow(parent), path_(path), stack_(new QStackedWidget(this)), view_(new PagedTextView(this)),
      imageArea_(new QScrollArea(this)), message_(new QLabel(this)), findBar_(new FindBar(false, this)),
      status_(new QLabel(this)), followTimer_(new QTimer(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(qtext(DisplayText::visible(path.filename().native())));
    resize(900, 640);
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    stack_->addWidget(view_);
    imageArea_->setAlignment(Qt::AlignCenter);
    stack_->addWidget(imageArea_);
    message_->setAlignment(Qt::AlignCenter);
    message_->setWordWrap(true);
    stack_->addWidget(message_);
    layout->addWidget(stack_, 1);
    layout->addWidget(findBar_);
    setCentralWidget(central);
    statusBar()->addWidget(status_, 1);
    connect(findBar_, &FindBar::findNext, this, &ViewerWindow::findNext);
    connect(findBar_, &FindBar::closed, view_, [this] { view_->setFocus(); });
    connect(&search_, &QFutureWatcher<SearchResult>::finished, this, &ViewerWindow::searchFinished);
    followTimer_->setInterval(500);
    connect(followTimer_, &QTimer::timeout, this, [this] {
        const bool atEnd = view_->atEnd();
        if (file_ && file_->refresh()) {
            view_->fileSizeChanged();
            if (atEnd)
                view_->scrollToEnd();
            updateStatus();
        }
    });
    buildActions();
    open();
}

ViewerWindow::~ViewerWindow()
{
    stopSearch();
}

void ViewerWindow::setFollowInterval(int milliseconds)
{
    followTimer_->setInterval(milliseconds);
}

void ViewerWindow::buildActions()
{
    using C = ShortcutCommand;
    auto* menu = menuBar()->addMenu(qtext(translate("Orbisk", "&View")));
    auto* find = menu->addAction(qtext(translate("Orbisk", "Find…")));
    find->setShortcuts(CommandKeys::keys(C::findText));
    connect(find, &QAction::triggered, findBar_, &FindBar::open);
    auto* next = menu->addAction(qtext(translate("Orbisk", "Find Next")));
    next->setShortcuts(CommandKeys::keys(C::findNextText));
    connect(next, &QAction::triggered, this, [this] {
        if (findBar_->findText().isEmpty())
            findBar_->open();
        else
            findNext();
    });
    menu->addSeparator();
    wrap_ = menu->addAction(qtext(translate("Orbisk", "Wrap Lines")));
    wrap_->setCheckable(true);
    connect(wrap_, &QAction::toggled, view_, &PagedTextView::setWrapping);
    hex_ = menu->addAction(qtext(translate("Orbisk", "Show as Hex")));
    hex_->setCheckable(true);
    connect(hex_, &QAction::toggled, this, [this](bool on) {
        view_->setMode(on ? PagedTextView::Mode::hex : PagedTextView::Mode::text);
        updateStatus();
    });
    follow_ = menu->addAction(qtext(translate("Orbisk", "Follow Growing File")));
    follow_->setCheckable(true);
    connect(follow_, &QAction::toggled, this, [this](bool on) {
        if (on) {
            view_->scrollToEnd();
            followTimer_->start();
        } else {
            followTimer_->stop();
        }
    });
    menu->addSeparator();
    auto* close = menu->addAction(qtext(translate("Orbisk", "Close")));
    close->setShortcuts(CommandKeys::keys(C::closeWindow));
    connect(close, &QAction::triggered, this, &QWidget::close);
}

void ViewerWindow::open()
{
    auto opened = PagedFile::open(path_);
    if (!opened) {
        showFailure(qtext(opened.error().errorDescription()));
        return;
    }
    file_ = std::make_shared<PagedFile>(std::move(*opened));
    const auto head = file_->head(TextFile::binaryTestLength);
    if (looksLikeImage(head) && file_->size() <= imageSizeLimit) {
        showImage(file_->read(0, static_cast<std::size_t>(file_->size())));
        if (content_ == Content::image)
            return;
    }
    // The classification of the head decides between text and hex; a file that is not valid
    // UTF-8 as a whole is still shown as text, with its broken bytes visible as replacements.
    const auto classification = TextFile::classify(head);
    auto mode = PagedTextView::Mode::text;
    if (classification.kind == TextClassification::Kind::binary) {
        mode = PagedTextView::Mode::hex;
        encodingText_ = qtext(translate("Orbisk", "Binary"));
    } else if (classification.isText() && (classification.encoding == TextEncodingKind::utf16LE ||
                                           classification.encoding == TextEncodingKind::utf16BE)) {
        // UTF-16 has no line feed byte to page by: decoded whole, within the editor's limit.
        auto loaded = TextFile::load(path_);
        if (loaded) {
            file_ = std::make_shared<PagedFile>(PagedFile::fromBytes(std::move(loaded->text)));
            encodingText_ = qtext(displayName(loaded->encoding) + " · " + displayName(loaded->lineEnding));
        } else {
            mode = PagedTextView::Mode::hex;
            encodingText_ = qtext(loaded.error().errorDescription());
        }
    } else if (classification.isText() || classification.kind == TextClassification::Kind::unknownEncoding) {
        const auto endings = TextFile::lineEndings(head);
        const bool utf8 = classification.isText();
        encodingText_ = utf8 ? qtext(displayName(classification.encoding) + " · " + displayName(endings.dominant))
                             : qtext(translate("Orbisk", "Not UTF-8: invalid bytes shown as �"));
    }
    content_ = mode == PagedTextView::Mode::hex ? Content::hex : Content::text;
    hex_->setChecked(mode == PagedTextView::Mode::hex);
    view_->setFile(file_, mode);
    stack_->setCurrentWidget(view_);
    view_->setFocus();
    updateStatus();
}

void ViewerWindow::showImage(const std::string& bytes)
{
    QByteArray encoded(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&encoded);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull())
        return;
    auto* label = new QLabel;
    label->setPixmap(QPixmap::fromImage(image));
    imageArea_->setWidget(label);
    stack_->setCurrentWidget(imageArea_);
    content_ = Content::image;
    encodingText_ = QStringLiteral("%1 × %2").arg(image.width()).arg(image.height());
    hex_->setEnabled(false);
    wrap_->setEnabled(false);
    follow_->setEnabled(false);
    updateStatus();
}

void ViewerWindow::showFailure(const QString& message)
{
    content_ = Content::failed;
    message_->setText(message);
    stack_->setCurrentWidget(message_);
    for (auto* action : {wrap_, hex_, follow_})
        action->setEnabled(false);
    status_->setText(message);
}

void ViewerWindow::updateStatus()
{
    if (!file_)
        return;
    status_->setText(encodingText_ + QStringLiteral(" · ") + qtext(formatByteCount(file_->size())));
}

QString ViewerWindow::statusText() const
{
    return status_->text();
}

void ViewerWindow::findNext()
{
    if (!file_ || content_ == Content::image || findBar_->findText().isEmpty())
        return;
    stopSearch();
    const auto needle = findBar_->findText().toStdString();
    const bool matchCase = findBar_->matchCase();
    const auto from = view_->highlightEnd() > 0 ? view_->highlightEnd() : view_->topOffset();
    searchLength_ = static_cast<std::int64_t>(needle.size());
    stopSearch_ = std::stop_source();
    findBar_->setMessage(qtext(translate("Orbisk", "Searching…")));
    // The search reads the file on a worker thread with its own reads; the view keeps scrolling.
    search_.setFuture(QtConcurrent::run([file = file_, needle, matchCase, from, stop = stopSearch_.get_token()] {
        const auto size = file->size();
        if (auto found = file->find(needle, from, size, matchCase, stop))
            return SearchResult{found, false};
        return SearchResult{
            file->find(needle, 0, std::min(size, from + static_cast<std::int64_t>(needle.size())), matchCase, stop),
            true};
    }));
}

void ViewerWindow::searchFinished()
{
    if (search_.isCanceled() || stopSearch_.stop_requested())
        return;
    const auto result = search_.result();
    if (!result.offset) {
        findBar_->setMessage(qtext(translate("Orbisk", "Not found")));
        return;
    }
    findBar_->setMessage(result.wrapped ? qtext(translate("Orbisk", "Search wrapped to the beginning")) : QString());
    view_->setHighlight(*result.offset, searchLength_);
}

void ViewerWindow::stopSearch()
{
    stopSearch_.request_stop();
    search_.waitForFinished();
}

void ViewerWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        event->accept();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void ViewerWindow::closeEvent(QCloseEvent* event)
{
    stopSearch();
    followTimer_->stop();
    event->accept();
}

} // namespace orbisk
