// The program's stored settings: one object, handed to whoever reads or changes them.
#pragma once

#include "operations/ConflictChoice.h"

#include <QObject>
#include <QSettings>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {

class AppSettings : public QObject {
    Q_OBJECT
public:
    /// The user's settings: QSettings("Orbisk", "Orbisk"), an INI file under ~/.config/Orbisk/.
    explicit AppSettings(QObject* parent = nullptr);
    /// Settings kept in the given INI file (tests, or a second profile).
    explicit AppSettings(const QString& iniFile, QObject* parent = nullptr);
    ~AppSettings() override;

    [[nodiscard]] bool showHiddenFiles() const;
    [[nodiscard]] bool directoriesFirst() const;
    [[nodiscard]] bool watchDirectories() const;
    [[nodiscard]] bool showFunctionKeyBar() const;
    [[nodiscard]] bool pseudoLanguage() const;
    /// Whether the folder breakdown shows the folder under the other pane's cursor as it moves.
    [[nodiscard]] bool breakdownFollowsCursor() const;
    void setBreakdownFollowsCursor(bool on);
    void setShowHiddenFiles(bool on);
    void setDirectoriesFirst(bool on);
    void setWatchDirectories(bool on);
    void setShowFunctionKeyBar(bool on);

    /// Favourite folders in their order; paths are kept as bytes.
    [[nodiscard]] std::vector<std::filesystem::path> favoriteLocations() const;
    void setFavoriteLocations(const std::vector<std::filesystem::path>& folders);

    /// The standing answer to name clashes chosen in the copy and move dialog; nothing means ask.
    [[nodiscard]] std::optional<ConflictChoice> transferConflictPolicy() const;
    void setTransferConflictPolicy(std::optional<ConflictChoice> policy);

    /// The saved session as JSON text; empty when none was saved.
    [[nodiscard]] std::string session() const;
    void setSession(const std::string& json);

    /// Writes pending changes to disk.
    void sync();

signals:
    /// A setting that the panes or the window show has changed.
    void changed();
    void favoritesChanged();

private:
    void setFlag(const char* key, bool on);
    std::unique_ptr<QSettings> store_;
};

} // namespace orbisk
