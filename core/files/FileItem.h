// One entry of a folder listing, as the panes show it, sorting orders it and filters test it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// A plain value: built once (by DirectoryReader or a caller), compared by value, never touches the
/// disk. The location is kept as the folder's bytes, shared by every item of one listing, plus the
/// name: a std::filesystem::path per item would cost some 350 bytes of components each, which a
/// listing of 200,000 entries cannot afford. url() builds the path when it is asked for.
class FileItem {
public:
    using Date = std::chrono::sys_time<std::chrono::nanoseconds>;

    FileItem() = default;
    /// An item at url; its name is url's last component (a trailing "/" is ignored).
    explicit FileItem(const std::filesystem::path& url);
    /// An item called name inside folder. Every item of a listing shares one folder text.
    FileItem(std::shared_ptr<const std::string> folder, std::string name);

    /// Where the entry is listed, byte-exact; a link keeps its own path, not its target's.
    [[nodiscard]] std::filesystem::path url() const { return std::filesystem::path(urlBytes()); }
    /// The bytes of url(), without the cost of splitting them into a path's components.
    [[nodiscard]] std::string urlBytes() const;
    /// The last path component exactly as the file system gives it.
    [[nodiscard]] const std::string& name() const { return name_; }
    /// The folder the entry is listed in (for the ".." row, the folder it leads to).
    [[nodiscard]] std::string_view folder() const { return folder_ ? std::string_view(*folder_) : std::string_view{}; }

    std::optional<std::int64_t> size; ///< files and links (the link's own size); absent for folders
    std::optional<Date> modificationDate;
    bool isDirectory = false;    ///< a folder that can be entered, also through a link to one
    bool isPackage = false;      ///< always false on Linux, kept so that every caller handles it
    bool isSymbolicLink = false; ///< the entry itself is a link
    bool isHidden = false;       ///< a dot-name, or listed in the folder's .hidden file
    bool isParentLink = false;   ///< the synthetic ".." row; set only by parentLink()

    /// The text after the last "." of the name; empty for folders, for names without a dot and for
    /// names whose only dot leads (".profile"). A view into the name.
    [[nodiscard]] std::string_view typeExtension() const;

    /// The ".." row of folder: it points at folder's parent, is a folder and has nothing else.
    [[nodiscard]] static FileItem parentLink(const std::filesystem::path& folder);

    /// Equality over every field; locations compare byte for byte.
    friend bool operator==(const FileItem& a, const FileItem& b);

private:
    std::shared_ptr<const std::string> folder_; ///< without a trailing "/", except "/" itself
    std::string name_;
};

/// The extension rule of typeExtension for a bare name (no folder check).
[[nodiscard]] std::string_view nameExtension(std::string_view name);

/// Hash consistent with operator==: equal items hash equally.
struct FileItemHash {
    [[nodiscard]] std::size_t operator()(const FileItem& item) const noexcept;
};

/// Hash of a path by its bytes, for maps keyed by item URL. Transparent: a map can be searched
/// with the bytes alone, without building a path.
struct PathHash {
    using is_transparent = void;
    [[nodiscard]] std::size_t operator()(std::string_view bytes) const noexcept
    {
        return std::hash<std::string_view>{}(bytes);
    }
    [[nodiscard]] std::size_t operator()(const std::filesystem::path& path) const noexcept
    {
        return (*this)(std::string_view(path.native()));
    }
};

/// Byte-exact path equality, paired with PathHash.
struct PathEqual {
    using is_transparent = void;
    [[nodiscard]] static std::string_view bytes(const std::filesystem::path& path) { return path.native(); }
    [[nodiscard]] static std::string_view bytes(std::string_view text) { return text; }
    template <class A, class B> [[nodiscard]] bool operator()(const A& a, const B& b) const noexcept
    {
        return bytes(a) == bytes(b);
    }
};

} // namespace orbisk

template <> struct std::hash<orbisk::FileItem> : orbisk::FileItemHash {
};
