#include "KeywordText.h"

#include "KeywordVocabulary.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace {

constexpr QChar kQuote = u'"';

bool isDelimiter(QChar unit)
{
    if (unit == u'\'' || unit == kQuote)
        return false;
    const auto category = unit.category();
    return unit.isSpace() || unit.isPunct() || category == QChar::Other_Control || category == QChar::Other_Format;
}

/// The position behind the word or quoted phrase that begins there.
qsizetype endOfKeyword(QStringView text, qsizetype begin)
{
    if (text.at(begin) == kQuote) {
        const qsizetype quote = text.indexOf(kQuote, begin + 1);
        return quote < 0 ? text.size() : quote + 1;
    }
    return std::find_if(text.begin() + begin, text.end(), isDelimiter) - text.begin();
}

}

bool KeywordText::Span::isKeyword(QStringView list) const
{
    return length >= 2 && list.sliced(begin, length) != QLatin1String("\"\"");
}

QList<KeywordText::Span> KeywordText::spansIn(QStringView list)
{
    QList<Span> spans;
    qsizetype begin = 0;
    while (begin < list.size()) {
        if (isDelimiter(list.at(begin))) {
            ++begin;
            continue;
        }
        const qsizetype end = endOfKeyword(list, begin);
        spans.append({begin, end - begin});
        begin = end + 1; // the unit that ended the keyword is never looked at
    }
    return spans;
}

QStringView KeywordText::innerText(QStringView keyword)
{
    while (!keyword.isEmpty() && keyword.front().isPunct())
        keyword = keyword.sliced(1);
    while (!keyword.isEmpty() && keyword.back().isPunct())
        keyword.chop(1);
    return keyword;
}

bool KeywordText::standsBefore(const QString &left, const QString &right)
{
    return innerText(left).compare(innerText(right), Qt::CaseInsensitive) < 0;
}

QString KeywordText::asOneKeyword(const QString &text)
{
    const auto spans = spansIn(text);
    if (spans.size() == 1 && spans.first().length == text.size() && spans.first().isKeyword(text) &&
        (text.front() != kQuote || text.back() == kQuote))
        return text;
    const QString inner = QString(text).remove(kQuote);
    return inner.trimmed().isEmpty() ? QString() : QString(kQuote + inner + kQuote);
}

QString KeywordText::listOf(const QStringList &keywords)
{
    QStringList list;
    for (const QString &keyword : keywords) {
        const bool isQuoted = keyword.size() > 2 && keyword.startsWith(kQuote) && keyword.endsWith(kQuote);
        QString phrase = isQuoted ? keyword.sliced(1, keyword.size() - 2) : keyword;
        phrase.replace(kQuote, u'\''); // nothing stands for a quote within quotes
        if (const QString whole = asOneKeyword(phrase); !whole.isEmpty())
            list << whole;
    }
    return list.join(u' ');
}

namespace {

/// The word or unfinished phrase that ends at the cursor.
std::optional<KeywordText::Span> typedAt(const QList<KeywordText::Span> &spans, QStringView list, qsizetype cursor)
{
    for (const KeywordText::Span &span : spans) {
        if (span.begin >= cursor || span.end() < cursor)
            continue;
        const bool isPhrase = list.at(span.begin) == kQuote;
        const bool isClosed = isPhrase && span.length > 1 && list.at(span.end() - 1) == kQuote;
        if (isClosed || (!isPhrase && span.end() != cursor))
            return std::nullopt;
        return KeywordText::Span{span.begin, cursor - span.begin}; // an open quote reaches to the end of the list
    }
    return std::nullopt;
}

}

KeywordText::Completion KeywordText::completionAt(const QString &list, qsizetype cursor,
                                                  const KeywordVocabulary &vocabulary)
{
    const auto spans = spansIn(list);
    const auto typed = typedAt(spans, list, cursor);
    const QStringView typedText = typed ? QStringView(list).sliced(typed->begin, typed->length) : QStringView();
    const QStringView begun = innerText(typedText);
    if (begun.isEmpty())
        return {};
    QSet<QString> had;
    for (const Span &span : spans)
        had.insert(list.sliced(span.begin, span.length).toCaseFolded());
    Completion completion{*typed, {}};
    for (const QString &keyword : vocabulary.words()) {
        if (!innerText(keyword).startsWith(begun, Qt::CaseInsensitive))
            continue;
        const QString candidate = asOneKeyword(keyword);
        const qsizetype before = had.size();
        had.insert(candidate.toCaseFolded());
        if (had.size() > before && !candidate.isEmpty())
            completion.candidates.append(candidate);
    }
    std::stable_sort(completion.candidates.begin(), completion.candidates.end(), standsBefore);
    return completion;
}
