#pragma once

#include <QHash>
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

private:
    QStringList m_words;
    QHash<QString, quint64> m_index; // folded word to first position
};
