#pragma once

#include <QByteArray>
#include <QPageLayout>

/// The page set-up that prints start with: paper, orientation and margins. Read at launch, changed by the page-setup
/// sheet. Main thread.
inline QPageLayout g_printInfo;

/// The set-up as it is kept among the preferences.
[[nodiscard]] QByteArray archivedPrintInfo(const QPageLayout &info);
/// The usual paper of the place when the bytes are no set-up.
[[nodiscard]] QPageLayout printInfoFromArchive(const QByteArray &bytes);
