#include "KeywordVocabulary.h"

#include <algorithm>
#include <numeric>

void KeywordVocabulary::append(const QString &word)
{
    const QString folded = word.toCaseFolded();
    if (!m_index.contains(folded)) // the first of equal words is the one that is found
        m_index.insert(folded, static_cast<quint64>(m_words.size()));
    m_words.append(word);
}

quint64 KeywordVocabulary::indexOfOrAppend(const QString &word)
{
    if (const auto found = indexOf(word))
        return *found;
    append(word);
    return static_cast<quint64>(m_words.size() - 1);
}

std::optional<quint64> KeywordVocabulary::indexOf(const QString &word) const
{
    const auto found = m_index.constFind(word.toCaseFolded());
    return found == m_index.cend() ? std::nullopt : std::optional(*found);
}

void KeywordVocabulary::setWords(const QStringList &words)
{
    m_words.clear();
    m_index.clear();
    for (const QString &word : words)
        append(word);
}

namespace {

QStringView withoutPunctuationAtEnds(QStringView word)
{
    while (!word.isEmpty() && word.front().isPunct())
        word = word.sliced(1);
    while (!word.isEmpty() && word.back().isPunct())
        word.chop(1);
    return word;
}

}

QList<quint64> KeywordVocabulary::displayOrder() const
{
    QStringList sortKeys;
    sortKeys.reserve(m_words.size());
    for (const QString &word : m_words)
        sortKeys << withoutPunctuationAtEnds(word).toString();
    QList<quint64> order(m_words.size());
    std::iota(order.begin(), order.end(), quint64(0));
    const auto key = [&sortKeys](quint64 position) { return sortKeys.at(static_cast<qsizetype>(position)); };
    std::stable_sort(order.begin(), order.end(), [&key](quint64 left, quint64 right) {
        return key(left).compare(key(right), Qt::CaseInsensitive) < 0;
    });
    return order;
}
