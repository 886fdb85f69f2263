#include "dialogs/TypedPath.h"

#include "support/DisplayText.h"

#include <vector>

namespace orbisk::TypedPath {
namespace {

/// One character of the prefill, or one byte of it that is not part of valid UTF-8, with its
/// shown form.
struct Unit {
    std::string bytes;
    QString shown;
};

std::size_t sequenceLength(const std::string& text, std::size_t at)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80           ? 1
                               : (lead >> 5) == 0x6  ? 2
                               : (lead >> 4) == 0xE  ? 3
                               : (lead >> 3) == 0x1E ? 4
                                                     : 0;
    if (length == 0 || at + length > text.size())
        return 1;
    for (std::size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80)
            return 1;
    return length;
}

std::vector<Unit> units(const std::string& text)
{
    std::vector<Unit> out;
    for (std::size_t at = 0; at < text.size();) {
        const auto length = sequenceLength(text, at);
        auto bytes = text.substr(at, length);
        out.push_back({bytes, QString::fromStdString(DisplayText::visible(bytes))});
        at += length;
    }
    return out;
}

} // namespace

QString shown(const std::string& prefilled)
{
    return QString::fromStdString(DisplayText::visible(prefilled));
}

std::string bytes(const std::string& prefilled, const QString& typed)
{
    const auto parts = units(prefilled);
    std::size_t front = 0;
    qsizetype frontChars = 0;
    while (front < parts.size() && typed.mid(frontChars).startsWith(parts[front].shown)) {
        frontChars += parts[front].shown.size();
        ++front;
    }
    std::size_t back = parts.size();
    qsizetype backChars = typed.size();
    while (back > front && backChars - parts[back - 1].shown.size() >= frontChars &&
           typed.left(backChars).endsWith(parts[back - 1].shown)) {
        backChars -= parts[back - 1].shown.size();
        --back;
    }

    std::string out;
    for (std::size_t i = 0; i < front; ++i)
        out += parts[i].bytes;
    out += typed.mid(frontChars, backChars - frontChars).toStdString();
    for (std::size_t i = back; i < parts.size(); ++i)
        out += parts[i].bytes;
    return out;
}

} // namespace orbisk::TypedPath
