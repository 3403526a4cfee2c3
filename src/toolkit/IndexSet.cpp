#include "IndexSet.h"

#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr qint64 kLargest = std::numeric_limits<qint64>::max();

/// The first range that ends at or behind `index`.
qsizetype rangeReaching(const QList<IndexSet::Range> &ranges, qint64 index)
{
    const auto found = std::lower_bound(ranges.begin(), ranges.end(), index,
                                        [](const IndexSet::Range &range, qint64 value) { return range.last < value; });
    return found - ranges.begin();
}

}

IndexSet IndexSet::single(qint64 index)
{
    return range(index, 1);
}

IndexSet IndexSet::range(qint64 first, qint64 count)
{
    IndexSet set;
    if (first >= 0 && count > 0)
        set.add(first, count - 1 > kLargest - first ? kLargest : first + (count - 1));
    return set;
}

namespace {

/// The running number and the ranges found so far while an archive is read.
class ArchiveReader
{
public:
    void take(char16_t unit)
    {
        if (unit == u' ') {
            endItem();
        } else if (unit == u'-') {
            m_first = m_number;
            m_isRange = true;
            m_number = 0;
        } else {
            m_hasDigits = true;
            addDigit(unit - u'0');
        }
    }
    void endItem()
    {
        const qint64 first = m_isRange ? m_first : m_number;
        if (m_hasDigits && first >= 0 && m_number >= first)
            m_ranges.append({first, m_number});
        m_number = 0;
        m_isRange = false;
        m_hasDigits = false;
    }
    [[nodiscard]] QList<IndexSet::Range> &ranges() { return m_ranges; }

private:
    void addDigit(int digit)
    {
        qint64 result = 0;
        if (__builtin_mul_overflow(m_number, qint64(10), &result) ||
            __builtin_add_overflow(result, qint64(digit), &result))
            result = m_number < 0 ? std::numeric_limits<qint64>::min() : kLargest;
        m_number = result;
    }

    QList<IndexSet::Range> m_ranges;
    qint64 m_number = 0;
    qint64 m_first = 0;
    bool m_isRange = false;
    bool m_hasDigits = false;
};

}

IndexSet IndexSet::fromArchive(const QString &text)
{
    ArchiveReader reader;
    for (const QChar character : text)
        reader.take(character.unicode());
    reader.endItem();
    // In ascending order every range joins the end of the set, so that no order of the text makes this slow.
    std::sort(reader.ranges().begin(), reader.ranges().end(),
              [](const Range &a, const Range &b) { return a.first < b.first; });
    IndexSet set;
    for (const Range &range : std::as_const(reader.ranges()))
        set.add(range.first, range.last);
    return set;
}

QString IndexSet::archive() const
{
    QStringList items;
    items.reserve(m_ranges.size());
    for (const Range &range : m_ranges) {
        const QString first = QString::number(range.first);
        items.append(range.first == range.last ? first
                                               : QString(first + QLatin1Char('-') + QString::number(range.last)));
    }
    return items.join(QLatin1Char(' '));
}

void IndexSet::add(qint64 index)
{
    add(index, index);
}

void IndexSet::add(qint64 first, qint64 last)
{
    if (first < 0 || last < first)
        return;
    // Neighbours join as well as overlapping ranges.
    const qsizetype begin = rangeReaching(m_ranges, std::max<qint64>(first - 1, 0));
    qsizetype end = begin;
    Range joined = {first, last};
    for (; end < m_ranges.size() && (last == kLargest || m_ranges.at(end).first <= last + 1); ++end) {
        joined.first = std::min(joined.first, m_ranges.at(end).first);
        joined.last = std::max(joined.last, m_ranges.at(end).last);
    }
    if (end == begin) {
        m_ranges.insert(begin, joined);
        return;
    }
    m_ranges[begin] = joined;
    m_ranges.remove(begin + 1, end - begin - 1);
}

void IndexSet::remove(qint64 index)
{
    const qsizetype at = rangeReaching(m_ranges, index);
    if (at == m_ranges.size() || m_ranges.at(at).first > index)
        return;
    const Range range = m_ranges.at(at);
    m_ranges.remove(at);
    if (range.last > index)
        m_ranges.insert(at, {index + 1, range.last});
    if (range.first < index)
        m_ranges.insert(at, {range.first, index - 1});
}

void IndexSet::clear()
{
    m_ranges.clear();
}

bool IndexSet::contains(qint64 index) const
{
    const qsizetype at = rangeReaching(m_ranges, index);
    return at < m_ranges.size() && m_ranges.at(at).first <= index;
}

qint64 IndexSet::count() const
{
    qint64 total = 0;
    for (const Range &range : m_ranges) {
        const qint64 length = range.last - range.first;
        if (length >= kLargest - total)
            return kLargest;
        total += length + 1;
    }
    return total;
}

std::optional<qint64> IndexSet::first() const
{
    return isEmpty() ? std::nullopt : std::optional(m_ranges.first().first);
}

std::optional<qint64> IndexSet::last() const
{
    return isEmpty() ? std::nullopt : std::optional(m_ranges.last().last);
}

QList<qint64> IndexSet::indexes(qint64 limit) const
{
    QList<qint64> result;
    for (const Range &range : m_ranges) {
        for (qint64 index = range.first; index < limit && index <= range.last; ++index)
            result.append(index);
    }
    return result;
}

void IndexSet::clampTo(qint64 limit)
{
    while (!m_ranges.isEmpty() && m_ranges.last().first >= limit)
        m_ranges.removeLast();
    if (!m_ranges.isEmpty())
        m_ranges.last().last = std::min(m_ranges.last().last, limit - 1);
}
