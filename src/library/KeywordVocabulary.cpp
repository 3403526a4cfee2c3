#include "KeywordVocabulary.h"

#include "KeywordText.h"

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

QList<quint64> KeywordVocabulary::displayOrder() const
{
    QList<quint64> order(m_words.size());
    std::iota(order.begin(), order.end(), quint64(0));
    const auto word = [this](quint64 position) { return m_words.at(static_cast<qsizetype>(position)); };
    std::stable_sort(order.begin(), order.end(), [&word](quint64 left, quint64 right) {
        return KeywordText::standsBefore(word(left), word(right));
    });
    return order;
}
