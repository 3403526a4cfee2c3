#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

/// Owns a file descriptor and closes it.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number)
        : m_number(number)
    {}
    FileDescriptor(FileDescriptor &&other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept;
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor();

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isValid() const { return m_number >= 0; }

private:
    int m_number = -1;
};

/// A regular file opened for reading, with what one fstat told about it.
struct OpenedFile
{
    FileDescriptor descriptor;
    qint64 size = 0;
    quint64 device = 0;
    quint64 inode = 0;
    qint64 modified = 0; ///< seconds since 1970
};

/// Opens without ever waiting for the other end of a pipe, and only what is a regular file (links followed).
/// Nothing on failure; then `reason` (when given) tells why.
[[nodiscard]] std::optional<OpenedFile> openRegularFile(const QString &path, QString *reason = nullptr);

/// The bytes of a regular file; nothing when it cannot be read whole or is larger than `maxBytes`.
[[nodiscard]] std::optional<QByteArray> readWholeFile(const QString &path, qint64 maxBytes, QString *reason = nullptr);
