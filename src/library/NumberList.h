#pragma once

#include <QString>
#include <QStringView>

/// Numbers in one text, separated by single blanks: the form in which the library file lists photos and keywords.
namespace NumberList {

/// The decimal number at the front of the text; 0 when there is none, the nearest that fits when it is too large.
[[nodiscard]] qint64 numberAtFront(QStringView text);

/// Appends the number, with a blank before it unless it is the first.
void append(QString &text, quint64 number);

/// Calls `visit` with each number until it answers false; then the answer is false too. An empty text holds none.
template<typename Visit>
[[nodiscard]] bool forEach(QStringView text, Visit visit)
{
    while (!text.isEmpty()) {
        const qsizetype blank = text.indexOf(u' ');
        const QStringView piece = blank < 0 ? text : text.first(blank);
        if (!visit(numberAtFront(piece)))
            return false;
        text = blank < 0 ? QStringView() : text.sliced(blank + 1);
    }
    return true;
}

}
