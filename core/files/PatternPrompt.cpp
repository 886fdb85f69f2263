#include "files/PatternPrompt.h"

#include "support/Translate.h"

namespace orbisk::PatternPrompt {

Texts select()
{
    return {translate("Orbisk", "Select by Pattern"),
            translate("Orbisk", "Use * and ?, separate several patterns with ; (for example *.jpg;*.png)."),
            translate("Orbisk", "Select"), translate("Orbisk", "Cancel")};
}

Texts deselect()
{
    return {translate("Orbisk", "Deselect by Pattern"),
            translate("Orbisk", "Use * and ?, separate several patterns with ; (for example *.jpg;*.png)."),
            translate("Orbisk", "Deselect"), translate("Orbisk", "Cancel")};
}

} // namespace orbisk::PatternPrompt
