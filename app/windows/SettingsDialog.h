// The settings window: every change applies at once.
#pragma once

#include <QDialog>

namespace orbisk {

class AppSettings;

class SettingsDialog : public QDialog {
    Q_OBJECT
public:
    explicit SettingsDialog(AppSettings& settings, QWidget* parent = nullptr);
};

} // namespace orbisk
