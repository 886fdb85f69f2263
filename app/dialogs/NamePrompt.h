// A small dialog that asks for one file name: new folder, new file, rename.
#pragma once

#include <QDialog>

#include <string>

class QLabel;
class QLineEdit;
class QPushButton;

namespace orbisk {

class NamePrompt : public QDialog {
    Q_OBJECT
public:
    /// Asks with message, the field holding proposal (selected up to its extension when
    /// selectStem, so that typing replaces the name and keeps ".txt"), and confirm as the button.
    NamePrompt(const std::string& title, const std::string& message, const std::string& proposal,
               const std::string& confirm, bool selectStem, QWidget* parent = nullptr);

    /// The name as the user left it, in exact bytes: an untouched proposal keeps bytes that are not
    /// UTF-8.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] QLineEdit* field() const { return field_; }
    [[nodiscard]] QPushButton* confirmButton() const { return confirm_; }

private:
    std::string proposal_;
    QLineEdit* field_ = nullptr;
    QPushButton* confirm_ = nullptr;
};

} // namespace orbisk
