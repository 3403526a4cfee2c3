#include "EffectSetMenu.h"

#include "LibraryActions.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

EffectSetMenu::EffectSetMenu(const PhotoLibrary &library, NotificationCenter &notifications, LibraryActions &actions,
                             QWidget &window)
    : QMenu(tr("Effect &Sets"), &window)
    , m_library(library)
    , m_actions(actions)
    , m_window(window)
    , m_setsObserver(
          notifications.observe(kEffectSetsNotification, [this](const NotificationObject &) { effectSetsChanged(); }))
{
    effectSetsChanged();
}

void EffectSetMenu::setUsable(bool usable)
{
    m_usable = usable;
    for (QAction *action : actions())
        action->setEnabled(usable);
}

void EffectSetMenu::effectSetsChanged()
{
    const QList<QAction *> before = actions();
    for (QAction *action : before) {
        m_window.removeAction(action);
        removeAction(action);
        action->deleteLater();
    }
    const QStringList names = sortedEffectSetNames(m_library.effectSets());
    QList<QKeySequence> keys;
    for (qsizetype i = 0; i < names.size(); ++i) {
        QAction *action = addAction(QString(names.at(i)).replace(u'&', QLatin1String("&&")));
        action->setEnabled(m_usable);
        connect(action, &QAction::triggered, this, [this, name = names.at(i)] { Q_EMIT chosen(name); });
        if (i < kFunctionKeys) {
            keys << QKeySequence(Qt::Key_F1 + int(i));
            action->setShortcut(keys.last());
            m_window.addAction(action);
        }
    }
    m_actions.lendKeys(keys);
    menuAction()->setEnabled(!names.isEmpty());
}
