#include "files/FileItem.h"

#include "support/Paths.h"

namespace orbisk {
namespace {

std::string withoutTrailingSlashes(std::string text)
{
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

} // namespace

FileItem::FileItem(const std::filesystem::path& url)
{
    auto text = withoutTrailingSlashes(url.native());
    const auto slash = text.rfind('/');
    if (slash == std::string::npos || text == "/") {
        name_ = std::move(text);
        return;
    }
    name_ = text.substr(slash + 1);
    text.resize(slash == 0 ? 1 : slash);
    folder_ = std::make_shared<const std::string>(std::move(text));
}

FileItem::FileItem(std::shared_ptr<const std::string> folder, std::string name)
    : folder_(std::move(folder)), name_(std::move(name))
{
}

std::string FileItem::urlBytes() const
{
    if (!folder_)
        return name_;
    if (isParentLink)
        return *folder_;
    std::string text;
    text.reserve(folder_->size() + 1 + name_.size());
    text.append(*folder_);
    if (text.empty() || text.back() != '/')
        text.push_back('/');
    text.append(name_);
    return text;
}

std::string_view nameExtension(std::string_view name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    return name.substr(dot + 1);
}

std::string_view FileItem::typeExtension() const
{
    return isDirectory ? std::string_view{} : nameExtension(name_);
}

FileItem FileItem::parentLink(const std::filesystem::path& folder)
{
    FileItem item;
    item.folder_ = std::make_shared<const std::string>(Paths::parentFolder(folder).native());
    item.name_ = "..";
    item.isDirectory = true;
    item.isParentLink = true;
    return item;
}

bool operator==(const FileItem& a, const FileItem& b)
{
    return a.folder() == b.folder() && a.name_ == b.name_ && a.size == b.size &&
           a.modificationDate == b.modificationDate && a.isDirectory == b.isDirectory && a.isPackage == b.isPackage &&
           a.isSymbolicLink == b.isSymbolicLink && a.isHidden == b.isHidden && a.isParentLink == b.isParentLink;
}

std::size_t FileItemHash::operator()(const FileItem& item) const noexcept
{
    // Boost's hash_combine mixing over the same fields that operator== compares.
    std::size_t seed = std::hash<std::string_view>{}(item.folder());
    const auto mix = [&seed](std::size_t value) { seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2); };
    mix(std::hash<std::string>{}(item.name()));
    mix(item.size ? std::hash<std::int64_t>{}(*item.size) : 0x5151);
    mix(item.modificationDate ? std::hash<std::int64_t>{}(item.modificationDate->time_since_epoch().count()) : 0x7373);
    mix(static_cast<std::size_t>(item.isDirectory) | static_cast<std::size_t>(item.isPackage) << 1 |
        static_cast<std::size_t>(item.isSymbolicLink) << 2 | static_cast<std::size_t>(item.isHidden) << 3 |
        static_cast<std::size_t>(item.isParentLink) << 4);
    return seed;
}

} // namespace orbisk
