#include "KeywordManager.h"

#include "KeywordText.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"
#include "QVUndoManager.h"

#include <QSet>

#include <algorithm>
#include <utility>

KeywordManager::KeywordManager(LibraryEditor &editor, QVUndoManager &undo)
    : m_editor(editor)
    , m_undo(undo)
{
    const auto order = editor.library().keywords().displayOrder();
    for (const quint64 index : order)
        m_keywordDicts.append({.key = word(index), .index = index});
}

const QString &KeywordManager::word(quint64 index) const
{
    return m_editor.library().keywords().words().at(static_cast<qsizetype>(index));
}

void KeywordManager::setKey(qsizetype row, const QString &key)
{
    Row &changed = m_keywordDicts[row];
    if (key.isEmpty()) {
        changed.isToBeDeleted = true;
        return;
    }
    changed.key = key;
    changed.isRenamed = key != word(changed.index);
}

void KeywordManager::toggleDeleted(qsizetype row)
{
    m_keywordDicts[row].isToBeDeleted = !m_keywordDicts[row].isToBeDeleted;
}

std::optional<qsizetype> KeywordManager::placeOfNewKeyword() const
{
    if (m_keywordDicts.size() >= m_editor.library().keywords().count())
        return std::nullopt;
    // The rows stay where they were opened, whatever they are renamed to.
    const auto isBehind = [this](const QString &added, const Row &row) {
        return KeywordText::standsBefore(added, word(row.index));
    };
    const auto place = std::upper_bound(m_keywordDicts.cbegin(), m_keywordDicts.cend(),
                                        word(static_cast<quint64>(m_keywordDicts.size())), isBehind);
    return place - m_keywordDicts.cbegin();
}

void KeywordManager::insertNewKeyword(qsizetype atRow)
{
    const auto index = static_cast<quint64>(m_keywordDicts.size()); // one row for each, and new ones come last
    m_keywordDicts.insert(atRow, {.key = word(index), .index = index});
}

std::vector<bool> KeywordManager::keywordsToBeDeleted() const
{
    std::vector<bool> deleted(static_cast<std::size_t>(m_editor.library().keywords().count()), false);
    for (const Row &row : m_keywordDicts)
        deleted[row.index] = row.isToBeDeleted;
    return deleted;
}

namespace {

bool contains(const std::vector<bool> &deleted, quint64 keyword)
{
    return keyword < deleted.size() && deleted[keyword];
}

/// Each once, although it may stand in several folders.
QList<std::shared_ptr<PIPhoto>> photosWithAny(const std::vector<bool> &deleted, const PhotoLibrary &library)
{
    QList<std::shared_ptr<PIPhoto>> photos;
    QSet<const PIPhoto *> seen;
    if (std::find(deleted.cbegin(), deleted.cend(), true) == deleted.cend())
        return photos;
    library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        const auto keywords = photo->keywordIndexes();
        if (std::none_of(keywords.cbegin(), keywords.cend(), [&](quint64 each) { return contains(deleted, each); }) ||
            seen.contains(photo.get()))
            return;
        seen.insert(photo.get());
        photos.append(photo);
    });
    return photos;
}

}

bool KeywordManager::commitChanges()
{
    PhotoLibrary &library = m_editor.library();
    const std::vector<bool> deleted = keywordsToBeDeleted();
    const auto photos = photosWithAny(deleted, library);
    QStringList words = library.keywords().words();
    for (const Row &row : std::as_const(m_keywordDicts)) {
        if (row.isRenamed)
            words[static_cast<qsizetype>(row.index)] = row.key;
    }
    if (photos.isEmpty() && words == library.keywords().words())
        return true;
    // Marks the library as changed; no earlier state of it can come back.
    if (!m_undo.setUndoAction(UndoAction::EffectSets, UndoName::EffectSets, {}))
        return false;
    m_undo.clearUndo();
    library.keywords().setWords(words);
    for (const auto &photo : photos) {
        auto keywords = photo->keywordIndexes();
        keywords.removeIf([&](quint64 each) { return contains(deleted, each); });
        photo->setKeywordIndexes(keywords);
    }
    library.notifications().post(kKeywordsNotification);
    library.notifications().post(kRedetailNotification);
    return true;
}
