#include "platform/TrashInfo.h"

#include "support/PercentEncoding.h"

namespace orbisk::TrashInfo {

namespace {

// Cuts text to at most length bytes, moving back off the continuation bytes of a UTF-8 character.
std::string_view cut(std::string_view text, std::size_t length)
{
    if (text.size() <= length)
        return text;
    std::size_t end = length;
    for (int back = 0; back < 3 && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80; ++back)
        --end;
    return text.substr(0, end);
}

} // namespace

std::string contents(std::string_view path, std::time_t deletedAt)
{
    std::tm local{};
    ::localtime_r(&deletedAt, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(path) + "\nDeletionDate=" + date + "\n";
}

std::string candidateName(std::string_view name, int attempt)
{
    const std::size_t room = maximumNameLength - infoSuffix.size();
    std::string_view stem = name;
    std::string_view extension;
    // A leading dot starts a hidden name, not an extension; long "extensions" are just text.
    if (const auto dot = name.rfind('.'); dot != std::string_view::npos && dot > 0 && name.size() - dot <= 16) {
        stem = name.substr(0, dot);
        extension = name.substr(dot);
    }
    const std::string number = attempt <= 1 ? std::string() : " " + std::to_string(attempt);
    const std::size_t stemRoom = room - number.size() - extension.size();
    return std::string(cut(stem, stemRoom)) + number + std::string(extension);
}

} // namespace orbisk::TrashInfo
