#include "PIGroup.h"

#include "LibraryTags.h"
#include "PIFolder.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"
#include "WindowRestoreRecord.h"

namespace {

// A folder and its list count one each. Folders made from a disk's can be as deep as the longest path allows, half as
// many as it has characters; anything much deeper was made to exhaust the stack.
constexpr int kDeepestLevel = 5000;

const QStringList &typeNames()
{
    static const QStringList names = {QStringLiteral("normal"), QStringLiteral("search"), QStringLiteral("undeleted")};
    return names;
}

}

PIGroup::PIGroup(const QString &name)
    : m_name(name)
    , m_guid(QVString::guidString())
{}

PIGroup::PIGroup(const PIGroup &other)
    : std::enable_shared_from_this<PIGroup>()
    , m_name(other.m_name)
    , m_guid(other.m_guid)
    , m_folders(other.m_folders)
    , m_groupType(other.m_groupType)
    , m_closed(other.m_closed)
{}

PIGroup::~PIGroup() = default;

std::shared_ptr<PIGroup> PIGroup::copy() const
{
    return std::shared_ptr<PIGroup>(new PIGroup(*this));
}

std::shared_ptr<PIFolder> PIGroup::makeNewFolder()
{
    auto folder = std::make_shared<PIFolder>(QStringLiteral("New Folder"));
    folder->setParent(weak_from_this().lock());
    m_folders.append(folder);
    return folder;
}

std::shared_ptr<PIFolder> PIGroup::lastFolder()
{
    return m_folders.isEmpty() ? makeNewFolder() : m_folders.last();
}

void PIGroup::enforceVisibility()
{
    m_closed = false;
}

void PIGroup::clearSaveIndexes()
{
    m_saveIndex = kNotFound;
    for (const auto &folder : std::as_const(m_folders))
        folder->clearSaveIndexes();
}

void PIGroup::archiveToXml(QVXmlEncoder &encoder) const
{
    archiveIdentity(encoder);
    encoder.openTag("group");
    if (m_groupType != GroupType::Normal)
        encoder.addTag("type", typeNames().at(static_cast<int>(m_groupType)));
    if (m_closed)
        encoder.addTag("hide", 1);
    archiveFolders(encoder);
    encoder.closeTag("group");
}

std::shared_ptr<PIGroup> PIGroup::fromArchive(QVXmlDecoder &decoder, const PhotoList &photos,
                                              WindowRestoreRecord &restore)
{
    std::shared_ptr<PIGroup> result;
    if (decoder.key() == LibraryTag::Folder)
        result = std::make_shared<PIFolder>();
    else
        result = std::make_shared<PIGroup>();
    return result->readArchive(decoder, photos, restore) ? result : nullptr;
}

bool PIGroup::readArchive(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore)
{
    const int level = decoder.level();
    if (level > kDeepestLevel)
        return false;
    const QString guid = decoder.stringAttributeForTag(u"id");
    if (!guid.isEmpty())
        m_guid = guid;
    m_name = decoder.stringAttributeForTag(u"name");
    if (restore.folderNumber >= 0 && !restore.folder && asFolder() &&
        decoder.integerAttributeForTag(u"seq") == restore.folderNumber)
        restore.folder = std::static_pointer_cast<PIFolder>(shared_from_this());
    if (decoder.endTag())
        return true;
    if (!decoder.getNextTag())
        return false;
    while (decoder.level() >= level) {
        if (!readChild(decoder, photos, restore) || !decoder.getNextTag())
            return false;
    }
    return true;
}

bool PIGroup::readChild(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore)
{
    switch (decoder.key()) {
    case LibraryTag::Type:
        m_groupType = static_cast<GroupType>(decoder.decodeValueFromValues(typeNames()));
        return true;
    case LibraryTag::Hide:
        m_closed = decoder.integerValue() != 0;
        return true;
    case LibraryTag::Folders:
        return readFolders(decoder, photos, restore);
    default:
        return handleUnknownGroupKey(decoder, photos);
    }
}

// Ends on the closing tag of the list, whose level is below that of the list.
bool PIGroup::readFolders(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore)
{
    if (decoder.endTag())
        return true;
    const int level = decoder.level();
    if (!decoder.getNextTag())
        return false;
    while (decoder.level() >= level) {
        if (decoder.key() == LibraryTag::Folder) {
            const auto folder = std::static_pointer_cast<PIFolder>(fromArchive(decoder, photos, restore));
            if (!folder)
                return false;
            folder->setParent(shared_from_this());
            m_folders.append(folder);
        }
        if (!decoder.getNextTag())
            return false;
    }
    return true;
}

bool PIGroup::handleUnknownGroupKey(const QVXmlDecoder &, const PhotoList &)
{
    return true;
}

void PIGroup::archiveIdentity(QVXmlEncoder &encoder) const
{
    encoder.addAttribute("seq", m_saveIndex);
    encoder.addAttribute("id", m_guid);
    encoder.addAttribute("name", m_name);
}

void PIGroup::archiveFolders(QVXmlEncoder &encoder) const
{
    if (m_folders.isEmpty())
        return;
    encoder.openTag("folders");
    for (const auto &folder : m_folders)
        folder->archiveToXml(encoder);
    encoder.closeTag("folders");
}
