#include "KeywordVocabulary.h"

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
