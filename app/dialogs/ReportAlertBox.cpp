#include "dialogs/ReportAlertBox.h"

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"

#include <QMessageBox>
#include <QPushButton>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

namespace orbisk::ReportAlertBox {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

std::string permissions(mode_t mode)
{
    std::string text;
    const std::pair<mode_t, char> bits[] = {{S_IRUSR, 'r'}, {S_IWUSR, 'w'}, {S_IXUSR, 'x'},
                                            {S_IRGRP, 'r'}, {S_IWGRP, 'w'}, {S_IXGRP, 'x'},
                                            {S_IROTH, 'r'}, {S_IWOTH, 'w'}, {S_IXOTH, 'x'}};
    for (const auto& [bit, letter] : bits)
        text += (mode & bit) ? letter : '-';
    char octal[8];
    std::snprintf(octal, sizeof octal, " (%03o)", static_cast<unsigned>(mode & 0777));
    return text + octal;
}

std::string userName(uid_t uid)
{
    const auto* entry = getpwuid(uid);
    return entry ? std::string(entry->pw_name) : std::to_string(uid);
}

std::string groupName(gid_t gid)
{
    const auto* entry = getgrgid(gid);
    return entry ? std::string(entry->gr_name) : std::to_string(gid);
}

} // namespace

QMessageBox* present(const OperationReport& report, std::string_view verb, QWidget* window)
{
    const auto alert = ReportAlert::forReport(report, verb);
    return alert ? show(*alert, window) : nullptr;
}

QMessageBox* show(const ReportAlert& alert, QWidget* window)
{
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Orbisk"), qtext(alert.title),
                                QMessageBox::NoButton, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(qtext(alert.body));
    for (const auto& button : alert.buttons) {
        if (button.role == ReportAlert::ButtonRole::showProperties && alert.propertiesItem) {
            auto* properties = box->addButton(qtext(button.text), QMessageBox::ActionRole);
            const auto item = *alert.propertiesItem;
            QObject::connect(properties, &QPushButton::clicked, box, [item, window] { showProperties(item, window); });
        } else {
            box->setDefaultButton(box->addButton(qtext(button.text), QMessageBox::AcceptRole));
        }
    }
    box->open();
    return box;
}

void showProperties(const std::filesystem::path& item, QWidget* window)
{
    const auto name = item.filename().empty() ? item.native() : item.filename().native();
    std::string body = L(translate("Orbisk", "Location: %@"), item.parent_path().native());
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) {
        body += '\n' + translate("Orbisk", "The item can no longer be read.");
    } else {
        const auto kind = S_ISDIR(status.st_mode)   ? translate("Orbisk", "Folder")
                          : S_ISLNK(status.st_mode) ? translate("Orbisk", "Symbolic link")
                          : S_ISREG(status.st_mode) ? translate("Orbisk", "File")
                                                    : translate("Orbisk", "Special file");
        body += '\n' + L(translate("Orbisk", "Kind: %@"), kind);
        if (S_ISREG(status.st_mode))
            body += '\n' + L(translate("Orbisk", "Size: %@"), formatByteCount(status.st_size));
        body += '\n' + L(translate("Orbisk", "Owner: %@"), userName(status.st_uid));
        body += '\n' + L(translate("Orbisk", "Group: %@"), groupName(status.st_gid));
        body += '\n' + L(translate("Orbisk", "Permissions: %@"), permissions(status.st_mode));
    }
    auto* box = new QMessageBox(QMessageBox::Information, qtext(L(translate("Orbisk", "“%@” Properties"), name)),
                                qtext(DisplayText::displayName(name)), QMessageBox::Ok, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(qtext(body));
    box->open();
}

} // namespace orbisk::ReportAlertBox
