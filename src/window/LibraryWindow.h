#pragma once

#include <QMainWindow>

#include <functional>

/// The library window's frame: closing asks first, and dropped files are handed on.
class LibraryWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit LibraryWindow(QWidget *parent = nullptr);

    /// Asked when the window is about to close; it stays open when this answers false.
    void setShouldClose(std::function<bool()> shouldClose) { m_shouldClose = std::move(shouldClose); }

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
};
