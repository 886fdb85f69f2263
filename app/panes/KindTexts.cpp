#include "panes/KindTexts.h"

#include <QMimeDatabase>
#include <QMimeType>

#include <algorithm>
#include <cctype>

namespace orbisk {

KindTexts::KindTexts() = default;
KindTexts::~KindTexts() = default;

std::optional<std::string> KindTexts::typeDescription(std::string_view extension)
{
    if (extension.empty())
        return std::nullopt;
    static const QMimeDatabase database;
    // The extension is only a question to the database, never a path on disk.
    const auto types = database.mimeTypesForFileName(
        "x." + QString::fromUtf8(extension.data(), static_cast<qsizetype>(extension.size())));
    for (const auto& type : types) {
        if (type.isValid() && !type.isDefault() && !type.comment().isEmpty())
            return type.comment().toStdString();
    }
    return std::nullopt;
}

const std::string& KindTexts::describe(const FileItem& item)
{
    std::string key;
    key += item.isDirectory ? 'd' : '-';
    key += item.isPackage ? 'p' : '-';
    key += item.isSymbolicLink ? 'l' : '-';
    key += item.isParentLink ? 'u' : '-';
    std::string extension(item.typeExtension());
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    key += extension;
    const std::lock_guard lock(mutex_);
    if (const auto found = cache_.find(key); found != cache_.end())
        return found->second;
    return cache_.emplace(key, FileKind::describe(item, &KindTexts::typeDescription)).first->second;
}

} // namespace orbisk
