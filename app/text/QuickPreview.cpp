#include "text/QuickPreview.h"

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "text/PagedFile.h"
#include "text/TextFile.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QFutureWatcher>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeDatabase>
#include <QPlainTextEdit>
#include <QPointer>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

#include <dirent.h>
#include <sys/stat.h>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

constexpr std::size_t textPreviewBytes = 64 * 1024;
constexpr std::size_t hexPreviewBytes = 4 * 1024;
constexpr std::int64_t imagePreviewLimit = 64 << 20;

} // namespace

QuickPreview::QuickPreview(QWidget* parent)
    : QWidget(parent, Qt::Tool), title_(new QLabel(this)), stack_(new QStackedWidget(this)),
      text_(new QPlainTextEdit(this)), image_(new QLabel(this)), message_(new QLabel(this))
{
    setWindowTitle(qtext(translate("Orbisk", "Quick Preview")));
    // The keyboard stays with the pane, so that the arrows move the cursor the preview follows.
    setAttribute(Qt::WA_ShowWithoutActivating);
    resize(520, 420);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    title_->setTextFormat(Qt::PlainText);
    layout->addWidget(title_);
    text_->setReadOnly(true);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFocusPolicy(Qt::NoFocus);
    image_->setAlignment(Qt::AlignCenter);
    message_->setAlignment(Qt::AlignCenter);
    message_->setWordWrap(true);
    stack_->addWidget(text_);
    stack_->addWidget(image_);
    stack_->addWidget(message_);
    layout->addWidget(stack_, 1);
}

QuickPreview::Result QuickPreview::read(const std::filesystem::path& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {Content::message, qtext(TextFileError::system(errno, "read", path).errorDescription()), {}};
    if (S_ISDIR(status.st_mode)) {
        DIR* folder = ::opendir(path.c_str());
        if (!folder)
            return {Content::message, qtext(TextFileError::system(errno, "read", path).errorDescription()), {}};
        long long count = 0;
        while (const auto* entry = ::readdir(folder)) {
            const std::string_view name = entry->d_name;
            count += name != "." && name != "..";
        }
        ::closedir(folder);
        return {Content::folder,
                qtext(count == 1 ? translate("Orbisk", "1 item") : L(translate("Orbisk", "%lld items"), count)),
                {}};
    }
    auto file = PagedFile::open(path);
    if (!file)
        return {Content::message, qtext(file.error().errorDescription()), {}};
    const auto head = file->head(textPreviewBytes);
    const QByteArray headBytes = QByteArray::fromRawData(head.data(), static_cast<qsizetype>(head.size()));
    if (QMimeDatabase().mimeTypeForData(headBytes).name().startsWith(QLatin1String("image/")) &&
        file->size() <= imagePreviewLimit) {
        const auto whole = file->read(0, static_cast<std::size_t>(file->size()));
        QByteArray encoded(whole.data(), static_cast<qsizetype>(whole.size()));
        QBuffer buffer(&encoded);
        QImageReader reader(&buffer);
        reader.setAutoTransform(true);
        const QImage image = reader.read();
        if (!image.isNull())
            return {Content::image, QStringLiteral("%1 × %2").arg(image.width()).arg(image.height()), image};
    }
    const auto classification = TextFile::classify(head);
    if (classification.isText() && (classification.encoding == TextEncodingKind::utf16LE ||
                                    classification.encoding == TextEncodingKind::utf16BE)) {
        // The head may end inside a surrogate pair: drop a unit at a time until it decodes.
        for (std::size_t length = head.size() & ~std::size_t{1}; length + 4 >= head.size() && length >= 2;
             length -= 2) {
            if (auto text = TextFile::decode(head.substr(0, length), classification.encoding))
                return {Content::text, qtext(TextFile::normalizeLineEndings(*text)), {}};
        }
    } else if (classification.kind != TextClassification::Kind::binary) {
        // A cut at the end of the head may split a character, which then shows as a replacement.
        return {Content::text, QString::fromUtf8(headBytes).replace(QStringLiteral("\r\n"), QStringLiteral("\n")), {}};
    }
    return {Content::hex, QString::fromLatin1(TextFile::hexDump(head.substr(0, hexPreviewBytes))), {}};
}

void QuickPreview::showItem(const std::filesystem::path& path)
{
    path_ = path;
    title_->setText(qtext(DisplayText::visible(path.filename().native())));
    const int generation = ++generation_;
    loading_ = true;
    auto* watcher = new QFutureWatcher<Result>(this);
    connect(watcher, &QFutureWatcher<Result>::finished, this, [this, watcher, generation] {
        watcher->deleteLater();
        if (generation != generation_)
            return; // the cursor moved on meanwhile
        loading_ = false;
        present(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run([path] { return read(path); }));
}

void QuickPreview::present(const Result& result)
{
    content_ = result.content;
    switch (result.content) {
    case Content::text:
    case Content::hex:
        text_->setPlainText(result.text);
        stack_->setCurrentWidget(text_);
        break;
    case Content::image: {
        const auto size = stack_->size().boundedTo(result.image.size());
        image_->setPixmap(QPixmap::fromImage(result.image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
        image_->setToolTip(result.text);
        stack_->setCurrentWidget(image_);
        break;
    }
    case Content::folder:
    case Content::message:
    case Content::none:
        message_->setText(result.text);
        stack_->setCurrentWidget(message_);
        break;
    }
}

QString QuickPreview::shownText() const
{
    if (content_ == Content::text || content_ == Content::hex)
        return text_->toPlainText();
    if (content_ == Content::image)
        return image_->toolTip();
    return message_->text();
}

void QuickPreview::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Escape) {
        emit closeRequested();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace orbisk
