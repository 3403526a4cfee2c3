#pragma once

#include "FindCriteria.h"

#include <QList>
#include <QStringMatcher>

#include <cstdint>
#include <vector>

class KeywordVocabulary;
class PIPhoto;

/// Tells which photos a search is for. What the criteria make of each keyword is worked out once, so that a photo costs
/// little; a keyword that joins the vocabulary later counts for nothing. Letters are the same whether their accents are
/// parts of them or characters of their own.
class PhotoMatcher
{
public:
    PhotoMatcher(const FindCriteria &criteria, const KeywordVocabulary &vocabulary);

    [[nodiscard]] bool matches(const PIPhoto &photo) const;

private:
    using Words = std::vector<QStringMatcher>;
    /// What a keyword of the vocabulary contains.
    struct KeywordHits
    {
        bool excludes = false;
        bool matches = false;       ///< the exact text or one of the words
        std::vector<bool> allWords; ///< which of them; empty when none
        [[nodiscard]] bool matters() const { return excludes || matches || !allWords.empty(); }
    };

    [[nodiscard]] static bool containsAny(QStringView text, const Words &words);
    [[nodiscard]] bool textMatches(QStringView text) const;
    [[nodiscard]] bool isExcluded(const PIPhoto &photo) const;
    [[nodiscard]] bool keywordsMatch(const PIPhoto &photo) const;
    [[nodiscard]] const KeywordHits *hitsAt(const PIPhoto &photo, std::uint32_t place) const;
    [[nodiscard]] KeywordHits hitsIn(const QString &keyword) const;

    FindCriteria m_criteria;
    Words m_allWords; ///< empty also when one of them is found nowhere
    Words m_exact;
    Words m_noneWords;
    Words m_oneWords;
    std::vector<KeywordHits> m_keywords; ///< by position in the vocabulary; empty when none matters
};
