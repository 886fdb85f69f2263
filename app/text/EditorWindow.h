// The plain-text editor (F4): a text loaded by TextFile, saved back in its own encoding and
// line endings, never over someone else's change.
#pragma once

#include "text/LoadedText.h"
#include "text/TextFileError.h"

#include <QFutureWatcher>
#include <QMainWindow>

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>

class QAction;
class QComboBox;
class QLabel;
class QMessageBox;
class QPlainTextEdit;

namespace orbisk {

class FindBar;

class EditorWindow : public QMainWindow {
    Q_OBJECT
public:
    /// Shows loaded, read from path. Saving writes back there unless Save As picks another file.
    EditorWindow(std::filesystem::path path, LoadedText loaded, QWidget* parent = nullptr);
    ~EditorWindow() override;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] QPlainTextEdit* editor() const { return editor_; }
    [[nodiscard]] FindBar* findBar() const { return findBar_; }
    [[nodiscard]] QComboBox* encodingChoice() const { return encoding_; }
    [[nodiscard]] QComboBox* lineEndingChoice() const { return lineEnding_; }
    /// The notice shown while the file's line endings are mixed; hidden otherwise.
    [[nodiscard]] QLabel* mixedNotice() const { return mixed_; }
    [[nodiscard]] bool isModified() const;
    /// Whether a save is being written on its worker thread.
    [[nodiscard]] bool saving() const { return save_.isRunning(); }
    /// The question shown by the last refused save or close, while it is open.
    [[nodiscard]] QMessageBox* question() const { return question_; }

    /// Saves to the file it came from; a refusal asks what to do next.
    void save();
    /// Asks for another file and saves there.
    void saveAs();
    /// Saves to target at once (Save As after its file dialog).
    void saveTo(const std::filesystem::path& target);
    /// Reads the file again, dropping the edits.
    void reload();
    /// Finds the find bar's text after the cursor, wrapping around.
    bool findNext();

signals:
    void saved();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildActions();
    void present(LoadedText loaded);
    void saveFinished();
    void refused(const TextFileError& error);
    void updateTitle();
    void ask(QMessageBox* box);

    std::filesystem::path path_;
    std::optional<FileStamp> stamp_; ///< the version on disk that the text was loaded from or saved as
    QPlainTextEdit* editor_;
    FindBar* findBar_;
    QLabel* mixed_;
    QComboBox* encoding_;
    QComboBox* lineEnding_;
    QMessageBox* question_ = nullptr;
    struct Saving {
        std::filesystem::path target;
        std::expected<FileStamp, TextFileError> result;
    };
    QFutureWatcher<Saving> save_;
    bool closeAfterSave_ = false;
};

} // namespace orbisk
