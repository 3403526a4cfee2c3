#pragma once

#include <QAbstractItemModel>

#include <memory>

class LibraryEditor;
class PIGroup;
class PhotoLibrary;

/// The library's groups and folders as a tree with two columns: the name, which can be edited in place, and the number
/// of photos in a folder. The tree is read live; call reset() after changing it.
class NavigatorModel final : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column { NameColumn, CountColumn, ColumnCount };

    NavigatorModel(PhotoLibrary &library, LibraryEditor &editor, QObject *parent = nullptr);

    [[nodiscard]] const PhotoLibrary &library() const { return m_library; }
    /// The group or folder at an index; null for an invalid one.
    [[nodiscard]] std::shared_ptr<PIGroup> itemAt(const QModelIndex &index) const;
    /// Invalid when the item is not in the library.
    [[nodiscard]] QModelIndex indexOf(const PIGroup *item) const;
    void reset();
    /// The photo counts of this item and of everything above it are shown anew.
    void refreshCounts(const PIGroup *item);

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &child) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    void renamed();

private:
    [[nodiscard]] static PIGroup *pointerAt(const QModelIndex &index);

    PhotoLibrary &m_library;
    LibraryEditor &m_editor;
};
