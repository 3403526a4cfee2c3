#include "LibraryWriter.h"

#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

LibraryWriter::LibraryWriter(PhotoLibrary &library, const LibraryFile::WindowState &window)
    : m_library(library)
    , m_window(window)
    , m_remap(static_cast<size_t>(library.keywords().count()), kNotFound)
{}

QByteArray LibraryWriter::write()
{
    clearNumbers();
    number();
    constexpr qsizetype kBytesPerPhoto = 450;
    m_encoder = QVXmlEncoder(4096 + kBytesPerPhoto * static_cast<qsizetype>(m_photos.size()));
    m_encoder.addAttribute("version", quint64(0));
    m_encoder.openTag("Photo");
    writeWindow();
    m_library.fileRefs().saveFileRefs(m_encoder);
    writeKeywords();
    writePhotos();
    writeStructure();
    writeEffects();
    m_encoder.closeTag("Photo");
    return m_encoder.utf8();
}

void LibraryWriter::clearNumbers()
{
    // The window may show what no longer stands in the library.
    if (m_window.folder)
        m_window.folder->clearSaveIndexes();
    if (m_window.photo)
        m_window.photo->clearSaveIndex();
    m_library.notifications().post(kSavingNotification);
}

void LibraryWriter::number()
{
    quint64 groupNumber = 0;
    for (const auto &group : std::as_const(m_library.groups())) {
        group->setSaveIndex(groupNumber++);
        numberFolders(group->folders());
    }
}

void LibraryWriter::numberFolders(const QList<std::shared_ptr<PIFolder>> &folders)
{
    for (const auto &folder : folders) {
        folder->setSaveIndex(m_nextFolder++);
        for (const auto &photo : std::as_const(folder->photos()))
            numberPhoto(photo);
        numberFolders(folder->folders());
    }
}

void LibraryWriter::numberPhoto(const std::shared_ptr<PIPhoto> &photo)
{
    photo->setSaveIndex(m_photos.size());
    m_photos.push_back(photo.get());
    photo->markKeywords(m_remap, m_nextKeyword);
    const auto &fileRef = photo->fileRef();
    if (fileRef && fileRef->saveIndex() == kNotFound)
        fileRef->setSaveIndex(m_nextFileRef++);
}

void LibraryWriter::writeWindow()
{
    if (!m_window.folder)
        return;
    m_encoder.openTag("window");
    m_encoder.addTag("folder", m_window.folder->saveIndex());
    if (m_window.photo)
        m_encoder.addTag("photo", m_window.photo->saveIndex());
    if (!m_window.selection.isEmpty())
        m_encoder.addTag("selection", m_window.selection.archive());
    m_encoder.closeTag("window");
}

void LibraryWriter::writeKeywords()
{
    if (m_remap.empty())
        return;
    std::vector<qsizetype> places(m_nextKeyword);
    for (size_t place = 0; place < m_remap.size(); ++place) {
        if (m_remap[place] != kNotFound)
            places[m_remap[place]] = static_cast<qsizetype>(place);
    }
    m_encoder.openTag("keys");
    for (size_t number = 0; number < places.size(); ++number) {
        m_encoder.addAttribute("seq", number);
        m_encoder.addAttribute("keyword", m_library.keywords().words().at(places[number]));
        m_encoder.openAndCloseTag("key");
    }
    m_encoder.closeTag("keys");
}

void LibraryWriter::writePhotos()
{
    if (m_photos.empty())
        return;
    m_encoder.openTag("photos");
    for (const PIPhoto *photo : m_photos)
        photo->archiveToXml(m_encoder, &m_remap);
    m_encoder.closeTag("photos");
}

void LibraryWriter::writeStructure()
{
    if (m_library.groups().isEmpty())
        return;
    m_encoder.openTag("structure");
    for (const auto &group : std::as_const(m_library.groups()))
        group->archiveToXml(m_encoder);
    m_encoder.closeTag("structure");
}

void LibraryWriter::writeEffects()
{
    const EffectSetStore &sets = m_library.effectSets();
    if (sets.isEmpty())
        return;
    m_encoder.openTag("effects");
    for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
        m_encoder.addAttribute("name", set.key());
        m_encoder.openTag("effect");
        ArchiveFilters(m_encoder, set.value());
        m_encoder.closeTag("effect");
    }
    m_encoder.closeTag("effects");
}
