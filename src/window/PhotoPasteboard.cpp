#include "PhotoPasteboard.h"

#include "DragData.h"
#include "InBackground.h"
#include "PhotoClipboard.h"
#include "PhotoLibrary.h"
#include "SaveImage.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

using PhotoClipboard::kCopyPhotoType;

PhotoPasteboard::PhotoPasteboard(PhotoLibrary &library, QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_worker(QStringLiteral("hmphoto.copy"), 1, DispatchQueue::AtEnd::LeaveBehind)
{
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &PhotoPasteboard::lookAtClipboard);
    lookAtClipboard();
}

/// Asked only when the clipboard changes: another program may be slow to tell what it has copied.
void PhotoPasteboard::lookAtClipboard()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    m_canPaste = data && data->hasFormat(kCopyPhotoType);
    Q_EMIT canPasteChanged();
}

void PhotoPasteboard::copy(const PIGroup::PhotoList &photos)
{
    m_copied = PhotoClipboard::archive(photos);
    auto data = std::make_unique<QMimeData>();
    data->setData(kCopyPhotoType, m_copied);
    DragData::addFiles(*data, photos);
    QGuiApplication::clipboard()->setMimeData(data.release());
    if (photos.size() != 1 || photos.first()->isFileLost())
        return;
    inBackground(
        m_worker, this,
        [recipe = photos.first()->recipe(m_library.imageCache())]() -> Pictures {
            const Image image = recipe.open().shown;
            SaveRequest png;
            png.type = SaveFileType::Png;
            if (image.isNull() || !SaveImageCore(0, 0, image, png))
                return {};
            return {TiffFromImage(image).value_or(QByteArray()), png.data};
        },
        [this, copied = m_copied](const Pictures &pictures) {
            if (copied == m_copied)
                addPictures(pictures);
        });
}

/// Puts the pictures beside what was copied, unless something else has been copied since.
void PhotoPasteboard::addPictures(const Pictures &pictures)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    const QMimeData *present = clipboard->mimeData();
    if (!present || present->data(kCopyPhotoType) != m_copied || pictures.png.isEmpty())
        return;
    auto data = std::make_unique<QMimeData>();
    data->setData(kCopyPhotoType, m_copied);
    if (present->hasUrls())
        data->setUrls(present->urls());
    data->setData(QStringLiteral("image/png"), pictures.png);
    if (!pictures.tiff.isEmpty())
        data->setData(QStringLiteral("image/tiff"), pictures.tiff);
    clipboard->setMimeData(data.release());
}

std::optional<PIGroup::PhotoList> PhotoPasteboard::photos() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasFormat(kCopyPhotoType))
        return std::nullopt;
    return PhotoClipboard::unarchive(data->data(kCopyPhotoType), m_library);
}
