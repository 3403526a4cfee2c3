#pragma once

#include <QWidget>

class QToolButton;

/// A titled part of the detail pane that can be folded away.
class CollapsibleSection final : public QWidget
{
    Q_OBJECT

public:
    /// Takes ownership of `content`.
    CollapsibleSection(const QString &title, QWidget *content, QWidget *parent = nullptr);

    [[nodiscard]] bool isOpen() const;
    void setOpen(bool open);

Q_SIGNALS:
    void openChanged(bool open);

private:
    void showState();

    QToolButton *m_header;
    QWidget *m_content;
};
