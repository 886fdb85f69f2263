#include "files/MimeTypeTable.h"

#include "support/UnicodeText.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace orbisk {
namespace {

std::string asciiLowercased(std::string_view text)
{
    std::string out(text);
    for (auto& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const auto end = text.find(separator, start);
        parts.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos)
            return parts;
        start = end + 1;
    }
}

std::optional<std::string> readWholeFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/// XML character data with its five named entities and numeric references resolved.
std::string unescapedXml(std::string_view text)
{
    static const std::pair<std::string_view, char> named[] = {
        {"amp;", '&'}, {"lt;", '<'}, {"gt;", '>'}, {"quot;", '"'}, {"apos;", '\''}};
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '&') {
            out.push_back(text[i]);
            continue;
        }
        const auto rest = text.substr(i + 1);
        bool done = false;
        for (const auto& [entity, c] : named) {
            if (rest.starts_with(entity)) {
                out.push_back(c);
                i += entity.size();
                done = true;
                break;
            }
        }
        const auto semicolon = rest.find(';');
        if (!done && rest.starts_with('#') && semicolon != std::string_view::npos) {
            const bool hex = rest.size() > 1 && (rest[1] == 'x' || rest[1] == 'X');
            const std::string digits(rest.substr(hex ? 2 : 1, semicolon - (hex ? 2 : 1)));
            char* end = nullptr;
            const auto value = std::strtoul(digits.c_str(), &end, hex ? 16 : 10);
            if (!digits.empty() && end != nullptr && *end == '\0' && value <= 0x10FFFF) {
                UnicodeText::appendUtf8(out, static_cast<UChar32>(value));
                i += semicolon + 1;
                done = true;
            }
        }
        if (!done)
            out.push_back('&');
    }
    return out;
}

/// The <comment> elements of a type's XML file as (language, text); the untranslated one has "".
/// The files are machine-written by update-mime-database, so a scan for the element is enough.
std::vector<std::pair<std::string, std::string>> comments(std::string_view xml)
{
    std::vector<std::pair<std::string, std::string>> found;
    constexpr std::string_view open = "<comment";
    constexpr std::string_view close = "</comment>";
    constexpr std::string_view langAttribute = "xml:lang=\"";
    for (auto at = xml.find(open); at != std::string_view::npos; at = xml.find(open, at + 1)) {
        const auto tagEnd = xml.find('>', at);
        if (tagEnd == std::string_view::npos)
            break;
        const auto tag = xml.substr(at + open.size(), tagEnd - at - open.size());
        if (!tag.empty() && tag.front() != ' ')
            continue; // another element whose name starts with "comment"
        const auto textEnd = xml.find(close, tagEnd);
        if (textEnd == std::string_view::npos)
            break;
        std::string language;
        if (const auto lang = tag.find(langAttribute); lang != std::string_view::npos) {
            const auto start = lang + langAttribute.size();
            language = tag.substr(start, tag.find('"', start) - start);
        }
        found.emplace_back(std::move(language), unescapedXml(xml.substr(tagEnd + 1, textEnd - tagEnd - 1)));
    }
    return found;
}

/// "de_AT.UTF-8@euro" → {"de_AT", "de"}; "C" and "POSIX" name no language.
std::vector<std::string> languagesOf(std::string_view locale)
{
    std::string base(locale.substr(0, locale.find_first_of(".@")));
    if (base.empty() || base == "C" || base == "POSIX")
        return {};
    std::vector<std::string> out{base};
    if (const auto underscore = base.find('_'); underscore != std::string::npos)
        out.push_back(base.substr(0, underscore));
    return out;
}

} // namespace

MimeTypeTable::MimeTypeTable(std::vector<std::filesystem::path> dataFolders, std::vector<std::string> languages)
    : folders_(std::move(dataFolders)), languages_(std::move(languages))
{
}

MimeTypeTable MimeTypeTable::forEnvironment()
{
    const auto env = [](const char* name) -> std::string_view {
        const char* value = std::getenv(name);
        return value != nullptr ? value : "";
    };
    std::vector<std::filesystem::path> folders;
    if (!env("XDG_DATA_HOME").empty())
        folders.emplace_back(env("XDG_DATA_HOME"));
    else if (!env("HOME").empty())
        folders.emplace_back(std::filesystem::path(env("HOME")) / ".local/share");
    const auto dirs =
        env("XDG_DATA_DIRS").empty() ? std::string_view("/usr/local/share:/usr/share") : env("XDG_DATA_DIRS");
    for (auto& folder : split(dirs, ':'))
        if (!folder.empty())
            folders.emplace_back(folder);

    // The first set locale variable names the locale; LANGUAGE, a priority list, counts only when
    // that locale is not C, as gettext has it.
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!env(name).empty()) {
            locale = env(name);
            break;
        }
    }
    std::vector<std::string> languages;
    if (!languagesOf(locale).empty()) {
        for (const auto& entry : split(env("LANGUAGE"), ':'))
            for (auto& language : languagesOf(entry))
                languages.push_back(std::move(language));
        for (auto& language : languagesOf(locale))
            languages.push_back(std::move(language));
    }
    return MimeTypeTable(std::move(folders), std::move(languages));
}

void MimeTypeTable::loadGlobs()
{
    globsLoaded_ = true;
    for (const auto& folder : folders_) {
        const auto text = readWholeFile(folder / "mime/globs2");
        if (!text)
            continue;
        // Lines are "weight:type:glob[:flags[:…]]", highest weight first, so the first line for an
        // extension wins; a folder listed earlier wins over later ones the same way.
        std::istringstream lines(*text);
        for (std::string line; std::getline(lines, line);) {
            if (line.empty() || line.front() == '#')
                continue;
            const auto fields = split(line, ':');
            if (fields.size() < 3 || !fields[2].starts_with("*."))
                continue;
            const auto extension = std::string_view(fields[2]).substr(2);
            if (extension.empty() || extension.find_first_of("*?[.") != std::string_view::npos)
                continue;
            const bool caseSensitive = fields.size() > 3 && fields[3].find("cs") != std::string::npos;
            if (caseSensitive)
                exactGlobs_.try_emplace(std::string(extension), fields[1]);
            else
                foldedGlobs_.try_emplace(asciiLowercased(extension), fields[1]);
        }
    }
}

std::optional<std::string> MimeTypeTable::typeForExtension(std::string_view extension)
{
    const std::scoped_lock lock(mutex_);
    if (!globsLoaded_)
        loadGlobs();
    if (const auto exact = exactGlobs_.find(std::string(extension)); exact != exactGlobs_.end())
        return exact->second;
    if (const auto folded = foldedGlobs_.find(asciiLowercased(extension)); folded != foldedGlobs_.end())
        return folded->second;
    return std::nullopt;
}

std::optional<std::string> MimeTypeTable::readComment(const std::string& type) const
{
    for (const auto& folder : folders_) {
        const auto xml = readWholeFile(folder / "mime" / (type + ".xml"));
        if (!xml)
            continue;
        const auto all = comments(*xml);
        for (const auto& language : languages_)
            for (const auto& [lang, text] : all)
                if (lang == language && !text.empty())
                    return text;
        for (const auto& [lang, text] : all)
            if (lang.empty() && !text.empty())
                return text;
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::string> MimeTypeTable::describe(std::string_view extension)
{
    const auto type = typeForExtension(extension);
    if (!type || type->find("..") != std::string::npos)
        return std::nullopt;
    const std::scoped_lock lock(mutex_);
    auto [entry, added] = comments_.try_emplace(*type);
    if (added)
        entry->second = readComment(*type);
    return entry->second;
}

} // namespace orbisk
