#pragma once

#include "LibraryFile.h"
#include "PIGroup.h"

class PIFileRef;
class PhotoLibrary;
class QVXmlDecoder;

/// Reads one document into a library. An element is left when a tag's level falls below the element's own.
class LibraryReader
{
public:
    LibraryReader(QVXmlDecoder &decoder, PhotoLibrary &library, LibraryFile::LoadResult &result)
        : m_decoder(decoder)
        , m_library(library)
        , m_result(result)
    {}

    /// The text to show when the document cannot be used; empty on success.
    [[nodiscard]] QString read();

private:
    [[nodiscard]] bool readSection();
    [[nodiscard]] bool readFiles();
    [[nodiscard]] bool readKeywords();
    [[nodiscard]] bool readPhotos();
    [[nodiscard]] bool readStructure();
    [[nodiscard]] bool readWindow();
    [[nodiscard]] bool readEffects();
    [[nodiscard]] bool leaveElement(int level);

    QVXmlDecoder &m_decoder;
    PhotoLibrary &m_library;
    LibraryFile::LoadResult &m_result;
    QList<std::shared_ptr<PIFileRef>> m_fileRefs;
    PIGroup::PhotoList m_photos;
};
