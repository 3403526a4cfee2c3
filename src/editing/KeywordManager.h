#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <vector>

class LibraryEditor;
class QVUndoManager;

/// The library's keywords as they are renamed and deleted together: one row for each, in display order. Nothing changes
/// before the changes are committed, and then for good. Keywords are never removed from the library, only from its
/// photos, so that the rows keep their meaning while the library gains keywords. Main thread.
class KeywordManager
{
public:
    /// Both outlive it.
    KeywordManager(LibraryEditor &editor, QVUndoManager &undo);

    struct Row
    {
        QString key;            ///< the text, possibly edited
        quint64 index = 0;      ///< position in the vocabulary
        bool isRenamed = false; ///< the text is another than the library's
        bool isToBeDeleted = false;
    };
    [[nodiscard]] const QList<Row> &rows() const { return m_keywordDicts; }
    /// An empty text marks the row to be deleted, and the old text stays.
    void setKey(qsizetype row, const QString &key);
    void toggleDeleted(qsizetype row);

    /// Where the first keyword that joined the library since belongs; nothing when there is none.
    [[nodiscard]] std::optional<qsizetype> placeOfNewKeyword() const;
    void insertNewKeyword(qsizetype atRow);

    /// Renames, and takes the keywords to be deleted off every photo. Clears the history of changes when that changed
    /// anything. False, with nothing changed, when refused.
    bool commitChanges();

private:
    [[nodiscard]] std::vector<bool> keywordsToBeDeleted() const;
    [[nodiscard]] const QString &word(quint64 index) const;

    LibraryEditor &m_editor;
    QVUndoManager &m_undo;
    QList<Row> m_keywordDicts;
};
