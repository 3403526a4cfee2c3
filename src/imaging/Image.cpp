#include "Image.h"

#include "FilterBackEnd.h"
#include "LogString.h"
#include "OpenFile.h"
#include "RowReducer.h"

#include <QFile>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <set>
#include <tuple>

QSize CenterRectangle(QSize image, QSize box)
{
    return CenterRectangle(QSizeF(image), QRectF(QPointF(), QSizeF(box))).size().toSize();
}

QRectF CenterRectangle(QSizeF size, const QRectF &box)
{
    if (size.isEmpty() || box.isEmpty())
        return {box.topLeft(), QSizeF(1, 1)};
    double width = size.width();
    double height = size.height();
    if (width > box.width() || height > box.height()) {
        const double fittedHeight = box.width() * height / width;
        const bool fitsAcross = fittedHeight <= box.height();
        width = fitsAcross ? box.width() : width * box.height() / height;
        height = fitsAcross ? fittedHeight : box.height();
    }
    return {std::floor(box.x() + (box.width() - width) / 2), std::floor(box.y() + (box.height() - height) / 2),
            std::max(std::floor(width), 1.0), std::max(std::floor(height), 1.0)};
}

/// One step of what an image is made of; the steps below it are shared with other images.
struct Image::Source
{
    virtual ~Source() = default;
    /// `part` (pixels of this step, inside its size) scaled to `target`, which is no larger.
    [[nodiscard]] virtual std::optional<QImage> render(const QRect &part, QSize target,
                                                       const std::atomic<bool> *cancelled) const = 0;
    [[nodiscard]] virtual bool isCurrent() const { return true; }
    [[nodiscard]] virtual bool isDamaged() const { return false; }
    [[nodiscard]] virtual bool lacksEffects() const { return false; }
    [[nodiscard]] virtual QImage embeddedThumbnail() const { return {}; }
    [[nodiscard]] virtual PictureNotes notes() const { return {}; }

    static quint64 nextNumber()
    {
        static std::atomic<quint64> last = 0;
        return ++last;
    }

    const quint64 number = nextNumber();
    QSize size;
    bool hasAlpha = false;
    QString path;
};

namespace {

using FileIdentity = std::tuple<quint64, quint64, qint64, qint64>;

FileIdentity identityOf(const OpenedFile &file)
{
    return {file.device, file.inode, file.modified, file.size};
}

/// A line in the log, but for each state of each file only once. When very many files are damaged, the rest of them
/// go unmentioned.
void logDamage(const QString &path, const FileIdentity &file)
{
    constexpr size_t most = 10'000;
    static std::mutex mutex;
    static std::set<FileIdentity> told;
    {
        const std::lock_guard lock(mutex);
        if (told.size() >= most || !told.insert(file).second)
            return;
    }
    LogString("Damaged image file, shown as far as it could be read: %@", path);
}

}

struct Image::FileSource final : Source
{
    FileIdentity identity;
    mutable std::atomic<bool> damaged = false; ///< found out by decoding

    bool isDamaged() const override { return damaged; }
    bool isCurrent() const override
    {
        struct stat facts = {};
        return ::stat(QFile::encodeName(path).constData(), &facts) == 0 &&
               FileIdentity(facts.st_dev, facts.st_ino, facts.st_mtime, facts.st_size) == identity;
    }

    std::optional<QImage> render(const QRect &part, QSize target, const std::atomic<bool> *cancelled) const override
    {
        const auto file = openRegularFile(path);
        if (!file || identityOf(*file) != identity)
            return std::nullopt;
        DecodeRequest request;
        request.size = target;
        request.region = part;
        request.cancelled = cancelled;
        auto decoded = Decoder::decode(file->descriptor.number(), path, request);
        if (!decoded)
            return std::nullopt;
        if (decoded->damaged) {
            damaged = true;
            logDamage(path, identity);
        }
        return std::move(decoded->pixels);
    }

    QImage embeddedThumbnail() const override
    {
        const auto file = openRegularFile(path);
        if (!file || identityOf(*file) != identity)
            return {};
        return Decoder::embeddedThumbnail(file->descriptor.number(), path).value_or(QImage());
    }

    PictureNotes notes() const override
    {
        const auto file = openRegularFile(path);
        if (!file || identityOf(*file) != identity)
            return {};
        return Decoder::readNotes(file->descriptor.number(), path);
    }
};

struct Image::PixelSource final : Source
{
    QImage image;

    std::optional<QImage> render(const QRect &part, QSize target, const std::atomic<bool> *) const override
    {
        const QImage reduced = reducedImage(image, part, target);
        return reduced.isNull() ? std::nullopt : std::optional(reduced);
    }
};

struct Image::CropSource final : Source
{
    std::shared_ptr<const Source> below;
    bool isCurrent() const override { return below->isCurrent(); }
    PictureNotes notes() const override { return below->notes(); }
    bool isDamaged() const override { return below->isDamaged(); }
    bool lacksEffects() const override { return below->lacksEffects(); }
    QPoint origin;

    std::optional<QImage> render(const QRect &part, QSize target, const std::atomic<bool> *cancelled) const override
    {
        return below->render(part.translated(origin), target, cancelled);
    }
};

namespace {

/// What a filter made, in a format that images have.
QImage inOwnFormat(QImage image, bool hadAlpha)
{
    if (!image.hasAlphaChannel())
        return image.convertToFormat(QImage::Format_RGB32);
    image.convertTo(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (hadAlpha || std::any_of(row, row + image.width(), [](QRgb pixel) { return qAlpha(pixel) != 255; }))
            return image;
    }
    image.reinterpretAsFormat(QImage::Format_RGB32);
    return image;
}

}

struct Image::EffectSource final : Source
{
    std::shared_ptr<const Source> below;
    bool isCurrent() const override { return below->isCurrent(); }
    PictureNotes notes() const override { return below->notes(); }
    bool isDamaged() const override { return below->isDamaged(); }
    bool lacksEffects() const override { return hasFailed || below->lacksEffects(); }
    EffectChain chain;
    mutable std::atomic<bool> hasFailed = false; ///< found out by rendering

    std::optional<QImage> render(const QRect &part, QSize target, const std::atomic<bool> *cancelled) const override
    {
        // Effects see the whole picture, at the scale at which its part is wanted.
        const double scale = std::max(double(target.width()) / part.width(), double(target.height()) / part.height());
        const QSize whole =
            part.size() == size
                ? target
                : QSize(int(std::ceil(size.width() * scale)), int(std::ceil(size.height() * scale))).boundedTo(size);
        const auto source = below->render(QRect(QPoint(), size), whole, cancelled);
        if (!source)
            return std::nullopt;
        FilterContext context;
        context.scale = double(whole.width()) / size.width();
        context.cancelled = cancelled;
        const auto filtered = EvaluateChain(chain, *source, filterBackEnd(), context);
        if (!filtered && cancelled && cancelled->load())
            return std::nullopt;
        // A picture without its effects says more than no picture.
        hasFailed = hasFailed || !filtered;
        const QImage result = inOwnFormat(filtered.value_or(*source), hasAlpha);
        return part.size() == size ? result : reducedImage(result, scaledPart(part, whole), target);
    }

    QRect scaledPart(const QRect &part, QSize whole) const
    {
        const double x = double(whole.width()) / size.width();
        const double y = double(whole.height()) / size.height();
        return QRectF(part.x() * x, part.y() * y, part.width() * x, part.height() * y).toRect() &
               QRect(QPoint(), whole);
    }
};

Image Image::fromFile(const QString &path, QString *reason)
{
    const auto file = openRegularFile(path, reason);
    if (!file)
        return {};
    const auto header = Decoder::readHeader(file->descriptor.number(), path, reason);
    if (!header)
        return {};
    auto source = std::make_shared<FileSource>();
    source->size = header->size;
    source->hasAlpha = header->hasAlpha;
    source->path = path;
    source->identity = identityOf(*file);
    return Image(std::move(source));
}

Image Image::fromPixels(const QImage &pixels)
{
    if (pixels.isNull())
        return {};
    auto source = std::make_shared<PixelSource>();
    source->size = pixels.size();
    source->hasAlpha = pixels.hasAlphaChannel();
    source->image =
        pixels.convertToFormat(source->hasAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return source->image.isNull() ? Image() : Image(std::move(source));
}

QSize Image::size() const
{
    return d ? d->size : QSize();
}

bool Image::hasAlpha() const
{
    return d && d->hasAlpha;
}

QString Image::path() const
{
    return d ? d->path : QString();
}

bool Image::isCurrent() const
{
    return d && d->isCurrent();
}

Image Image::cropped(const QRectF &rect) const
{
    const bool isFinite = std::isfinite(rect.x()) && std::isfinite(rect.y()) && std::isfinite(rect.width()) &&
                          std::isfinite(rect.height());
    if (!d || !isFinite)
        return {};
    const QRect whole(QPoint(), d->size);
    const QRect part = rect.normalized().intersected(QRectF(whole)).toRect() & whole;
    if (part.isEmpty())
        return {};
    if (part == whole)
        return *this;
    auto source = std::make_shared<CropSource>();
    source->size = part.size();
    source->hasAlpha = d->hasAlpha;
    source->path = d->path;
    source->below = d;
    source->origin = part.topLeft();
    return Image(std::move(source));
}

Image Image::withEffects(const EffectChain &chain) const
{
    if (!d || chain.isEmpty())
        return *this;
    auto source = std::make_shared<EffectSource>();
    source->size = d->size;
    source->hasAlpha = d->hasAlpha;
    source->path = d->path;
    source->below = d;
    source->chain = chain;
    return Image(std::move(source));
}

std::optional<QImage> Image::pixels(QSize size, const std::atomic<bool> *cancelled) const
{
    return pixelsOf(QRect(QPoint(), this->size()), size.isEmpty() ? this->size() : size, cancelled);
}

std::optional<QImage> Image::pixelsOf(const QRect &part, QSize size, const std::atomic<bool> *cancelled) const
{
    const QRect inside = part & QRect(QPoint(), this->size());
    if (inside.isEmpty() || size.isEmpty())
        return std::nullopt;
    auto result = d->render(inside, size.boundedTo(inside.size()), cancelled);
    if (cancelled && cancelled->load())
        return std::nullopt;
    return result;
}

quint64 Image::number() const
{
    return d ? d->number : 0;
}

bool Image::lacksEffects() const
{
    return d && d->lacksEffects();
}

bool Image::isDamaged() const
{
    return d && d->isDamaged();
}

QImage Image::embeddedThumbnail() const
{
    return d ? d->embeddedThumbnail() : QImage();
}

PictureNotes Image::notes() const
{
    return d ? d->notes() : PictureNotes();
}
