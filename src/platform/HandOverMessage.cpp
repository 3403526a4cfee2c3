#include "HandOverMessage.h"

#include <QtEndian>

namespace {

constexpr char kMark[] = "TPh1";
constexpr qsizetype kMarkLength = 4;

}

std::optional<QByteArray> HandOverMessage::encode(const QStringList &paths)
{
    QByteArray payload;
    for (const QString &path : paths)
        payload += path.toUtf8() + '\0';
    if (payload.size() > kMaxLength)
        return {};
    QByteArray header = kMark;
    header.resize(kHeaderLength);
    qToBigEndian(static_cast<quint32>(payload.size()), header.data() + kMarkLength);
    return header + payload;
}

std::optional<qsizetype> HandOverMessage::totalLength(const QByteArray &received)
{
    if (received.size() < kHeaderLength || !received.startsWith(kMark))
        return {};
    const qsizetype length = qFromBigEndian<quint32>(received.constData() + kMarkLength);
    return length <= kMaxLength ? std::optional(kHeaderLength + length) : std::nullopt;
}

std::optional<QStringList> HandOverMessage::decode(const QByteArray &message)
{
    const auto total = totalLength(message);
    if (!total || *total != message.size())
        return {};
    QByteArray payload = message.mid(kHeaderLength);
    if (payload.isEmpty())
        return QStringList();
    if (!payload.endsWith('\0'))
        return {};
    payload.chop(1);
    QStringList paths;
    for (const QByteArray &path : payload.split('\0'))
        paths.append(QString::fromUtf8(path));
    return paths;
}
