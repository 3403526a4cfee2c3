#pragma once

#include "LibraryFile.h"
#include "PIGroup.h"
#include "QVXmlEncoder.h"

#include <vector>

class PhotoLibrary;

/// Numbers everything in a library and writes the document.
class LibraryWriter
{
public:
    LibraryWriter(PhotoLibrary &library, const LibraryFile::WindowState &window);

    [[nodiscard]] QByteArray write();

private:
    void clearNumbers();
    void number();
    void numberFolders(const QList<std::shared_ptr<PIFolder>> &folders);
    void numberPhoto(const std::shared_ptr<PIPhoto> &photo);
    void writeWindow();
    void writeKeywords();
    void writePhotos();
    void writeStructure();
    void writeEffects();

    PhotoLibrary &m_library;
    const LibraryFile::WindowState &m_window;
    QVXmlEncoder m_encoder;
    std::vector<quint64> m_remap; ///< by place in the vocabulary: the number in the file
    quint64 m_nextKeyword = 0;
    quint64 m_nextFolder = 0;
    quint64 m_nextFileRef = 0;
    std::vector<const PIPhoto *> m_photos; ///< one entry for each place where a photo stands
};
