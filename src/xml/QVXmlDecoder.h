#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVarLengthArray>

#include <array>
#include <optional>
#include <utility>

/// A pull reader for the XML that QVXmlEncoder writes and a little more. One call reads one tag; names become small
/// numbers through a process-wide table. It is no general XML parser: its nesting counter, the text value that an
/// attribute leaves behind, and the unexamined last character are rules that its callers build on.
/// The text is held as UTF-8, as it is stored, and never copied; values are decoded when they are asked for. The offset
/// in an error counts UTF-16 units.
class QVXmlDecoder
{
public:
    /// Where the reader stood before skipTag.
    struct Bookmark
    {
        qsizetype index = 0;
        int level = 0;
    };

    /// Replaces the tag table. Names that are not in it have the number 0.
    static void setKeyDecoder(const QList<std::pair<QString, int>> &table);
    static void addDecoderKey(int number, const QString &forTag);

    /// Reads the file as UTF-8. Nothing when it cannot be read (then `error` holds the reason) or is no XML
    /// (then `error` is left empty).
    [[nodiscard]] static std::optional<QVXmlDecoder> fromFile(const QString &path, QString *error = nullptr);
    /// Nothing unless the text begins with "<?xml".
    [[nodiscard]] static std::optional<QVXmlDecoder> fromString(const QString &text);
    /// Bytes that are not UTF-8 give nothing. A byte-order mark at the front is passed over.
    [[nodiscard]] static std::optional<QVXmlDecoder> fromData(const QByteArray &utf8);

    /// Advances to the next tag; false at the end, and on a syntax error, which then stands in error() with the offset
    /// of the character that cannot be. Once it was false it stays so, until unskipTag or skipToTag.
    [[nodiscard]] bool getNextTag();

    [[nodiscard]] int key() const { return m_key; }
    [[nodiscard]] QString xmlTag() const { return QString::fromUtf8(m_tag); }
    /// How many elements are open around the reading position. An element that has been read completely, like a
    /// closing tag, reports its parent's count.
    [[nodiscard]] int level() const { return m_level; }
    /// A closing tag, or an element that was read completely: nothing of it follows.
    [[nodiscard]] bool endTag() const { return m_endTag; }
    /// The decoded text; null when there is none. An element without text has its last attribute's value.
    [[nodiscard]] QString value() const;
    [[nodiscard]] bool hasValue() const { return !m_value.isNull(); }
    /// 0 when absent or not numeric.
    [[nodiscard]] qint64 integerValue() const;
    /// Null when absent.
    [[nodiscard]] QString stringAttributeForTag(QStringView name) const;
    /// The same for values that repeat, such as names: equal ones share one text instead of having a copy each.
    [[nodiscard]] QString repeatedAttributeForTag(QStringView name) const;
    [[nodiscard]] qint64 integerAttributeForTag(QStringView name) const;
    [[nodiscard]] QString error() const { return m_error; }
    void setError(const QString &error) { m_error = error; }

    /// The value looked up as a name in the tag table; 0 when it is not there.
    [[nodiscard]] int decodeValue() const;
    /// The position of `text` in `values`; 0 also means not found.
    [[nodiscard]] static int decodeValue(const QString &text, const QStringList &values);
    [[nodiscard]] int decodeValueFromValues(const QStringList &values) const;
    [[nodiscard]] int decodeAttribute(QStringView name, const QStringList &values) const;

    /// Calls `read` on every tag inside this element and stops on the tag that closes it. False when the document ends
    /// before, or when `read` answers so.
    template<typename Read>
    [[nodiscard]] bool readChildren(const Read &read)
    {
        if (endTag())
            return true;
        const int elementLevel = level();
        while (getNextTag()) {
            if (level() < elementLevel)
                return true;
            if (!read())
                return false;
        }
        return false;
    }
    /// Skips to the last closing tag of this element's name in the rest of the text and reads it.
    Bookmark skipTag();
    void unskipTag(const Bookmark &bookmark);
    /// Searches forward for an opening tag of that name without attributes and stands just after it, at level 2.
    [[nodiscard]] bool skipToTag(const QString &name);

    [[nodiscard]] static QString decodeEscapes(QStringView text);

private:
    struct Attribute
    {
        QByteArrayView name;
        QByteArrayView raw;
    };
    enum class Found { Tag, End, Fault };
    struct FoundTag
    {
        QByteArrayView name;
        bool closing = false;
    };

    QVXmlDecoder(const QByteArray &utf8, QByteArrayView text);
    static std::optional<QVXmlDecoder> fromValidUtf8(const QByteArray &utf8);
    bool fail();
    bool startDocument();
    Found identifyNextTag(qsizetype &index, FoundTag &tag) const;
    bool readOpeningTag();
    bool readAttribute();
    bool readContent();
    bool readClosingTagOfElement(qsizetype index);
    [[nodiscard]] bool isAt(qsizetype index, char unit) const
    {
        return index < m_text.size() && m_text.data()[index] == unit;
    }
    [[nodiscard]] QByteArrayView rawAttribute(QStringView name) const;

    QByteArray m_xml;      // the views below point into it, so it is never changed
    QByteArrayView m_text; ///< what is considered: all but the last character
    qsizetype m_index = 0;
    int m_level = 0;
    QString m_error;
    QByteArrayView m_tag;
    int m_key = 0;
    QVarLengthArray<Attribute, 8> m_attributes;
    QByteArrayView m_value; ///< still encoded
    bool m_endTag = false;

    struct Repeated
    {
        QByteArrayView raw;
        QString text;
    };
    mutable std::array<Repeated, 64> m_repeated; ///< each in the place that its bytes call for
};
