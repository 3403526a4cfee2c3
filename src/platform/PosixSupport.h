#pragma once

#include <QByteArray>
#include <QString>

#include <cerrno>

/// What this folder's sources share when they call the kernel.
namespace Posix {

/// The path as the kernel takes it. Empty, which no call finds, for text that cannot be a path: a null character
/// would cut it short, and half of a surrogate pair would turn into some other name.
[[nodiscard]] QByteArray nativePath(const QString &path);

/// The folder that holds `path`, "." for a bare name.
[[nodiscard]] QByteArray parentFolder(const QByteArray &path);

/// Stores the text of an error number in `reason`, when given, and answers false.
bool fail(QString *reason, int error);

/// Calls again for as long as a signal interrupts the call.
template<typename Call>
auto retry(Call call) -> decltype(call())
{
    decltype(call()) result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}
