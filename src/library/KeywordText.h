#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class KeywordVocabulary;

/// Keywords as people write them: on one line, parted by blanks and punctuation, those of several words in quotes.
namespace KeywordText {

/// A word or quoted phrase of a list; the quotes belong to it.
struct Span
{
    qsizetype begin = 0;
    qsizetype length = 0;
    [[nodiscard]] qsizetype end() const { return begin + length; }
    /// Single characters and empty quotes are not.
    [[nodiscard]] bool isKeyword(QStringView list) const;
};
[[nodiscard]] QList<Span> spansIn(QStringView list);

/// Without the punctuation at its ends, quotes among it: what people read and sort by.
[[nodiscard]] QStringView innerText(QStringView keyword);
/// Whether people are shown the one keyword before the other.
[[nodiscard]] bool standsBefore(const QString &left, const QString &right);
/// The text as a list takes it for one keyword: in quotes where it would be torn apart or dropped. Empty when it has
/// nothing but quotes and blanks.
[[nodiscard]] QString asOneKeyword(const QString &text);
/// The list of just these keywords, each as one; quotes within one become apostrophes.
[[nodiscard]] QString listOf(const QStringList &keywords);

/// What the word that is being typed into a list may become.
struct Completion
{
    Span typed;             ///< what a candidate is to replace
    QStringList candidates; ///< as they are to stand in the list, in display order
};
/// The keywords that begin with what stands before the cursor and that the list has not. None when the cursor is within
/// a word or behind a closing quote.
[[nodiscard]] Completion completionAt(const QString &list, qsizetype cursor, const KeywordVocabulary &vocabulary);

}
