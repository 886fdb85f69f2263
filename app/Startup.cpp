#include "Startup.h"

#include "AppSettings.h"
#include "QuitSignals.h"
#include "shortcuts/ShortcutCatalog.h"
#include "support/L10n.h"
#include "support/Translate.h"
#include "windows/MainWindow.h"

#include <QApplication>
#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <algorithm>
#include <cstdio>

namespace orbisk::Startup {

bool wantsShortcutList(const std::vector<std::string>& arguments)
{
    return std::ranges::find(arguments, "--print-shortcuts") != arguments.end();
}

std::optional<bool> explicitRightToLeft(const std::vector<std::string>& arguments)
{
    std::optional<bool> choice;
    for (const auto& argument : arguments) {
        if (argument == "-reverse" || argument == "--reverse" || argument == "--layout-direction=rtl")
            choice = true;
        else if (argument == "--layout-direction=ltr")
            choice = false;
    }
    return choice;
}

bool decideRightToLeft(std::optional<bool> explicitChoice, const std::vector<std::string>& uiLanguages)
{
    if (explicitChoice)
        return *explicitChoice;
    if (uiLanguages.empty())
        return false;
    return QLocale(QString::fromStdString(uiLanguages.front())).textDirection() == Qt::RightToLeft;
}

void installTranslatorHook()
{
    setTranslatorHook([](const char* context, const char* key) -> std::string {
        // Qt hands back the key itself when it has no translation; the core then drops the
        // "||context" part of the key on its own.
        const auto translated = QCoreApplication::translate(context, key);
        return translated == QString::fromUtf8(key) ? std::string() : translated.toStdString();
    });
}

std::unique_ptr<QuitSignals> quitOnSignals(MainWindow& window)
{
    return std::make_unique<QuitSignals>([&window](int) {
        window.close();
        QCoreApplication::quit();
    });
}

int run(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv, argv + argc);
    if (wantsShortcutList(arguments)) {
        // Before any application object: this works without a display.
        const auto text = ShortcutCatalog::markdown();
        std::fwrite(text.data(), 1, text.size(), stdout);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }

    // Qt handles "-reverse" itself and removes it from argv, so the choice is read first.
    const auto explicitChoice = explicitRightToLeft(arguments);
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Orbisk");
    QCoreApplication::setApplicationName("Orbisk");

    AppSettings settings;
    setPseudoLanguage(settings.pseudoLanguage());
    QTranslator translator;
    if (translator.load(QLocale(), "orbisk", "_", ":/i18n"))
        QCoreApplication::installTranslator(&translator);
    installTranslatorHook();

    std::vector<std::string> languages;
    for (const auto& language : QLocale::system().uiLanguages())
        languages.push_back(language.toStdString());
    const bool rightToLeft = decideRightToLeft(explicitChoice, languages);
    QApplication::setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    L10n::setRightToLeft(rightToLeft);

    MainWindow window(settings);
    const auto quitSignals = quitOnSignals(window);
    window.restoreSession();
    window.show();
    return QApplication::exec();
}

} // namespace orbisk::Startup
