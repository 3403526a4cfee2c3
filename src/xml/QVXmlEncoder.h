#pragma once

#include "NotFound.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

/// Builds an XML document as one growing text: one element per line, tab indentation, attributes queued before the
/// tag that carries them. Callers pair opening and closing tags; nothing is checked.
/// The text is kept as UTF-8, the form in which it is stored; insertion positions are byte positions in it.
class QVXmlEncoder
{
public:
    /// `expectedLength` in bytes, 0 when unknown.
    explicit QVXmlEncoder(qsizetype expectedLength = 0);

    // Tag and attribute names are ASCII.
    /// Queued for the next tag. Numbers are written as 32-bit signed decimals, so kNotFound reads -1.
    void addAttribute(QByteArrayView name, quint64 number);
    /// An empty text queues nothing.
    void addAttribute(QByteArrayView name, QStringView text);
    void openTag(QByteArrayView name);
    void closeTag(QByteArrayView name);
    void openAndCloseTag(QByteArrayView name);
    void addTag(QByteArrayView name, quint64 number);
    void addTagWithLongNumber(QByteArrayView name, qint64 number);
    /// The text must not be absent (null): the element would stay open. An empty one is fine.
    void addTag(QByteArrayView name, QStringView text);

    /// Remembers this place and depth, so that text can be put here after later sections are written.
    void saveInsertionPoint();
    void beginInsertion();
    void endInsertion();

    /// The text with control characters (but tabs and line ends) dropped and & > < " replaced by entities. Half a
    /// surrogate pair, which UTF-8 cannot hold, becomes U+FFFD.
    [[nodiscard]] static QString createEncodedValue(QStringView text);

    [[nodiscard]] const QByteArray &utf8() const { return m_xml; }
    [[nodiscard]] QString xml() const { return QString::fromUtf8(m_xml); }
    [[nodiscard]] quint64 level() const { return m_level; }

private:
    class Tail;
    void beginTag(Tail &tail, QByteArrayView name);

    QByteArray m_xml;
    QByteArray m_attributes; ///< the queued attributes as they will stand in the tag
    quint64 m_level = 0;
    bool m_pendingChild = false;
    std::optional<QByteArray> m_savedTail;
    quint64 m_savedLevel = kNotFound;
    quint64 m_insertLevel = kNotFound;
    quint64 m_insertPosition = kNotFound;
};
