#include "ArgumentPaths.h"

#include "support/DisplayText.h"
#include "support/Paths.h"

namespace orbisk::cli {

namespace fs = std::filesystem;

fs::path argumentPath(const std::string& argument)
{
    return Paths::itemPath(argument);
}

fs::path folderArgument(const std::string& argument)
{
    return Paths::folderPath(argument);
}

std::expected<std::vector<fs::path>, std::string> itemArguments(std::span<const std::string> arguments)
{
    std::vector<fs::path> items;
    for (const auto& argument : arguments) {
        if (Paths::endsInDotOrDotDot(argument))
            return std::unexpected("refusing “" + DisplayText::visible(argument) +
                                   "”: it ends in “.” or “..”, which names a folder by its place; name the folder "
                                   "itself (nothing was changed)");
        items.push_back(argumentPath(argument));
    }
    return items;
}

} // namespace orbisk::cli
