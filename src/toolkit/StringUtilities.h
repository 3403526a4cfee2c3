#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>

#include <optional>

/// Text operations that the rest of the system shares. Positions are UTF-16 code units. An absent text is a null
/// QString.
namespace QVString {

enum class Newlines { ToSpaces, Keep };
enum class Punctuation { Keep, Strip };

// Comparison without regard to case; false when `other` is absent.
[[nodiscard]] bool isFuzzyEqualToString(const QString &text, const QString &other);
[[nodiscard]] bool hasFuzzyPrefix(const QString &text, const QString &other);
[[nodiscard]] bool hasFuzzySuffix(const QString &text, const QString &other);
/// One of the twelve small words that titles do not capitalise and sorting drops.
[[nodiscard]] bool isOnStopList(const QString &text);

// Paths.
/// "~" for the home folder at the front of a longer path; a plain text test, not one of whole components.
[[nodiscard]] QString abbreviateHomeFolderPath(const QString &path);
/// A leading "~" alone or before "/" becomes the home folder.
[[nodiscard]] QString expandTilde(const QString &path);
[[nodiscard]] QString lastPathComponent(const QString &path);
/// The path without its last component: "/a" gives "/", "a" gives "".
[[nodiscard]] QString deletingLastPathComponent(const QString &path);
[[nodiscard]] QString appendingPathComponent(const QString &path, const QString &component);
/// Without the dot; empty for "a", "a." and ".hidden".
[[nodiscard]] QString pathExtension(const QString &path);
[[nodiscard]] QString fileNameMinusExtension(const QString &path);
/// The same as a part of the path.
[[nodiscard]] QStringView fileNameMinusExtensionIn(QStringView path);
[[nodiscard]] QString stringByAppendingFile(const QString &path, const QString &name, const QString &andExtension);
[[nodiscard]] QString stringByReplacingExtension(const QString &path, const QString &extension);
[[nodiscard]] QString stringByReplacingFile(const QString &path, const QString &name, const QString &andExtension);

// Pieces and numbers.
/// An end beyond the text, 0xFFFFFFFF for one, means its length.
[[nodiscard]] QString substringFrom(const QString &text, quint32 from, quint32 to);
void deleteCharactersFrom(QString &text, quint32 from, quint32 to);
/// "%d": the low 32 bits as a signed decimal.
[[nodiscard]] QString numberString(qint64 number);
[[nodiscard]] QString longNumberString(qint64 number);
/// A newly made UUID: 36 characters, upper case, hyphens.
[[nodiscard]] QString guidString();
/// The one code unit of a one-unit text, else 0.
[[nodiscard]] char16_t validateFirstUnicodeCharacter(const QString &text);

// Shaping.
[[nodiscard]] QString titleCaseString(const QString &text);
[[nodiscard]] QString sortTitleString(const QString &text);
/// Null when nothing is left.
[[nodiscard]] QString cleanUp(const QString &text, Newlines newlines, Punctuation punctuation);
/// The words around a found key, at most `maxLength` (100 when 0) units, cleaned to one line.
[[nodiscard]] QString extract(const QString &text, quint32 position = 0, quint32 keyLength = 0, quint32 maxLength = 0,
                              Punctuation punctuation = Punctuation::Keep);
[[nodiscard]] char16_t quoteForCurrentChar(char16_t current, char16_t previous, char16_t next);
[[nodiscard]] QString stringBySubstitutingQuotes(const QString &text, char16_t previous);

// Encodings.
enum class Encoding {
    None = 0,
    Utf8,
    Utf16,
    Latin1,
    Windows1252,
    Ascii,
    Utf16BE,
    Utf16LE,
    Latin2,
    Iso2022Jp,
    EucJp,
    ShiftJis,
    Utf32,
    Utf32BE,
    Utf32LE,
    Windows1250,
    Windows1251,
    Windows1253,
    Windows1254,
    MacRoman,
};
[[nodiscard]] Encoding identifyStringEncoding(const QString &name);

struct DecodedText
{
    QString text;
    Encoding encoding = Encoding::None;
};
/// Byte-order mark, else UTF-8, else Mac OS Roman. Nothing when the bytes are no text at all.
[[nodiscard]] std::optional<DecodedText> textFromDataInUnknownFormat(const QByteArray &bytes);

}
