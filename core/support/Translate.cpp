#include "support/Translate.h"

#include "support/FormatSpecifier.h"

namespace orbisk {
namespace {

TranslatorHook& hook()
{
    static TranslatorHook h;
    return h;
}

bool& pseudo()
{
    static bool on = false;
    return on;
}

std::string_view withoutContext(std::string_view key)
{
    const auto bar = key.find("||");
    return bar == std::string_view::npos ? key : key.substr(0, bar);
}

std::string_view accented(char c)
{
    switch (c) {
    case 'a': return "á";
    case 'e': return "é";
    case 'i': return "í";
    case 'o': return "ö";
    case 'u': return "ü";
    case 'A': return "Å";
    case 'E': return "É";
    case 'I': return "Í";
    case 'O': return "Ö";
    case 'U': return "Ü";
    default: return {};
    }
}

} // namespace

void setTranslatorHook(TranslatorHook h)
{
    hook() = std::move(h);
}
void setPseudoLanguage(bool on)
{
    pseudo() = on;
}
bool pseudoLanguage()
{
    return pseudo();
}

std::string pseudoLocalized(std::string_view text)
{
    std::string out = "⟦";
    std::size_t i = 0;
    for (const auto& spec : findFormatSpecifiers(text)) {
        for (; i < spec.offset; ++i) {
            const auto a = accented(text[i]);
            out += a.empty() ? std::string_view(&text[i], 1) : a;
        }
        out += text.substr(spec.offset, spec.length);
        i = spec.offset + spec.length;
    }
    for (; i < text.size(); ++i) {
        const auto a = accented(text[i]);
        out += a.empty() ? std::string_view(&text[i], 1) : a;
    }
    return out + "⟧";
}

std::string translate(const char* context, const char* key)
{
    std::string text;
    if (hook())
        text = hook()(context, key);
    if (text.empty())
        text = withoutContext(key);
    return pseudo() ? pseudoLocalized(text) : text;
}

} // namespace orbisk
