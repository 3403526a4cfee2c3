#include "LibrarySupport.h"

#include "GeometryText.h"
#include "QVXmlEncoder.h"
#include "SystemLog.h"

#include <QFile>

TestLibrary::TestLibrary()
    : folder(QDir::tempPath() + QStringLiteral("/library ü XXXXXX"))
    , library(folder.path(), finder, notifications)
{}

std::shared_ptr<PIFolder> TestLibrary::addFolder()
{
    if (library.groups().isEmpty())
        library.groups().append(std::make_shared<PIGroup>(QStringLiteral("Group")));
    return library.groups().last()->makeNewFolder();
}

std::shared_ptr<PIPhoto> TestLibrary::addPhoto(const QString &filePath)
{
    const auto target = library.groups().isEmpty() ? addFolder() : library.groups().last()->lastFolder();
    target->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(filePath)));
    return target->photos().last();
}

LogLines::LogLines()
{
    SystemLog::setSink([this](const QString &line) { lines.append(line); });
}

LogLines::~LogLines()
{
    SystemLog::setSink({});
}

namespace {

QString archiveOf(const EffectChain &chain)
{
    QVXmlEncoder encoder;
    ArchiveFilters(encoder, chain);
    return encoder.xml();
}

QString describePhoto(const PIPhoto &photo, const KeywordVocabulary &vocabulary)
{
    return QStringList{photo.guid(),
                       photo.fileRef() ? photo.fileRef()->guid() + u' ' + photo.fileRef()->path() : QString(),
                       photo.caption(),
                       photo.keywordList(vocabulary),
                       photo.isMarked() ? QStringLiteral("marked") : QString(),
                       QString::number(photo.thumbnailDate()),
                       textFromRect(photo.cropRect()),
                       archiveOf(photo.filterDicts())}
        .join(u'|');
}

void describeFolders(const std::shared_ptr<PIGroup> &parent, const KeywordVocabulary &vocabulary, const QString &indent,
                     QStringList &lines)
{
    for (const auto &folder : std::as_const(parent->folders())) {
        lines.append(indent + folder->guid() + u'|' + folder->name() + u'|' + folder->selection().archive() +
                     (folder->isClosed() ? u"|closed" : u"") + (folder->parent() == parent ? u"" : u"|astray"));
        for (const auto &photo : std::as_const(folder->photos()))
            lines.append(indent + u' ' + describePhoto(*photo, vocabulary));
        describeFolders(folder, vocabulary, indent + QStringLiteral("  "), lines);
    }
}

}

QStringList describe(const PhotoLibrary &library)
{
    QStringList lines;
    for (const auto &group : library.groups()) {
        lines.append(group->guid() + u'|' + group->name() + u'|' +
                     QString::number(static_cast<int>(group->groupType())) + (group->isClosed() ? u"|closed" : u""));
        describeFolders(group, library.keywords(), QStringLiteral("  "), lines);
    }
    for (auto set = library.effectSets().cbegin(); set != library.effectSets().cend(); ++set)
        lines.append(set.key() + u'|' + archiveOf(set.value()));
    return lines;
}

QString dataFile(const QString &name)
{
    return QStringLiteral(TEST_SOURCE_DIR "/data/") + name;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}
