#include "Sidecar.h"

#include "DirectoryReader.h"
#include "LogString.h"
#include "OpenFile.h"
#include "PictureBlocks.h"
#include "StringUtilities.h"

#include <QStringList>

Sidecar Sidecar::ofFile(const QString &path)
{
    const auto stemmed = [&](const char *extension) {
        return QVString::stringByReplacingExtension(path, QLatin1String(extension));
    };
    const QStringList candidates{path + QLatin1String(".xmp"), path + QLatin1String(".XMP"), stemmed("xmp"),
                                 stemmed("XMP")};
    for (const QString &candidate : candidates) {
        if (!entryTypeAt(candidate))
            continue;
        QString reason;
        if (const auto packet = readWholeFile(candidate, PictureBlocks::kMostBytes, &reason))
            return {candidate, *packet};
        LogString("The file %@ cannot be read: %@", candidate, reason);
    }
    return {};
}
