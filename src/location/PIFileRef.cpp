#include "PIFileRef.h"

#include "FileBookmark.h"
#include "FileDates.h"
#include "FileFinder.h"
#include "ImageCache.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"

#include <QFile>

#include <sys/stat.h>

PIFileRef::PIFileRef(const QString &path, const Environment &environment)
    : PIFileRef(QVString::guidString(), path, environment)
{}

PIFileRef::PIFileRef(const QString &guid, const QString &path, const Environment &environment)
    : m_path(path)
    , m_guid(guid)
    , m_environment(environment)
{
    Q_ASSERT(environment.finder && environment.imageCache);
    update(From::Stored);
}

std::shared_ptr<PIFileRef> PIFileRef::fromArchive(const QVXmlDecoder &decoder, const QStringList &folders,
                                                  const Environment &environment)
{
    const qint64 folder = decoder.integerAttributeForTag(u"folder");
    if (folder < 0 || folder >= folders.size())
        return nullptr;
    const QString path = QVString::appendingPathComponent(folders.at(folder), decoder.stringAttributeForTag(u"file"));
    const QString guid = decoder.stringAttributeForTag(u"id");
    if (guid.isEmpty())
        return std::make_shared<PIFileRef>(path, environment);
    return std::shared_ptr<PIFileRef>(new PIFileRef(guid, path, environment));
}

void PIFileRef::archiveToXml(QVXmlEncoder &encoder, quint64 folder) const
{
    encoder.addAttribute("seq", m_saveIndex);
    encoder.addAttribute("folder", folder);
    encoder.addAttribute("id", m_guid);
    encoder.addAttribute("file", QVString::lastPathComponent(m_path));
    encoder.openAndCloseTag("ref");
}

void PIFileRef::setPath(const QString &path)
{
    m_path = path;
    update(From::Path);
}

void PIFileRef::take(const FoundFile &file)
{
    m_fileLost = !file.found;
    m_volumeAway = file.volumeAway;
    // A file that is lost now may have been followed since its path was written into the library.
    if (!file.path.isEmpty() && m_path != file.path) {
        m_path = file.path;
        m_photoSize = {};
    }
    m_creationTime = 0;
    m_fileSize = 0;
    ++m_factsAge;
}

void PIFileRef::update(From from)
{
    FileFinder &finder = *m_environment.finder;
    take(from == From::Stored ? finder.locate(m_guid, m_path) : finder.relocate(m_guid, m_path));
}

QString PIFileRef::mountPoint() const
{
    return FileBookmark::mountPoint(m_environment.finder->bookmark(m_guid));
}

bool PIFileRef::verify()
{
    const FoundFile file = m_environment.finder->locate(m_guid, m_path);
    if (file.found == !m_fileLost && file.volumeAway == m_volumeAway && file.path == m_path)
        return file.found; // the facts still hold
    take(file);
    return file.found;
}

Image PIFileRef::image()
{
    // A handle on the file's former place, or on what it was before it changed, would yield no pixels any more.
    const Image cached = m_environment.imageCache->imageForGuid(m_guid);
    if (cached.isCurrent() && (cached.path().isEmpty() || cached.path() == m_path))
        return cached;
    if (!verify())
        return {};
    const Image image = Image::fromFile(m_path);
    if (!image.isNull()) {
        m_photoSize = image.size();
        m_environment.imageCache->storeImage(image, m_guid);
    }
    return image;
}

void PIFileRef::forgetFacts()
{
    m_creationTime = 0;
    m_fileSize = 0;
    m_photoSize = {};
    ++m_factsAge;
}

double PIFileRef::creationTime()
{
    if (m_creationTime == 0)
        setFileAttributes();
    return m_creationTime;
}

quint64 PIFileRef::fileSize()
{
    if (m_fileSize == 0)
        setFileAttributes();
    return m_fileSize;
}

QSizeF PIFileRef::photoSize()
{
    if (m_photoSize.width() == 0 || m_photoSize.height() == 0)
        (void)image();
    return m_photoSize;
}

void PIFileRef::setFileAttributes()
{
    if (!m_fileLost)
        setFileAttributes(FileAttributes::of(m_path));
}

void PIFileRef::setFileAttributes(const FileAttributes &attributes)
{
    if (attributes.size != 0)
        m_fileSize = attributes.size;
    if (attributes.creationTime != 0)
        m_creationTime = attributes.creationTime;
}

FileAttributes FileAttributes::of(const QString &path)
{
    FileAttributes attributes;
    struct stat info = {};
    if (::stat(QFile::encodeName(path).constData(), &info) == 0)
        attributes.size = static_cast<quint64>(info.st_size);
    if (const auto date = FileDates::dateOf(path))
        attributes.creationTime = static_cast<double>(*date);
    return attributes;
}
