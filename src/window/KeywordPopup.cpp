#include "KeywordPopup.h"

#include "KeywordVocabulary.h"

#include <QFontMetrics>
#include <QMenu>
#include <QToolButton>

void UpdateKeyWordPopup(QToolButton &popup, const KeywordVocabulary &vocabulary)
{
    popup.setText(QStringLiteral("+"));
    popup.setPopupMode(QToolButton::InstantPopup);
    if (!popup.menu()) {
        auto *menu = new QMenu(&popup);
        menu->setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }")); // one column, however many there are
        popup.setMenu(menu);
    }
    popup.menu()->clear();
    constexpr int kWidest = 360; // pixels
    const auto order = vocabulary.displayOrder();
    for (const quint64 position : order) {
        const QString &keyword = vocabulary.words().at(static_cast<qsizetype>(position));
        QString title = popup.fontMetrics().elidedText(keyword.simplified(), Qt::ElideMiddle, kWidest);
        popup.menu()->addAction(title.replace(u'&', QLatin1String("&&")))->setData(keyword);
    }
}
