#include "RunningServices.h"

#include "DesktopEntry.h"
#include "DirectoryReader.h"
#include "OpenFile.h"
#include "PosixSupport.h"
#include "StandardFolders.h"

#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

struct Service
{
    const char *bundleIdentifier;
    std::array<const char *, 2> processes;
    std::array<const char *, 2> desktopEntries;
};

constexpr std::array<Service, 3> kServices{{
    {"com.getdropbox.dropbox", {"dropbox", "dropboxd"}, {"dropbox.desktop", "com.dropbox.Client.desktop"}},
    {"com.google.GoogleDrive", {"google-drive-ocamlfuse", "googledrivesync"}, {"google-drive.desktop", nullptr}},
    {"com.wuala.gui.macosx", {"wuala", nullptr}, {"wuala.desktop", nullptr}},
}};

const Service *findService(const QString &bundleIdentifier)
{
    const auto found = std::find_if(kServices.cbegin(), kServices.cend(), [&](const Service &service) {
        return bundleIdentifier == QLatin1String(service.bundleIdentifier);
    });
    return found == kServices.cend() ? nullptr : &*found;
}

/// Both streams of a service go nowhere: it outlives us, and our terminal is not its own.
bool launchDetached(const QStringList &command, const QString &workingFolder)
{
    QProcess process;
    process.setProgram(command.first());
    process.setArguments(command.mid(1));
    process.setWorkingDirectory(workingFolder);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

}

RunningServices::Surroundings RunningServices::system()
{
    QStringList folders;
    if (const auto own = baseFolder("XDG_DATA_HOME", QStringLiteral(".local/share")))
        folders.append(*own);
    const QString shared = qEnvironmentVariable("XDG_DATA_DIRS");
    folders += (shared.isEmpty() ? QStringLiteral("/usr/local/share:/usr/share") : shared)
                   .split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return {QStringLiteral("/proc"), folders, launchDetached};
}

RunningServices::RunningServices(Surroundings surroundings)
    : m_surroundings(std::move(surroundings))
{}

namespace {

constexpr qint64 kMaxCommandLine = 4 << 20;
/// The kernel cuts the name of a process at this length.
constexpr qsizetype kMaxProcessName = 15;

bool isOwn(const QString &process)
{
    struct stat facts = {};
    return ::stat(Posix::nativePath(process).constData(), &facts) == 0 && facts.st_uid == ::geteuid();
}

/// By the file that was started, or by the name that the kernel keeps, which for a script is the script's own.
bool isProcessOf(const QString &process, const Service &service)
{
    const QByteArray line = readWholeFile(process + QLatin1String("/cmdline"), kMaxCommandLine).value_or(QByteArray());
    if (line.isEmpty())
        return false; // a thread of the kernel, or a process that has ended
    const QByteArray started = line.split('\0').first();
    const QByteArray file = started.mid(started.lastIndexOf('/') + 1);
    const QByteArray kept = readWholeFile(process + QLatin1String("/comm"), 4096).value_or(QByteArray()).trimmed();
    return std::any_of(service.processes.cbegin(), service.processes.cend(), [&](const char *name) {
        return name && (file == name || kept == QByteArray(name).left(kMaxProcessName));
    });
}

bool isProcessNumber(const QString &name)
{
    bool isNumber = false;
    (void)name.toUInt(&isNumber);
    return isNumber;
}

}

bool RunningServices::isServiceRunning(const QString &bundleIdentifier) const
{
    const Service *service = findService(bundleIdentifier);
    const auto table = service ? readDirectory(m_surroundings.processTable) : std::nullopt;
    if (!table)
        return false;
    return std::any_of(table->entries.cbegin(), table->entries.cend(), [&](const DirectoryEntry &entry) {
        const QString process = m_surroundings.processTable + QLatin1Char('/') + entry.name;
        return isProcessNumber(entry.name) && isOwn(process) && isProcessOf(process, *service);
    });
}

namespace {

std::optional<DesktopEntry> findEntry(const QStringList &dataFolders, const char *name)
{
    for (const QString &folder : dataFolders) {
        const auto entry = DesktopEntry::read(folder + QLatin1String("/applications/") + QLatin1String(name));
        if (entry)
            return entry->hidden ? std::nullopt : entry;
    }
    return {};
}

}

bool RunningServices::runService(const QString &bundleIdentifier) const
{
    const Service *service = findService(bundleIdentifier);
    if (!service)
        return false;
    for (const char *name : service->desktopEntries) {
        const auto entry = name ? findEntry(m_surroundings.dataFolders, name) : std::nullopt;
        if (entry)
            return m_surroundings.launch(entry->command, entry->workingFolder);
    }
    return false;
}
