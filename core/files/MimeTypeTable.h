// Type descriptions for extensions from shared-mime-info's files, for code that runs without Qt.
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orbisk {

/// Reads "<dir>/mime/globs2" (extension → MIME type) and "<dir>/mime/<type>.xml" (the type's
/// <comment>) from each data folder in priority order, lazily: the globs on the first look-up, a
/// type's description when it is first asked for. Thread-safe.
class MimeTypeTable {
public:
    /// dataFolders: highest priority first (as XDG_DATA_HOME then XDG_DATA_DIRS). languages: the
    /// preferred description languages as "de_AT", "de" (most specific first); English otherwise.
    MimeTypeTable(std::vector<std::filesystem::path> dataFolders, std::vector<std::string> languages);

    /// The table of this user's environment: XDG data folders and the LANGUAGE, LC_ALL,
    /// LC_MESSAGES and LANG variables.
    [[nodiscard]] static MimeTypeTable forEnvironment();

    /// The MIME type whose glob is "*.<extension>": a case-sensitive glob must match exactly,
    /// the others match ignoring ASCII case. Nothing when no simple glob names the extension.
    [[nodiscard]] std::optional<std::string> typeForExtension(std::string_view extension);

    /// The description of the type that extension names, in the first preferred language that the
    /// type's file has, else its untranslated comment. Nothing for unknown types.
    [[nodiscard]] std::optional<std::string> describe(std::string_view extension);

private:
    void loadGlobs();
    [[nodiscard]] std::optional<std::string> readComment(const std::string& type) const;

    std::vector<std::filesystem::path> folders_;
    std::vector<std::string> languages_;
    std::mutex mutex_;
    bool globsLoaded_ = false;
    std::unordered_map<std::string, std::string> exactGlobs_;              ///< case-sensitive extension → type
    std::unordered_map<std::string, std::string> foldedGlobs_;             ///< lowercased extension → type
    std::unordered_map<std::string, std::optional<std::string>> comments_; ///< type → description
};

} // namespace orbisk
