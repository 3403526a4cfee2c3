#pragma once

#include "LocatorBlock.h"
#include "OpenFile.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The bytes of "locators.database": a sequence number, and behind it the blocks. Every number read from it is checked
/// against the file's length before it is used. Failures are logged unless a function says that errno tells the error.
class LocatorBlockFile
{
public:
    /// Opens the file, or makes it with the sequence number 0.
    [[nodiscard]] bool open(const QString &path);
    [[nodiscard]] bool isOpen() const { return m_file.isValid(); }
    void close();

    /// As it was when the file was opened.
    [[nodiscard]] quint32 sequenceID() const { return m_sequenceID; }
    /// Makes all blocks written so far durable, and with them the new number. False with errno set on failure.
    [[nodiscard]] bool commit(quint32 sequenceID);

    /// Where new blocks go.
    [[nodiscard]] quint64 length() const { return m_length; }
    /// Nothing when what stands there is no block, or cannot be read.
    [[nodiscard]] std::optional<LocatorBlock> blockAt(quint32 offset) const;
    /// The bytes in use of the block there. Likewise. They may be a view of `room` or of the memory of this object.
    [[nodiscard]] std::optional<QByteArrayView> dataAt(quint32 offset, QByteArray &room) const;
    /// Writes a block with its data, by one call. False with errno set on failure.
    [[nodiscard]] bool write(quint64 offset, const LocatorBlock &block, const QByteArray &data);

    /// Reads the whole file once, so that no later read calls the system. Not done for a file of unreasonable size.
    /// What is written from then on is read as it was.
    void keepInMemory();

private:
    [[nodiscard]] bool readSequenceID();
    [[nodiscard]] QByteArrayView bytesAt(quint32 offset, quint64 count, QByteArray &room) const;

    QString m_path;
    FileDescriptor m_file;
    quint64 m_length = 0;
    quint32 m_sequenceID = 0;
    QByteArray m_memory; ///< the file's bytes from its beginning; empty when it is not kept
};
