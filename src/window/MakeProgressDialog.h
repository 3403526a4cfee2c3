#pragma once

#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

/// Hides a dialog at once and deletes it later: the dialog itself may be what called.
struct ProgressDialogEnd
{
    void operator()(QProgressDialog *dialog) const;
};
using ProgressDialogPointer = std::unique_ptr<QProgressDialog, ProgressDialogEnd>;

/// A dialog with a Cancel button for work of unknown length, which shows itself when the work takes more than a moment.
/// It stays until its owner ends it. `window` becomes its parent; it lets the user go on there unless made modal.
[[nodiscard]] ProgressDialogPointer makeProgressDialog(const QString &title, const QString &text, QWidget &window);
