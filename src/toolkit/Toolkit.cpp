#include "Toolkit.h"

#include <QStringList>
#include <QSysInfo>

#include <algorithm>
#include <atomic>

namespace {

constexpr std::uint32_t kFallbackVersion = 0x0A0600;

std::atomic<std::uint32_t> &storedVersion()
{
    static std::atomic<std::uint32_t> version = kFallbackVersion;
    return version;
}

/// The number that a piece such as "18-amd64" begins with, at most what fits into its byte.
std::uint32_t leadingNumber(const QString &piece)
{
    std::uint32_t number = 0;
    for (const QChar character : piece) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            break;
        number = std::min(number * 10 + (character.unicode() - u'0'), 255U);
    }
    return number;
}

}

std::uint32_t systemVersionFromText(const QString &text)
{
    const QStringList pieces = text.split(QLatin1Char('.'));
    if (pieces.size() < 2)
        return kFallbackVersion;
    const std::uint32_t patch = pieces.size() > 2 ? leadingNumber(pieces.at(2)) : 0;
    const std::uint32_t version = (leadingNumber(pieces.at(0)) << 16U) + (leadingNumber(pieces.at(1)) << 8U) + patch;
    return version == 0 ? kFallbackVersion : version;
}

void InitializeQuorvane()
{
    storedVersion() = systemVersionFromText(QSysInfo::kernelVersion());
}

std::uint32_t systemVersion()
{
    return storedVersion();
}

std::array<std::uint8_t, 4> &GetQVThreadStorage()
{
    thread_local std::array<std::uint8_t, 4> storage = {};
    return storage;
}
