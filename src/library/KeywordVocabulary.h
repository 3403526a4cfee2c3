#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The library's keywords in their order; photos refer to them by position. Found without regard to case.
class KeywordVocabulary
{
public:
    [[nodiscard]] const QStringList &words() const { return m_words; }
    [[nodiscard]] qsizetype count() const { return m_words.size(); }
    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }
    /// Appends even a word that is there already: a library file's numbering must hold.
    void append(const QString &word);
    /// The first position of the word; appended when it is new.
    quint64 indexOfOrAppend(const QString &word);
    [[nodiscard]] std::optional<quint64> indexOf(const QString &word) const;
    void setWords(const QStringList &words);
    /// All positions in the order in which people are shown the words: by their text without the punctuation at its
    /// ends, without regard to case. A quoted phrase stands where its first word belongs.
    [[nodiscard]] QList<quint64> displayOrder() const;

private:
    QStringList m_words;
    QHash<QString, quint64> m_index; // folded word to first position
};
