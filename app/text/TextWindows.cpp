#include "text/TextWindows.h"

#include "support/L10n.h"
#include "text/EditorWindow.h"
#include "text/QuickPreview.h"
#include "text/TextFile.h"
#include "text/ViewerWindow.h"

#include <QFutureWatcher>
#include <QMessageBox>
#include <QPushButton>
#include <QWidget>
#include <QtConcurrent/QtConcurrentRun>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

TextWindows::TextWindows(QWidget* window, std::function<bool(const std::filesystem::path&)> openFile)
    : QObject(window), window_(window), openFile_(std::move(openFile))
{
}

void TextWindows::view(const std::filesystem::path& path)
{
    auto* viewer = new ViewerWindow(path, window_);
    viewer->setWindowFlag(Qt::Window);
    viewer->show();
}

void TextWindows::edit(const std::filesystem::path& path)
{
    for (auto* editor : window_->findChildren<EditorWindow*>()) {
        if (editor->path() == path) {
            editor->raise();
            editor->activateWindow();
            return;
        }
    }
    auto* watcher = new QFutureWatcher<std::expected<LoadedText, TextFileError>>(this);
    connect(watcher, &QFutureWatcher<std::expected<LoadedText, TextFileError>>::finished, this, [this, watcher, path] {
        watcher->deleteLater();
        auto loaded = watcher->result();
        if (loaded) {
            auto* editor = new EditorWindow(path, std::move(*loaded), window_);
            editor->setWindowFlag(Qt::Window);
            editor->show();
            emit editorOpened(editor);
            return;
        }
        // Not text at all: the file belongs to another application.
        if (loaded.error().kind == TextFileError::Kind::binary && openFile_ && openFile_(path))
            return;
        refuse(path, qtext(loaded.error().errorDescription()));
    });
    watcher->setFuture(QtConcurrent::run([path] { return TextFile::load(path); }));
}

void TextWindows::refuse(const std::filesystem::path& path, const QString& reason)
{
    auto* box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Orbisk"),
                        qtext(L(translate("Orbisk", "“%@” couldn’t be opened for editing."), path.filename().native())),
                        QMessageBox::Cancel, window_);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(reason);
    auto* open = box->addButton(qtext(translate("Orbisk", "Open in Default Application")), QMessageBox::AcceptRole);
    connect(open, &QPushButton::clicked, this, [this, path] {
        if (openFile_)
            (void)openFile_(path);
    });
    box->open();
}

void TextWindows::togglePreview(const std::filesystem::path& path)
{
    if (previewShown()) {
        preview_->hide();
        return;
    }
    if (!preview_) {
        preview_ = new QuickPreview(window_);
        connect(preview_, &QuickPreview::closeRequested, preview_, &QWidget::hide);
    }
    preview_->show();
    preview_->showItem(path);
}

void TextWindows::follow(const std::filesystem::path& path)
{
    if (previewShown() && preview_->item() != path)
        preview_->showItem(path);
}

QuickPreview* TextWindows::preview() const
{
    return preview_;
}

bool TextWindows::previewShown() const
{
    return preview_ && preview_->isVisible();
}

bool TextWindows::mayClose()
{
    bool may = true;
    for (auto* editor : window_->findChildren<EditorWindow*>()) {
        if (editor->isModified()) {
            editor->raise();
            editor->close(); // asks whether to save
            may = false;
        }
    }
    return may;
}

} // namespace orbisk
