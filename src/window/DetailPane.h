#pragma once

#include <QSplitter>

class QScrollArea;

/// The photo over the sections. Until the user moves the divider, the sections have the height they need, but leave the
/// photo the larger part; what does not fit scrolls.
class DetailPane final : public QSplitter
{
    Q_OBJECT

public:
    /// Takes ownership of both.
    DetailPane(QWidget *photo, QWidget *sections, QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void place();

    QScrollArea *m_scroller;
    bool m_dividerMoved = false;
};
