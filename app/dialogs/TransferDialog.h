// The copy and move dialog: where to (a folder, a new name or a mask) and what to do on a clash.
#pragma once

#include "operations/ConflictChoice.h"

#include <QDialog>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;

namespace orbisk {

class TransferDialog : public QDialog {
    Q_OBJECT
public:
    enum class Kind { copy, move };

    /// A dialog for sending items to destination (usually the other pane's folder), showing policy
    /// as the clash choice. Open it with open(); accepted() means the user confirmed.
    TransferDialog(Kind kind, const std::vector<std::filesystem::path>& items, const std::filesystem::path& destination,
                   std::optional<ConflictChoice> policy, QWidget* parent = nullptr);

    /// The destination as the user left it, in exact bytes (see TypedPath).
    [[nodiscard]] std::string destinationText() const;
    /// The chosen standing answer to clashes; nothing means ask each time.
    [[nodiscard]] std::optional<ConflictChoice> policy() const;

    [[nodiscard]] QLineEdit* destinationField() const { return field_; }
    [[nodiscard]] QComboBox* policyBox() const { return policyBox_; }

    /// The clash choices the dialog offers as a standing answer, in menu order (merge is only ever
    /// asked about, since it applies to folders alone).
    static const std::vector<ConflictChoice>& offeredPolicies();

private:
    std::string prefilled_;
    QLabel* question_ = nullptr;
    QLineEdit* field_ = nullptr;
    QComboBox* policyBox_ = nullptr;
};

} // namespace orbisk
