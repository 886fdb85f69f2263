#include "windows/SettingsDialog.h"

#include "AppSettings.h"
#include "support/Translate.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace orbisk {

SettingsDialog::SettingsDialog(AppSettings& settings, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QString::fromStdString(translate("Orbisk", "Settings")));
    auto* layout = new QVBoxLayout(this);
    const auto addGroup = [&](const std::string& title) {
        auto* group = new QGroupBox(QString::fromStdString(title), this);
        group->setLayout(new QVBoxLayout);
        layout->addWidget(group);
        return group;
    };
    const auto addSwitch = [&](QGroupBox* group, const std::string& title, bool on, void (AppSettings::*set)(bool)) {
        auto* box = new QCheckBox(QString::fromStdString(title), group);
        box->setChecked(on);
        connect(box, &QCheckBox::toggled, &settings, [&settings, set](bool checked) { (settings.*set)(checked); });
        group->layout()->addWidget(box);
        return box;
    };
    auto* lists = addGroup(translate("Orbisk", "Folder Lists"));
    auto* hidden = addSwitch(lists, translate("Orbisk", "Show hidden files"), settings.showHiddenFiles(),
                             &AppSettings::setShowHiddenFiles);
    addSwitch(lists, translate("Orbisk", "Show folders before files"), settings.directoriesFirst(),
              &AppSettings::setDirectoriesFirst);
    addSwitch(lists, translate("Orbisk", "Reload folders when they change on disk"), settings.watchDirectories(),
              &AppSettings::setWatchDirectories);
    auto* window = addGroup(translate("Orbisk", "Window"));
    auto* keyBar = addSwitch(window, translate("Orbisk", "Show the function key bar"), settings.showFunctionKeyBar(),
                             &AppSettings::setShowFunctionKeyBar);
    // The menus change these too; keep the boxes in step.
    connect(&settings, &AppSettings::changed, this, [&settings, hidden, keyBar] {
        hidden->setChecked(settings.showHiddenFiles());
        keyBar->setChecked(settings.showFunctionKeyBar());
    });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 55);
}

} // namespace orbisk
