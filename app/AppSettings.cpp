#include "AppSettings.h"

#include <QByteArray>
#include <QVariantList>

namespace orbisk {

AppSettings::AppSettings(QObject* parent) : QObject(parent), store_(std::make_unique<QSettings>("Orbisk", "Orbisk")) {}

AppSettings::AppSettings(const QString& iniFile, QObject* parent)
    : QObject(parent), store_(std::make_unique<QSettings>(iniFile, QSettings::IniFormat))
{
}

AppSettings::~AppSettings() = default;

bool AppSettings::showHiddenFiles() const
{
    return store_->value("showHiddenFiles", false).toBool();
}
bool AppSettings::directoriesFirst() const
{
    return store_->value("directoriesFirst", true).toBool();
}
bool AppSettings::watchDirectories() const
{
    return store_->value("watchDirectories", true).toBool();
}
bool AppSettings::showFunctionKeyBar() const
{
    return store_->value("showFunctionKeyBar", true).toBool();
}
bool AppSettings::breakdownFollowsCursor() const
{
    return store_->value("breakdownFollowsCursor", true).toBool();
}
void AppSettings::setBreakdownFollowsCursor(bool on)
{
    setFlag("breakdownFollowsCursor", on);
}
bool AppSettings::pseudoLanguage() const
{
    return store_->value("OrbiskPseudoLanguage", false).toBool();
}

void AppSettings::setShowHiddenFiles(bool on)
{
    setFlag("showHiddenFiles", on);
}
void AppSettings::setDirectoriesFirst(bool on)
{
    setFlag("directoriesFirst", on);
}
void AppSettings::setWatchDirectories(bool on)
{
    setFlag("watchDirectories", on);
}
void AppSettings::setShowFunctionKeyBar(bool on)
{
    setFlag("showFunctionKeyBar", on);
}

void AppSettings::setFlag(const char* key, bool on)
{
    if (store_->value(key).isValid() && store_->value(key).toBool() == on)
        return;
    store_->setValue(key, on);
    emit changed();
}

std::optional<ConflictChoice> AppSettings::transferConflictPolicy() const
{
    // Stored as the choice's own word; "ask" or anything unknown means ask at each clash.
    return conflictChoiceFromRaw(store_->value("transferConflictPolicy").toString().toStdString());
}

void AppSettings::setTransferConflictPolicy(std::optional<ConflictChoice> policy)
{
    store_->setValue("transferConflictPolicy",
                     policy
                         ? QString::fromUtf8(rawValue(*policy).data(), static_cast<qsizetype>(rawValue(*policy).size()))
                         : QStringLiteral("ask"));
}

std::vector<std::filesystem::path> AppSettings::favoriteLocations() const
{
    // Stored as byte arrays so that a folder whose name is not UTF-8 keeps its exact bytes.
    std::vector<std::filesystem::path> folders;
    for (const auto& value : store_->value("favoriteLocations").toList()) {
        const QByteArray bytes = value.toByteArray();
        if (!bytes.isEmpty() && bytes.startsWith('/'))
            folders.emplace_back(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    }
    return folders;
}

void AppSettings::setFavoriteLocations(const std::vector<std::filesystem::path>& folders)
{
    QVariantList values;
    for (const auto& folder : folders) {
        const auto& bytes = folder.native();
        values.append(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
    }
    store_->setValue("favoriteLocations", values);
    emit favoritesChanged();
}

std::string AppSettings::session() const
{
    return store_->value("session").toString().toStdString();
}

void AppSettings::setSession(const std::string& json)
{
    store_->setValue("session", QString::fromStdString(json));
}

void AppSettings::sync()
{
    store_->sync();
}

} // namespace orbisk
