#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

/// Property lists: written as XML, read as XML or binary. A list's values are QVariants that hold QString, bool,
/// qlonglong, double, QByteArray, QDateTime, QVariantList or QVariantHash (QVariantMap is taken as well when writing).
/// Whoever reads one checks each value's type, as with anything from outside.
namespace PropertyList {

/// Nothing when the bytes are no property list, or one that is nested or grows beyond all reason; then `reason` (when
/// given) tells why. A value of a kind that is not listed above becomes an invalid QVariant.
[[nodiscard]] std::optional<QVariant> fromData(const QByteArray &bytes, QString *reason = nullptr);
/// The XML form; nothing when a value has no place in it.
[[nodiscard]] std::optional<QByteArray> toXml(const QVariant &value, QString *reason = nullptr);

/// Writes a dictionary as XML from entries that come one by one, each key once. In time that grows no faster than their
/// number, unlike toXml().
class DictionaryWriter
{
public:
    /// False when the key or the value has no place in a list; then there is nothing to take.
    bool add(const QString &key, const QVariant &value);
    /// The same form as toXml() gives.
    [[nodiscard]] std::optional<QByteArray> take();

private:
    struct Piece
    {
        void operator()(void *node) const;
    };
    void endPiece();

    std::unique_ptr<void, Piece> m_piece;
    int m_entries = 0; ///< of the piece
    QByteArray m_xml;
    QByteArray m_foot; ///< what comes behind the last entry
    bool m_failed = false;
};

[[nodiscard]] std::optional<QVariant> read(const QString &path, QString *reason = nullptr);

/// Whether XML can hold the text at all: no control characters except tab and line ends, no halves of pairs.
[[nodiscard]] bool isStorableText(const QString &text);

}
