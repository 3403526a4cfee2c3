#pragma once

#include <QString>
#include <QStringList>

#include <atomic>

/// How a printer is to print a document.
struct PrintTicket
{
    QString printer; ///< its name; the user's usual one when empty
    QString title;
    QString media; ///< the paper, by the printing system's name
    int copies = 1;
    bool collate = true;
    enum class Sides { One, LongEdge, ShortEdge };
    Sides sides = Sides::One;
    bool isGrey = false;
};

/// Hands a whole PDF document to the desktop's printing system, which keeps a copy of it. Waits for that, a minute at
/// most, so not on the main thread. False when it was refused, and then `reason` tells why, or when cancelled.
[[nodiscard]] bool spoolPdf(const QString &path, const PrintTicket &ticket, const std::atomic<bool> &cancelled,
                            QString &reason);
