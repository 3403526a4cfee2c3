#include "WordField.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>

namespace {

/// A longer text scrolls.
constexpr int kMostLines = 8;
/// Pixels without which a text that fits exactly would scroll.
constexpr int kSlack = 2;

QString onOneLine(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    for (QChar &unit : text) {
        if (unit == QChar::LineFeed || unit == QChar::CarriageReturn || unit == QChar::LineSeparator ||
            unit == QChar::ParagraphSeparator)
            unit = u' ';
    }
    return text;
}

}

WordField::WordField(int fewestLines, QWidget *parent)
    : QPlainTextEdit(parent)
    , m_fewestLines(fewestLines)
{
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        fitHeight();
        if (isEdited())
            Q_EMIT textEdited();
    });
    fitHeight();
}

void WordField::setStoredText(const QString &text)
{
    m_storedText = text;
    if (!isEdited() && text != toPlainText())
        showStoredText();
}

QString WordField::text() const
{
    return onOneLine(toPlainText());
}

void WordField::endEditing()
{
    if (!isEdited())
        return;
    document()->clearUndoRedoStacks(); // to take it back is to undo the change of the library
    document()->setModified(false);
    Q_EMIT editingEnded();
}

void WordField::continueTyping()
{
    if (!hasFocus() && !m_storedText.isEmpty() && !isEdited()) {
        moveCursor(QTextCursor::End);
        insertPlainText(QStringLiteral(" "));
        document()->clearUndoRedoStacks();
    }
    setFocus();
}

QSize WordField::sizeHint() const
{
    return {160, heightFor(m_fewestLines)};
}

QSize WordField::minimumSizeHint() const
{
    return {60, heightFor(m_fewestLines)};
}

/// With nothing typed to take back, the shortcuts mean the library's last change.
bool WordField::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto &key = static_cast<QKeyEvent &>(*event);
        if ((key.matches(QKeySequence::Undo) && !document()->isUndoAvailable()) ||
            (key.matches(QKeySequence::Redo) && !document()->isRedoAvailable())) {
            event->ignore();
            return false;
        }
    }
    return QPlainTextEdit::event(event);
}

void WordField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        endEditing();
    else if (event->key() == Qt::Key_Escape && isEdited())
        showStoredText();
    else
        QPlainTextEdit::keyPressEvent(event);
}

/// The field's own context menu belongs to the editing; any other menu may lead to a command that needs the text.
void WordField::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
    const QWidget *popup = event->reason() == Qt::PopupFocusReason ? QApplication::activePopupWidget() : nullptr;
    if (!popup || popup->parentWidget() != this)
        endEditing();
}

void WordField::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    fitHeight();
}

void WordField::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitHeight();
}

/// Files that are dropped are meant for the window.
bool WordField::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasText() && !source->hasUrls();
}

void WordField::insertFromMimeData(const QMimeData *source)
{
    textCursor().insertText(onOneLine(source->text()));
    ensureCursorVisible();
}

void WordField::showStoredText()
{
    setPlainText(m_storedText);
    if (hasFocus())
        moveCursor(QTextCursor::End);
}

void WordField::fitHeight()
{
    qreal needed = document()->documentMargin() + 2 * frameWidth() + kSlack;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        needed += blockBoundingRect(block).height();
    const int most = heightFor(kMostLines);
    setVerticalScrollBarPolicy(needed > most ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    setFixedHeight(qBound(heightFor(m_fewestLines), qCeil(needed), most));
}

int WordField::heightFor(int lines) const
{
    return lines * fontMetrics().lineSpacing() + 2 * (qCeil(document()->documentMargin()) + frameWidth()) + kSlack;
}
