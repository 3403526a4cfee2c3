#pragma once

#include <QAbstractTableModel>

class KeywordCounts;
class KeywordManager;

/// Shows the keyword manager's rows, and lets their texts be edited.
class KeywordTableModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Keyword, Photos, ColumnCount };
    enum Role {
        ToBeDeletedRole = Qt::UserRole,
        ChangedRole, ///< in whatever way
    };

    /// Both outlive the model.
    KeywordTableModel(KeywordManager &manager, const KeywordCounts &counts, QObject *parent);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// The text becomes one keyword: in quotes where it would be several. None of nothing but blanks and quotes.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

    void toggleDeleted(int row);
    /// The library has gained keywords.
    void takeUpNewKeywords();
    /// There are other counts.
    void countsChanged();

private:
    [[nodiscard]] QVariant text(const QModelIndex &index) const;
    void rowChanged(int row);

    KeywordManager &m_manager;
    const KeywordCounts &m_counts;
};
