#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

/// The message by which a second start of the program hands its file arguments to the first: a mark, the length of
/// what follows, and the paths, each ended by a null character.
namespace HandOverMessage {

inline constexpr qsizetype kHeaderLength = 8;
inline constexpr qsizetype kMaxLength = qsizetype(16) * 1024 * 1024;
/// What the first process answers when it has taken the message.
inline constexpr char kAnswer = 'K';

/// Nothing when the paths are too many for one message.
[[nodiscard]] std::optional<QByteArray> encode(const QStringList &paths);
/// The length of the whole message of which at least the header has arrived; nothing when it is not one of ours.
[[nodiscard]] std::optional<qsizetype> totalLength(const QByteArray &received);
/// The paths of a message that has arrived whole; nothing when it is damaged.
[[nodiscard]] std::optional<QStringList> decode(const QByteArray &message);

}
