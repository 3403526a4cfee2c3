#pragma once

#include "NotificationCenter.h"

#include <QMenu>

class LibraryActions;
class PhotoLibrary;

/// The library's effect sets by name; the first fifteen have the function keys. Keys that stand for another command of
/// the window stand for the set while there is one.
class EffectSetMenu final : public QMenu
{
    Q_OBJECT

public:
    static constexpr int kFunctionKeys = 15;

    /// Both outlive the menu; the keys work in `window`.
    EffectSetMenu(const PhotoLibrary &library, NotificationCenter &notifications, LibraryActions &actions,
                  QWidget &window);

    /// Whether there is something to apply the sets to.
    void setUsable(bool usable);

Q_SIGNALS:
    void chosen(const QString &name);

private:
    void effectSetsChanged();

    const PhotoLibrary &m_library;
    LibraryActions &m_actions;
    QWidget &m_window;
    bool m_usable = false;
    NotificationCenter::Observer m_setsObserver;
};
