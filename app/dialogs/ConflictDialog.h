// The question asked when an incoming item meets an existing one of the same name.
#pragma once

#include "operations/ItemStamp.h"
#include "operations/NameConflict.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QPushButton;

namespace orbisk {

/// A clash with what the worker saw of both items (absent when their status could not be read).
struct ConflictDetails {
    NameConflict conflict;
    std::optional<ItemStamp> source;
    std::optional<ItemStamp> existing;

    /// Reads both stamps; a status query for each item, meant for the worker thread.
    [[nodiscard]] static ConflictDetails of(const NameConflict& conflict);
};

/// Shown with open(), never exec(): answered() says what the user chose, once. Closing it in any
/// other way (Escape, the window's close button) answers cancel. Each choice is a button whose
/// object name is the choice's stored word ("keepBoth", "replace", …). For the same item only Keep
/// Both, Skip and Cancel are offered; Merge only when the two can be merged.
class ConflictDialog : public QDialog {
    Q_OBJECT
public:
    explicit ConflictDialog(const ConflictDetails& details, QWidget* parent = nullptr);

    /// The button of a choice, or null when it is not offered.
    [[nodiscard]] QPushButton* button(ConflictChoice choice) const;
    [[nodiscard]] QCheckBox* applyToRemaining() const { return applyToRemaining_; }

    /// Answers (once) and closes.
    void choose(ConflictChoice choice);

signals:
    void answered(ConflictDecision decision);

protected:
    void done(int result) override;

private:
    QCheckBox* applyToRemaining_ = nullptr;
    bool answered_ = false;
};

} // namespace orbisk
