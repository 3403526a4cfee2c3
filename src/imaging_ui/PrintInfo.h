#pragma once

#include <QByteArray>
#include <QPageLayout>

/// A page set-up.
struct PrintInfo
{
    static constexpr double kLeastScale = 0.1;
    static constexpr double kMostScale = 4;

    QPageLayout paper; ///< with its orientation and margins
    double scale = 1;  ///< of what is printed, kLeastScale to kMostScale
    bool operator==(const PrintInfo &) const = default;
};

/// What prints start with. Read at launch, changed by the page-setup sheet and the printing options. Main thread.
inline PrintInfo g_printInfo;

/// The set-up as it is kept among the preferences.
[[nodiscard]] QByteArray archivedPrintInfo(const PrintInfo &info);
/// The usual paper of the place when the bytes are no set-up.
[[nodiscard]] PrintInfo printInfoFromArchive(const QByteArray &bytes);
