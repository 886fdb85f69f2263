// The main window's viewer, editor and quick preview: opens them for the item under the cursor.
#pragma once

#include <QObject>
#include <QPointer>

#include <filesystem>
#include <functional>

class QWidget;

namespace orbisk {

class EditorWindow;
class QuickPreview;

class TextWindows : public QObject {
    Q_OBJECT
public:
    /// window is the main window the others belong to; openFile opens a file in its default
    /// application and says whether that worked.
    TextWindows(QWidget* window, std::function<bool(const std::filesystem::path&)> openFile);

    /// F3: a viewer window for path.
    void view(const std::filesystem::path& path);
    /// F4: the editor for a text file (the one already open for it, raised); a binary file opens
    /// in its default application; other refusals say why and offer the default application.
    void edit(const std::filesystem::path& path);
    /// Space: shows the preview of path, or closes it when it is open.
    void togglePreview(const std::filesystem::path& path);
    /// The cursor moved to path: an open preview follows it.
    void follow(const std::filesystem::path& path);
    [[nodiscard]] QuickPreview* preview() const;
    [[nodiscard]] bool previewShown() const;
    /// Whether the main window may close now: editors with unsaved changes ask first, and the
    /// answer is false while any of them does.
    [[nodiscard]] bool mayClose();

signals:
    /// An editor opened (for tests and for the window to track).
    void editorOpened(EditorWindow* editor);

private:
    void refuse(const std::filesystem::path& path, const QString& reason);

    QWidget* window_;
    std::function<bool(const std::filesystem::path&)> openFile_;
    QPointer<QuickPreview> preview_;
};

} // namespace orbisk
