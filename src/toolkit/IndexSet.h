#pragma once

#include <QList>
#include <QString>

#include <optional>

/// An ordered set of positions (0 or more), kept as ranges, so that "all of 100,000" costs one range.
class IndexSet
{
public:
    struct Range
    {
        qint64 first = 0;
        qint64 last = 0; ///< inclusive
        friend bool operator==(const Range &, const Range &) = default;
    };

    IndexSet() = default;
    static IndexSet single(qint64 index);
    /// `count` indexes from `first`; empty when count is not positive.
    static IndexSet range(qint64 first, qint64 count);
    /// Reads the text form. Hostile text cannot cost more memory than the text itself.
    static IndexSet fromArchive(const QString &text);

    /// The ranges in ascending order as "1-3 7".
    [[nodiscard]] QString archive() const;
    /// Negative positions and empty ranges are ignored.
    void add(qint64 index);
    void add(qint64 first, qint64 last);
    void remove(qint64 index);
    void clear();
    [[nodiscard]] bool contains(qint64 index) const;
    [[nodiscard]] bool isEmpty() const { return m_ranges.isEmpty(); }
    [[nodiscard]] qint64 count() const;
    [[nodiscard]] std::optional<qint64> first() const;
    [[nodiscard]] std::optional<qint64> last() const;
    [[nodiscard]] const QList<Range> &ranges() const { return m_ranges; }
    /// All positions in ascending order that are below `limit`.
    [[nodiscard]] QList<qint64> indexes(qint64 limit) const;
    /// Drops every position at or above `limit`.
    void clampTo(qint64 limit);
    friend bool operator==(const IndexSet &, const IndexSet &) = default;

private:
    QList<Range> m_ranges;
};
