#pragma once

#include "DispatchQueue.h"
#include "PIGroup.h"

#include <QObject>

#include <memory>
#include <optional>

class PhotoLibrary;
class QMimeData;

/// Photos on the desktop's clipboard: for this library as photos, for other programs as files, and a single one as a
/// picture too, as soon as it has been made. Main thread.
class PhotoPasteboard final : public QObject
{
    Q_OBJECT

public:
    /// `library` outlives it.
    explicit PhotoPasteboard(PhotoLibrary &library, QObject *parent = nullptr);

    void copy(const PIGroup::PhotoList &photos);
    /// Whether the clipboard holds photos.
    [[nodiscard]] bool canPaste() const { return m_canPaste; }
    /// New photos; nothing when the clipboard has none, or malformed ones.
    [[nodiscard]] std::optional<PIGroup::PhotoList> photos() const;

Q_SIGNALS:
    void canPasteChanged();

private:
    struct Pictures
    {
        QByteArray tiff;
        QByteArray png;
    };

    void lookAtClipboard();
    void addPictures(const Pictures &pictures);

    PhotoLibrary &m_library;
    QByteArray m_copied; ///< the text last copied from here
    bool m_canPaste = false;
    DispatchQueue m_worker; ///< last: its blocks end first
};
