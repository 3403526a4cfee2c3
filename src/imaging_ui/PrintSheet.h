#pragma once

#include "PIPrintView.h"
#include "PrintJob.h"

#include <QDialog>

#include <optional>

class PIPrintOptionVC;
class PixelPool;
class PrintPreview;
class QLabel;
class QToolButton;
class UserDefaults;

/// The sheet before a print: how the pages will look, the printing options, and the way to the platform's print dialog.
class PrintSheet final : public QDialog
{
    Q_OBJECT

public:
    /// `defaults` and `pool` outlive it.
    PrintSheet(const QList<PrintedPhoto> &photos, UserDefaults &defaults, PixelPool &pool, QWidget *parent);
    ~PrintSheet() override;

    /// What is to be printed where, after the print dialog was accepted.
    [[nodiscard]] const std::optional<PrintJob> &job() const { return m_job; }
    /// The photos on pages of that set-up, with the options as they are chosen now.
    [[nodiscard]] static PIPrintView viewFor(const QList<PrintedPhoto> &photos, const QPageLayout &paper);

    /// Lets the user choose paper and margins, which prints then start with.
    static bool askForPageSetup(UserDefaults &defaults, QWidget &parent);

private:
    [[nodiscard]] QWidget *makePreviewSide();
    void updatePages();
    void showPosition();
    void choosePrinter();

    QList<PrintedPhoto> m_photos;
    UserDefaults &m_defaults;
    PIPrintOptionVC *m_options;
    PrintPreview *m_preview;
    QToolButton *m_previous;
    QToolButton *m_next;
    QLabel *m_position;
    std::optional<PrintJob> m_job;
};
