#include "KeywordCompleter.h"

#include "KeywordText.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>

#include <algorithm>

namespace {

constexpr int kMostRows = 8;
constexpr int kNarrowest = 120; ///< pixels
constexpr int kWidest = 420;
constexpr int kGap = 4; ///< below the line

}

KeywordCompleter::KeywordCompleter(const KeywordVocabulary &vocabulary, QWidget &field)
    : QObject(&field)
    , m_vocabulary(vocabulary)
    , m_field(field)
    , m_candidates(new QStringListModel(this))
    , m_list(new QCompleter(m_candidates, this))
{
    m_list->setCompletionMode(QCompleter::PopupCompletion); // all of them: there is no prefix. None is chosen at first
    m_list->setMaxVisibleItems(kMostRows);
    m_list->setWidget(&field);
    m_list->popup()->setTextElideMode(Qt::ElideMiddle);
    m_list->popup()->setFrameStyle(QFrame::Box | QFrame::Plain); // it lies over text
    m_list->popup()->setAccessibleName(tr("Keywords"));
    m_list->popup()->installEventFilter(this);
    field.installEventFilter(this);
    connect(m_list, qOverload<const QString &>(&QCompleter::activated), this, &KeywordCompleter::take);
}

/// Any text field answers so.
QString KeywordCompleter::text() const
{
    return m_field.inputMethodQuery(Qt::ImSurroundingText).toString();
}

int KeywordCompleter::cursor() const
{
    return m_field.inputMethodQuery(Qt::ImCursorPosition).toInt();
}

void KeywordCompleter::offer()
{
    if (m_isTaking || !m_field.hasFocus())
        return;
    const auto completion = KeywordText::completionAt(text(), cursor(), m_vocabulary);
    if (completion.candidates.isEmpty()) {
        m_list->popup()->hide();
        return;
    }
    m_candidates->setStringList(completion.candidates);
    showUnder(completion.typed.length);
}

/// Beginning where the word begins.
void KeywordCompleter::showUnder(qsizetype typedLength)
{
    const QAbstractItemView &popup = *m_list->popup();
    const int needed = popup.sizeHintForColumn(0) + popup.verticalScrollBar()->sizeHint().width() + 8;
    QRect place = m_field.inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const QString typed = text().sliced(cursor() - typedLength, typedLength);
    place.setLeft(std::max(0, place.left() - m_field.fontMetrics().horizontalAdvance(typed)));
    place.setWidth(std::clamp(needed, kNarrowest, kWidest));
    place.adjust(0, 0, 0, kGap);
    m_list->complete(place);
}

/// In place of what was typed, as if it were typed: the field's own undo takes it back.
void KeywordCompleter::take(const QString &keyword)
{
    const auto completion = KeywordText::completionAt(text(), cursor(), m_vocabulary);
    if (!completion.candidates.contains(keyword))
        return; // the cursor is elsewhere now
    const auto typed = completion.typed;
    QInputMethodEvent entry;
    entry.setCommitString(keyword, static_cast<int>(typed.begin) - cursor(), static_cast<int>(typed.length));
    m_isTaking = true;
    QCoreApplication::sendEvent(&m_field, &entry);
    m_isTaking = false;
}

bool KeywordCompleter::eventFilter(QObject *watched, QEvent *event)
{
    // The list keeps the field from hearing that it lost the focus.
    if (watched == &m_field && event->type() == QEvent::FocusOut &&
        static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason)
        m_list->popup()->hide();
    if (watched == m_list->popup() && event->type() == QEvent::KeyPress)
        return takeKey(*static_cast<QKeyEvent *>(event));
    return false;
}

bool KeywordCompleter::takeKey(QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        const QModelIndexList chosen = m_list->popup()->selectionModel()->selectedIndexes();
        m_list->popup()->hide();
        if (!chosen.isEmpty() && event.key() != Qt::Key_Backtab)
            take(chosen.first().data().toString());
        else
            QCoreApplication::sendEvent(&m_field, &event);
        return true;
    }
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End: // what is offered belongs where the cursor was
        m_list->popup()->hide();
        QCoreApplication::sendEvent(&m_field, &event);
        return true;
    case Qt::Key_Escape:
        m_list->popup()->hide();
        return true;
    default:
        return false;
    }
}
