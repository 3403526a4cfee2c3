#pragma once

#include "PhotoExport.h"

#include <QDialog>

#include <memory>
#include <optional>

class QComboBox;
class QLabel;
class QPushButton;
class UserDefaults;

/// Asks how large photos are to be sent by e-mail and tells how many bytes that comes to: it makes the copies.
class EmailDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `defaults` and `files` outlive it. In `files` it removes copies that are not wanted any more.
    EmailDialog(const QList<ExportedPhoto> &photos, UserDefaults &defaults, DispatchQueue &files, QWidget *parent);
    ~EmailDialog() override;

    /// The copies of the chosen size; empty while they are being made.
    [[nodiscard]] QStringList attachments() const;
    /// Lets the copies of the chosen size outlive the dialog, and the program, as mail programs read attachments when
    /// the message is sent. Gives the folder of them.
    QString keepCopies();
    /// Removes copies that were kept some days ago. Blocks: any thread but the main one.
    static void removeOldCopies();

private:
    void build();
    void changeSize(int option);
    void makeCopies();
    void showCopies();
    void dropCopies();
    void startExport(const QString &folder);
    [[nodiscard]] QString summary(const ExportOutcome &copies) const;

    QList<ExportedPhoto> m_photos;
    UserDefaults &m_defaults;
    QComboBox *m_size;
    QLabel *m_summary;
    QPushButton *m_send = nullptr;
    DispatchQueue &m_files;
    QString m_folder; ///< of the present copies; empty when there is none
    std::optional<ExportOutcome> m_copies;
    std::unique_ptr<PhotoExport> m_export;
};
