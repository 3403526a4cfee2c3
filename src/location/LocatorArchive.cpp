// The two stored forms of a locator.

#include "Base64.h"
#include "LogString.h"
#include "QVFileLocator.h"
#include "StringUtilities.h"
#include "UserPaths.h"

#include <QStringList>
#include <QUrl>
#include <QtEndian>

#include <array>

namespace {

constexpr qsizetype kPieces = 6;

QString unescaped(const QString &piece)
{
    return QUrl::fromPercentEncoding(piece.toUtf8());
}

QString pathFromPiece(const QString &piece)
{
    const QString path = unescaped(piece);
    return path.startsWith(QLatin1Char('~')) ? QString(HomeFolderPath() + path.mid(1)) : path;
}

}

std::optional<QVFileLocator> QVFileLocator::fromArchive(const QString &text)
{
    if (text.size() < 5 || (text.front() != QLatin1Char('-') && text.front() != QLatin1Char('_')))
        return {};
    const QStringList pieces = text.split(QLatin1Char('.'));
    if (pieces.size() != kPieces) {
        LogString("Malformed locator %@", text);
        return {};
    }
    QVFileLocator locator;
    locator.m_method = methodFromName(pieces.at(0));
    if (locator.m_method == LocatorMethod::Unknown) {
        LogString("Unknown locator %@", text);
        return {};
    }
    if (!pieces.at(1).isEmpty())
        locator.m_path = pathFromPiece(pieces.at(1));
    // The sandbox mark says something about the bookmark alone.
    if (pieces.at(5).isEmpty())
        return locator;
    locator.m_bookmark = NewDataFromBase64String(unescaped(pieces.at(5))).value_or(QByteArray());
    locator.m_sandboxed = !pieces.at(2).isEmpty();
    return locator;
}

std::optional<QVFileLocator> QVFileLocator::fromObject(const QVariant &object)
{
    return object.typeId() == QMetaType::QString ? fromArchive(object.toString()) : std::nullopt;
}

namespace {

constexpr qsizetype kHeadSize = 16;
constexpr qsizetype kPathLengthAt = 4;

}

std::optional<QVFileLocator> QVFileLocator::fromBinaryArchive(QByteArrayView bytes)
{
    if (bytes.size() < kHeadSize || bytes.at(0) != 0)
        return {};
    const auto method = static_cast<quint8>(bytes.at(1));
    const qsizetype pathLength = qFromLittleEndian<quint32>(bytes.data() + kPathLengthAt);
    if (method >= static_cast<quint8>(LocatorMethod::Unknown) || pathLength > bytes.size() - kHeadSize)
        return {};
    const QByteArrayView path = bytes.sliced(kHeadSize, pathLength);
    const QByteArrayView bookmark = bytes.sliced(kHeadSize + pathLength);
    if (!path.isValidUtf8())
        return {};
    QVFileLocator locator;
    locator.m_method = static_cast<LocatorMethod>(method);
    locator.m_sandboxed = bytes.at(2) != 0;
    if (!path.isEmpty())
        locator.m_path = QString::fromUtf8(path);
    if (!bookmark.isEmpty())
        locator.m_bookmark = bookmark.toByteArray();
    return locator;
}

namespace {

QString escaped(const QString &text, QVFileLocator::Returns returns)
{
    // What may stand in an address stays; then goes what would be taken for the punctuation of a locator or a path.
    QString piece = QString::fromLatin1(QUrl::toPercentEncoding(text, "!$&'()*+,/:;=?@"));
    static constexpr std::array<std::pair<char, const char *>, 5> kReplaced{
        {{'!', "%21"}, {'/', "%2F"}, {'=', "%3D"}, {':', "%3A"}, {'.', "%2E"}}};
    for (const auto &[character, code] : kReplaced)
        piece.replace(QLatin1Char(character), QLatin1String(code));
    if (returns == QVFileLocator::Returns::Keep)
        piece.replace(QLatin1String("%0A"), QLatin1String("\n"));
    return piece;
}

}

QString QVFileLocator::archive(Returns returns) const
{
    const QString bookmark = m_bookmark.isEmpty() ? QString() : NewBase64StringFromData(m_bookmark);
    const QStringList pieces{methodName(m_method),
                             escaped(QVString::abbreviateHomeFolderPath(m_path), returns),
                             m_sandboxed ? QStringLiteral("sb") : QString(),
                             QString(),
                             QString(),
                             escaped(bookmark, returns)};
    return pieces.join(QLatin1Char('.'));
}

QByteArray QVFileLocator::createBinaryArchive() const
{
    const QByteArray path = m_path.toUtf8();
    QByteArray bytes(kHeadSize, '\0');
    bytes.reserve(kHeadSize + path.size() + m_bookmark.size());
    bytes[1] = static_cast<char>(m_method);
    bytes[2] = m_sandboxed ? 1 : 0;
    qToLittleEndian(static_cast<quint32>(path.size()), bytes.data() + kPathLengthAt);
    return bytes.append(path).append(m_bookmark);
}
