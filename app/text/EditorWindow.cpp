#include "text/EditorWindow.h"

#include "shortcuts/ShortcutCommand.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "text/FindBar.h"
#include "text/TextFile.h"
#include "windows/CommandKeys.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTextBlock>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

std::string nameOf(const std::filesystem::path& path)
{
    return path.filename().native();
}

// The document's text with a line feed between blocks. QTextDocument::toPlainText would turn
// non-breaking spaces into spaces and line separators into line feeds, changing the file.
QString documentText(const QTextDocument& document)
{
    QString text;
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        if (block != document.begin())
            text += QLatin1Char('\n');
        text += block.text();
    }
    return text;
}

} // namespace

EditorWindow::EditorWindow(std::filesystem::path path, LoadedText loaded, QWidget* parent)
    : QMainWindow(parent), path_(std::move(path)), editor_(new QPlainTextEdit(this)), findBar_(new FindBar(true, this)),
      mixed_(new QLabel(this)), encoding_(new QComboBox(this)), lineEnding_(new QComboBox(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    resize(900, 640);
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    mixed_->setWordWrap(true);
    mixed_->setMargin(8);
    mixed_->setAutoFillBackground(true);
    mixed_->setStyleSheet(QStringLiteral("QLabel { background: #fff4c2; color: #3d3000; }"));
    layout->addWidget(mixed_);
    editor_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    editor_->setLineWrapMode(QPlainTextEdit::NoWrap);
    layout->addWidget(editor_, 1);
    layout->addWidget(findBar_);
    setCentralWidget(central);

    for (const auto kind : allTextEncodingKinds)
        encoding_->addItem(qtext(displayName(kind)), static_cast<int>(kind));
    for (const auto ending : allLineEndings)
        lineEnding_->addItem(qtext(displayName(ending)), static_cast<int>(ending));
    encoding_->setToolTip(qtext(translate("Orbisk", "Encoding used when saving")));
    lineEnding_->setToolTip(qtext(translate("Orbisk", "Line endings used when saving")));
    statusBar()->addPermanentWidget(encoding_);
    statusBar()->addPermanentWidget(lineEnding_);
    // A different encoding or line ending is a change to save, like an edit.
    for (auto* choice : {encoding_, lineEnding_})
        connect(choice, &QComboBox::activated, this, [this] { editor_->document()->setModified(true); });
    connect(lineEnding_, &QComboBox::currentIndexChanged, this, [this] {
        mixed_->setText(qtext(L(translate("Orbisk", "This file mixes line endings. Saving writes %@ everywhere."),
                                displayName(static_cast<LineEnding>(lineEnding_->currentData().toInt())))));
    });
    connect(editor_->document(), &QTextDocument::modificationChanged, this, &QWidget::setWindowModified);
    connect(findBar_, &FindBar::findNext, this, [this] { findNext(); });
    connect(findBar_, &FindBar::closed, editor_, [this] { editor_->setFocus(); });
    connect(findBar_, &FindBar::replaceOne, this, [this] {
        const auto flags = findBar_->matchCase() ? QTextDocument::FindCaseSensitively : QTextDocument::FindFlags();
        const auto selected = editor_->textCursor().selectedText();
        const auto sensitivity = flags ? Qt::CaseSensitive : Qt::CaseInsensitive;
        if (!selected.isEmpty() && selected.compare(findBar_->findText(), sensitivity) == 0)
            editor_->textCursor().insertText(findBar_->replaceText());
        findNext();
    });
    connect(findBar_, &FindBar::replaceAll, this, [this] {
        const auto needle = findBar_->findText();
        if (needle.isEmpty())
            return;
        const auto flags = findBar_->matchCase() ? QTextDocument::FindCaseSensitively : QTextDocument::FindFlags();
        // One undo step for the whole replacement.
        QTextCursor edit(editor_->document());
        edit.beginEditBlock();
        int count = 0;
        for (auto found = editor_->document()->find(needle, 0, flags); !found.isNull();
             found = editor_->document()->find(needle, found, flags)) {
            found.insertText(findBar_->replaceText());
            ++count;
        }
        edit.endEditBlock();
        findBar_->setMessage(qtext(L(translate("Orbisk", "Replaced %lld"), count)));
    });
    connect(&save_, &QFutureWatcher<Saving>::finished, this, &EditorWindow::saveFinished);
    buildActions();
    present(std::move(loaded));
}

EditorWindow::~EditorWindow()
{
    save_.waitForFinished();
}

void EditorWindow::buildActions()
{
    using C = ShortcutCommand;
    const auto add = [this](QMenu* menu, C identifier, const std::string& title) {
        auto* action = menu->addAction(qtext(title));
        action->setShortcuts(CommandKeys::keys(identifier));
        return action;
    };
    auto* file = menuBar()->addMenu(qtext(translate("Orbisk", "&File")));
    connect(add(file, C::saveText, translate("Orbisk", "Save")), &QAction::triggered, this, &EditorWindow::save);
    connect(add(file, C::saveTextAs, translate("Orbisk", "Save As…")), &QAction::triggered, this,
            &EditorWindow::saveAs);
    connect(file->addAction(qtext(translate("Orbisk", "Revert to Saved"))), &QAction::triggered, this,
            &EditorWindow::reload);
    file->addSeparator();
    connect(add(file, C::closeWindow, translate("Orbisk", "Close")), &QAction::triggered, this, &QWidget::close);

    // The text's own undo history: the file operations' history belongs to the main window.
    auto* edit = menuBar()->addMenu(qtext(translate("Orbisk", "&Edit")));
    auto* undo = add(edit, C::undoText, translate("Orbisk", "Undo Typing"));
    auto* redo = add(edit, C::redoText, translate("Orbisk", "Redo Typing"));
    undo->setEnabled(false);
    redo->setEnabled(false);
    connect(undo, &QAction::triggered, editor_, &QPlainTextEdit::undo);
    connect(redo, &QAction::triggered, editor_, &QPlainTextEdit::redo);
    connect(editor_, &QPlainTextEdit::undoAvailable, undo, &QAction::setEnabled);
    connect(editor_, &QPlainTextEdit::redoAvailable, redo, &QAction::setEnabled);
    edit->addSeparator();
    connect(add(edit, C::findText, translate("Orbisk", "Find and Replace…")), &QAction::triggered, findBar_,
            &FindBar::open);
    connect(add(edit, C::findNextText, translate("Orbisk", "Find Next")), &QAction::triggered, this, [this] {
        if (findBar_->findText().isEmpty())
            findBar_->open();
        else
            findNext();
    });
}

void EditorWindow::present(LoadedText loaded)
{
    stamp_ = loaded.stamp;
    editor_->setPlainText(qtext(loaded.text));
    editor_->document()->setModified(false);
    encoding_->setCurrentIndex(encoding_->findData(static_cast<int>(loaded.encoding)));
    lineEnding_->setCurrentIndex(lineEnding_->findData(static_cast<int>(loaded.lineEnding)));
    mixed_->setText(qtext(L(translate("Orbisk", "This file mixes line endings. Saving writes %@ everywhere."),
                            displayName(loaded.lineEnding))));
    mixed_->setVisible(loaded.hasMixedLineEndings);
    updateTitle();
}

void EditorWindow::updateTitle()
{
    setWindowTitle(qtext(DisplayText::visible(nameOf(path_))) + QStringLiteral("[*]"));
    setWindowModified(editor_->document()->isModified());
}

bool EditorWindow::isModified() const
{
    return editor_->document()->isModified();
}

void EditorWindow::save()
{
    saveTo(path_);
}

void EditorWindow::saveAs()
{
    auto* dialog = new QFileDialog(this, qtext(translate("Orbisk", "Save As")));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    // The dialog works with text paths; the folder and name start from the file's own.
    dialog->setDirectory(QString::fromLocal8Bit(path_.parent_path().native()));
    dialog->selectFile(QString::fromLocal8Bit(nameOf(path_)));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        const QByteArray bytes = file.toLocal8Bit();
        saveTo(std::filesystem::path(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()))));
    });
    dialog->open();
}

void EditorWindow::saveTo(const std::filesystem::path& target)
{
    if (save_.isRunning())
        return;
    const auto text = documentText(*editor_->document()).toStdString();
    const auto encoding = static_cast<TextEncodingKind>(encoding_->currentData().toInt());
    const auto ending = static_cast<LineEnding>(lineEnding_->currentData().toInt());
    // Saving over the file it came from checks that nobody changed it meanwhile; another file was
    // chosen in the Save As dialog, which asked before replacing it.
    const auto expected = target == path_ ? stamp_ : std::nullopt;
    editor_->setReadOnly(true);
    save_.setFuture(QtConcurrent::run([text, target, encoding, ending, expected] {
        return Saving{target, TextFile::save(text, target, encoding, ending, expected)};
    }));
}

void EditorWindow::saveFinished()
{
    editor_->setReadOnly(false);
    const auto outcome = save_.result();
    if (!outcome.result) {
        closeAfterSave_ = false;
        refused(outcome.result.error());
        return;
    }
    path_ = outcome.target;
    stamp_ = *outcome.result;
    editor_->document()->setModified(false);
    mixed_->hide(); // the file now has one line ending throughout
    updateTitle();
    statusBar()->showMessage(qtext(translate("Orbisk", "Saved")), 3000);
    emit saved();
    if (closeAfterSave_)
        close();
}

void EditorWindow::ask(QMessageBox* box)
{
    box->setAttribute(Qt::WA_DeleteOnClose);
    question_ = box;
    // Answered is gone: the box itself is deleted only later, from the event loop.
    const auto forget = [this, box] {
        if (question_ == box)
            question_ = nullptr;
    };
    connect(box, &QMessageBox::finished, this, forget);
    connect(box, &QObject::destroyed, this, forget);
    box->open();
}

void EditorWindow::refused(const TextFileError& error)
{
    auto* box = new QMessageBox(QMessageBox::Warning, windowTitle().remove(QStringLiteral("[*]")),
                                qtext(L(translate("Orbisk", "“%@” couldn’t be saved."), nameOf(path_))),
                                QMessageBox::NoButton, this);
    box->setInformativeText(qtext(error.errorDescription()));
    const bool changed = error.kind == TextFileError::Kind::modifiedOnDisk;
    const bool gone = error.kind == TextFileError::Kind::missingOnDisk;
    if (changed || gone) {
        auto* saveAsButton = box->addButton(qtext(translate("Orbisk", "Save As…")), QMessageBox::AcceptRole);
        connect(saveAsButton, &QPushButton::clicked, this, &EditorWindow::saveAs);
        if (changed) {
            auto* reloadButton = box->addButton(qtext(translate("Orbisk", "Reload")), QMessageBox::DestructiveRole);
            connect(reloadButton, &QPushButton::clicked, this, &EditorWindow::reload);
        }
        box->addButton(QMessageBox::Cancel);
    } else {
        box->addButton(QMessageBox::Ok);
    }
    ask(box);
}

void EditorWindow::reload()
{
    // Within the editor's size limit: a short read on the window's thread.
    auto loaded = TextFile::load(path_);
    if (!loaded) {
        auto* box =
            new QMessageBox(QMessageBox::Warning, windowTitle().remove(QStringLiteral("[*]")),
                            qtext(L(translate("Orbisk", "“%@” couldn’t be opened for editing."), nameOf(path_))),
                            QMessageBox::Ok, this);
        box->setInformativeText(qtext(loaded.error().errorDescription()));
        ask(box);
        return;
    }
    present(std::move(*loaded));
}

bool EditorWindow::findNext()
{
    const auto needle = findBar_->findText();
    if (needle.isEmpty())
        return false;
    const auto flags = findBar_->matchCase() ? QTextDocument::FindCaseSensitively : QTextDocument::FindFlags();
    if (editor_->find(needle, flags)) {
        findBar_->setMessage({});
        return true;
    }
    const auto cursor = editor_->textCursor();
    editor_->moveCursor(QTextCursor::Start);
    if (editor_->find(needle, flags)) {
        findBar_->setMessage(qtext(translate("Orbisk", "Search wrapped to the beginning")));
        return true;
    }
    editor_->setTextCursor(cursor);
    findBar_->setMessage(qtext(translate("Orbisk", "Not found")));
    return false;
}

void EditorWindow::closeEvent(QCloseEvent* event)
{
    if (!isModified() || closeAfterSave_) {
        if (save_.isRunning()) {
            event->ignore();
            return;
        }
        event->accept();
        return;
    }
    event->ignore();
    auto* box =
        new QMessageBox(QMessageBox::Question, windowTitle().remove(QStringLiteral("[*]")),
                        qtext(L(translate("Orbisk", "Do you want to save the changes to “%@”?"), nameOf(path_))),
                        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    box->setInformativeText(qtext(translate("Orbisk", "Your changes will be lost if you don’t save them.")));
    connect(box, &QMessageBox::finished, this, [this, box](int) {
        const auto button = box->standardButton(box->clickedButton());
        if (button == QMessageBox::Save) {
            closeAfterSave_ = true;
            save();
        } else if (button == QMessageBox::Discard) {
            editor_->document()->setModified(false);
            close();
        }
    });
    ask(box);
}

} // namespace orbisk
