#pragma once

#include "PhotoExport.h"

#include <QDialog>
#include <QHash>

#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QTemporaryDir;
class UserDefaults;

/// Asks how large photos are to be sent by e-mail and tells how many bytes that comes to: it makes the copies.
class EmailDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `defaults` outlives it.
    EmailDialog(const QList<ExportedPhoto> &photos, UserDefaults &defaults, QWidget *parent);
    ~EmailDialog() override;

    /// The copies of the chosen size; empty while they are being made.
    [[nodiscard]] QStringList attachments() const;
    /// Lets the copies of the chosen size outlive the dialog, and the program, as mail programs read attachments when
    /// the message is sent. Gives the folder of all of them.
    QString keepCopies();
    /// Removes copies that were kept some days ago. Blocks: any thread but the main one.
    static void removeOldCopies();

private:
    void build();
    void changeSize(int option);
    void makeCopies();
    void showCopies();
    [[nodiscard]] QString folderOf(int sizeOption) const;
    [[nodiscard]] QString summary(const ExportOutcome &copies) const;

    QList<ExportedPhoto> m_photos;
    UserDefaults &m_defaults;
    QComboBox *m_size;
    QLabel *m_summary;
    QPushButton *m_send = nullptr;
    std::unique_ptr<QTemporaryDir> m_folder;
    QHash<int, ExportOutcome> m_copies; ///< by size option
    std::unique_ptr<PhotoExport> m_export;
};
