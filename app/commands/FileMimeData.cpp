#include "commands/FileMimeData.h"

#include "files/FileUri.h"
#include "support/DisplayText.h"

#include <QMimeData>

#include <string>
#include <string_view>

namespace orbisk::FileMimeData {
namespace {

const QString uriListType = QStringLiteral("text/uri-list");
const QString gnomeType = QStringLiteral("x-special/gnome-copied-files");
const QString kdeCutType = QStringLiteral("application/x-kde-cutselection");

QByteArray bytes(const std::string& text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

std::string_view view(const QByteArray& data)
{
    return {data.constData(), static_cast<std::size_t>(data.size())};
}

} // namespace

QMimeData* make(const std::vector<std::filesystem::path>& paths, bool cut)
{
    auto* data = new QMimeData;
    data->setData(uriListType, bytes(FileUri::listFromPaths(paths)));

    std::string gnome = cut ? "cut" : "copy";
    QStringList texts;
    for (const auto& path : paths) {
        gnome += '\n';
        gnome += FileUri::fromPath(path);
        texts << QString::fromStdString(DisplayText::visible(path.native()));
    }
    data->setData(gnomeType, bytes(gnome));
    data->setData(kdeCutType, cut ? QByteArrayLiteral("1") : QByteArrayLiteral("0"));
    // For text fields only: a name that is not UTF-8 shows its escapes here, never used as a path.
    data->setText(texts.join(QLatin1Char('\n')));
    return data;
}

std::optional<FileOffer> read(const QMimeData* data)
{
    if (!data)
        return std::nullopt;
    FileOffer offer;
    if (data->hasFormat(gnomeType)) {
        const auto gnome = data->data(gnomeType);
        const auto text = view(gnome);
        const auto firstLineEnd = text.find('\n');
        const auto verb = text.substr(0, firstLineEnd);
        if (verb == "copy" || verb == "cut") {
            offer.cut = verb == "cut";
            if (firstLineEnd != std::string_view::npos)
                offer.paths = FileUri::pathsFromList(text.substr(firstLineEnd + 1));
        }
    }
    if (offer.paths.empty() && data->hasFormat(uriListType)) {
        const auto list = data->data(uriListType);
        offer.paths = FileUri::pathsFromList(view(list));
        offer.cut = data->data(kdeCutType).trimmed() == "1";
    }
    if (offer.paths.empty())
        return std::nullopt;
    return offer;
}

Qt::DropAction dropAction(Qt::KeyboardModifiers modifiers, bool sameVolume)
{
    if (modifiers & Qt::ShiftModifier)
        return Qt::MoveAction;
    if (modifiers & Qt::ControlModifier)
        return Qt::CopyAction;
    return sameVolume ? Qt::MoveAction : Qt::CopyAction;
}

} // namespace orbisk::FileMimeData
