#pragma once

#include <QMainWindow>

#include <functional>

class PIFolder;
class PIPhoto;
class QLabel;

/// The library window's frame: its title and status bar tell what is shown, closing asks first, and dropped files are
/// handed on.
class LibraryWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit LibraryWindow(QWidget *parent = nullptr);

    /// Asked when the window is about to close; it stays open when this answers false.
    void setShouldClose(std::function<bool()> shouldClose) { m_shouldClose = std::move(shouldClose); }

    /// Titles the window for the current photo of the folder on show; either may be null.
    void showTitle(const PIFolder *folder, const PIPhoto *photo);
    /// Shows how many photos the folder has, and how many of them are selected; nothing for null.
    void showSummary(const PIFolder *folder, qint64 selected);
    /// Shows the text in the status bar for a while.
    void tell(const QString &text);

Q_SIGNALS:
    void filesDropped(const QStringList &paths);
    void closed();
    void fullScreenChanged(bool fullScreen);
    /// Another window is used now.
    void didResignKey();
    /// The window is used again after others were.
    void cameBack();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void activationChanged();

    std::function<bool()> m_shouldClose;
    bool m_wasLeft = false;
    QLabel *m_summary;
};
