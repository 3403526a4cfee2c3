#pragma once

#include <QFileDialog>

class PISaveFormatViewController;
class QLineEdit;

/// Asks where photos are to be exported to, with the panel that asks how. The extension of a file follows the format
/// and the format a typed extension.
class ExportDialog final : public QFileDialog
{
    Q_OBJECT

public:
    enum class Target { File, Folder };
    ExportDialog(Target target, QWidget *parent);

    [[nodiscard]] PISaveFormatViewController &panel() const { return *m_panel; }
    /// Proposes a file name; its extension is put right.
    void suggestName(const QString &name);
    /// What was chosen. A file has the extension of the format, unless it is a folder's name.
    [[nodiscard]] QString path() const { return selectedFiles().value(0); }
    /// The chosen folder, or that of the file.
    [[nodiscard]] QString folder() const;

protected:
    void accept() override;

private:
    void hideFileTypes();
    void addPanel();
    void enforceFormat(int format);
    void followExtension(const QString &name);

    Target m_target;
    PISaveFormatViewController *m_panel;
    QLineEdit *m_name;
};
