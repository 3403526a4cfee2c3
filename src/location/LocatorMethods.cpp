#include "QVFileLocator.h"
#include "StringUtilities.h"
#include "UserPaths.h"

#include <array>

namespace {

struct MethodEntry
{
    const char *name;
    const char *displayName;
    const char *bundleIdentifier;
};

/// By method number.
constexpr std::array<MethodEntry, 7> methodEntries{{
    {"_nil_", nullptr, nullptr},
    {"_alias_", nullptr, nullptr},
    {"_local_", nullptr, nullptr},
    {"_cloud_", "Cloud", nullptr},
    {"_dropbox_", "Dropbox", "com.getdropbox.dropbox"},
    {"_google_", "Google Drive", "com.google.GoogleDrive"},
    {"_wuala_", "Wuala", "com.wuala.gui.macosx"},
}};

/// Those whose files live in one folder, in the order in which paths are tried.
constexpr std::array<LocatorMethod, 3> fixedLocationMethods{LocatorMethod::Dropbox, LocatorMethod::Google,
                                                            LocatorMethod::Wuala};

QString column(LocatorMethod method, const char *MethodEntry::*text)
{
    const auto number = static_cast<std::size_t>(method);
    const char *found = number < methodEntries.size() ? methodEntries[number].*text : nullptr;
    return found ? QString::fromLatin1(found) : QString();
}

}

QString QVFileLocator::methodName(LocatorMethod method)
{
    return column(method, &MethodEntry::name);
}

QString QVFileLocator::methodDisplayName(LocatorMethod method)
{
    return column(method, &MethodEntry::displayName);
}

QString QVFileLocator::bundleIdentifier(LocatorMethod method)
{
    return column(method, &MethodEntry::bundleIdentifier);
}

LocatorMethod QVFileLocator::methodFromName(const QString &name)
{
    QString wanted = name;
    if (wanted.startsWith(QLatin1Char('-')))
        wanted.replace(QLatin1Char('-'), QLatin1Char('_'));
    for (std::size_t i = 0; i < methodEntries.size(); ++i)
        if (wanted == QLatin1String(methodEntries[i].name))
            return static_cast<LocatorMethod>(i);
    return LocatorMethod::Unknown;
}

LocatorMethod QVFileLocator::methodFromPath(const QString &path)
{
    for (const LocatorMethod method : fixedLocationMethods)
        if (QVString::hasFuzzyPrefix(path, pathForMethod(method)))
            return method;
    return LocatorMethod::Local;
}

namespace {

QString folderInHome(const char *name)
{
    const QString home = HomeFolderPath();
    return home.isEmpty() ? QString() : QVString::appendingPathComponent(home, QString::fromLatin1(name));
}

}

QString QVFileLocator::pathForMethod(LocatorMethod method)
{
    static const QString dropbox = folderInHome("Dropbox");
    static const QString google = folderInHome("Google Drive");
    switch (method) {
    case LocatorMethod::Dropbox:
        return dropbox;
    case LocatorMethod::Google:
        return google;
    case LocatorMethod::Wuala:
        return QStringLiteral("/Volumes/WualaDrive/");
    default:
        return {};
    }
}

bool QVFileLocator::isMethodCloudBased(LocatorMethod method)
{
    return method >= LocatorMethod::Cloud && method <= LocatorMethod::Wuala;
}

bool QVFileLocator::isPathCloudBased(const QString &path)
{
    return isMethodCloudBased(methodFromPath(path));
}
