#include "PhotoMatcher.h"

#include "DynamicArray.h"
#include "KeywordVocabulary.h"
#include "PIPhoto.h"
#include "StringUtilities.h"

#include <algorithm>
#include <functional>

namespace {

/// Two blanks in a row make an empty one.
QStringList wordsIn(const QString &text)
{
    QStringList words;
    for (qsizetype begin = 0, end = 0; !text.isEmpty() && end <= text.size(); ++end) {
        if (end < text.size() && !text.at(end).isSpace())
            continue;
        words << text.mid(begin, end - begin);
        begin = end + 1;
    }
    return words;
}

/// An empty word is found nowhere.
std::vector<QStringMatcher> matchersOf(const QStringList &words)
{
    std::vector<QStringMatcher> matchers;
    for (const QString &word : words) {
        if (!word.isEmpty())
            matchers.emplace_back(word.normalized(QString::NormalizationForm_C), Qt::CaseInsensitive);
    }
    return matchers;
}

bool mayCombine(QChar unit)
{
    const char16_t code = unit.unicode();
    const auto isIn = [code](char16_t first, char16_t last) { return code >= first && code <= last; };
    return code >= 0x300 && (isIn(0x300, 0x36f) || isIn(0x1100, 0x11ff) || isIn(0x3099, 0x309a) || unit.isMark());
}

/// The text with accents as parts of their letters; `buffer` holds it when it was another.
QStringView composed(QStringView text, QString &buffer)
{
    if (std::none_of(text.cbegin(), text.cend(), mayCombine))
        return text;
    buffer = text.toString().normalized(QString::NormalizationForm_C);
    return buffer;
}

bool contains(QStringView text, const QStringMatcher &word)
{
    return word.indexIn(text) >= 0;
}

}

PhotoMatcher::PhotoMatcher(const FindCriteria &criteria, const KeywordVocabulary &vocabulary)
    : m_criteria(criteria)
    , m_exact(matchersOf({criteria.exactString}))
    , m_noneWords(matchersOf(wordsIn(criteria.noneWordString)))
    , m_oneWords(matchersOf(wordsIn(criteria.oneWordString)))
{
    const QStringList allWords = wordsIn(criteria.allWordsString);
    if (!allWords.contains(QString()))
        m_allWords = matchersOf(allWords);
    if (!criteria.searchKeywords)
        return;
    m_keywords.reserve(static_cast<std::size_t>(vocabulary.count()));
    for (const QString &keyword : vocabulary.words())
        m_keywords.push_back(hitsIn(keyword.normalized(QString::NormalizationForm_C)));
    if (std::none_of(m_keywords.cbegin(), m_keywords.cend(), std::mem_fn(&KeywordHits::matters)))
        m_keywords.clear();
}

bool PhotoMatcher::containsAny(QStringView text, const Words &words)
{
    return std::any_of(words.cbegin(), words.cend(), [&](const QStringMatcher &word) { return contains(text, word); });
}

PhotoMatcher::KeywordHits PhotoMatcher::hitsIn(const QString &keyword) const
{
    KeywordHits hits{
        containsAny(keyword, m_noneWords), containsAny(keyword, m_exact) || containsAny(keyword, m_oneWords), {}};
    if (!containsAny(keyword, m_allWords))
        return hits;
    for (const QStringMatcher &word : m_allWords)
        hits.allWords.push_back(contains(keyword, word));
    return hits;
}

bool PhotoMatcher::matches(const PIPhoto &photo) const
{
    QString buffers[2];
    const QStringView caption = m_criteria.searchCaptions ? composed(photo.caption(), buffers[0]) : QStringView();
    const QStringView fileName = m_criteria.searchFileNames && photo.fileRef()
                                     ? composed(QVString::fileNameMinusExtensionIn(photo.fileRef()->path()), buffers[1])
                                     : QStringView();
    if (!m_noneWords.empty() &&
        (containsAny(caption, m_noneWords) || containsAny(fileName, m_noneWords) || isExcluded(photo)))
        return false;
    return textMatches(caption) || textMatches(fileName) || keywordsMatch(photo);
}

/// Null beyond the last of the photo's keywords. A number that stands for no keyword has none.
const PhotoMatcher::KeywordHits *PhotoMatcher::hitsAt(const PIPhoto &photo, std::uint32_t place) const
{
    static const KeywordHits nothing;
    const DynamicArray *keywords = m_keywords.empty() ? nullptr : photo.keywords();
    if (!keywords || place >= keywords->count)
        return nullptr;
    quint64 keyword = 0;
    FetchDynamicArrayEntry(keywords, place, &keyword);
    return keyword < m_keywords.size() ? &m_keywords[keyword] : &nothing;
}

bool PhotoMatcher::isExcluded(const PIPhoto &photo) const
{
    for (std::uint32_t place = 0; const KeywordHits *hits = hitsAt(photo, place); ++place) {
        if (hits->excludes)
            return true;
    }
    return false;
}

bool PhotoMatcher::textMatches(QStringView text) const
{
    if (text.isEmpty())
        return false;
    return containsAny(text, m_exact) || containsAny(text, m_oneWords) ||
           (!m_allWords.empty() && std::all_of(m_allWords.cbegin(), m_allWords.cend(),
                                               [&](const QStringMatcher &word) { return contains(text, word); }));
}

/// Unlike in texts, words that must all occur may be spread over several keywords.
bool PhotoMatcher::keywordsMatch(const PIPhoto &photo) const
{
    std::vector<bool> found(m_allWords.size(), false);
    for (std::uint32_t place = 0; const KeywordHits *hits = hitsAt(photo, place); ++place) {
        if (hits->matches)
            return true;
        for (std::size_t word = 0; word < hits->allWords.size(); ++word)
            found[word] = found[word] || hits->allWords[word];
    }
    return !found.empty() && std::all_of(found.cbegin(), found.cend(), [](bool isFound) { return isFound; });
}
