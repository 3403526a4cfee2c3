#include "Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace {

/// Draws in the text colour of the moment, so that the icon stays legible when the desktop turns dark.
class OwnIconEngine final : public QIconEngine
{
public:
    explicit OwnIconEngine(const QString &path)
        : m_path(path)
    {}

    [[nodiscard]] QIconEngine *clone() const override { return new OwnIconEngine(m_path); }
    [[nodiscard]] QSize actualSize(const QSize &size, QIcon::Mode, QIcon::State) override { return size; }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device()->devicePixelRatio();
        painter->drawPixmap(rect, pixmap(rect.size() * ratio, mode, state));
    }

    [[nodiscard]] QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QColor color = QGuiApplication::palette().color(group, QPalette::ButtonText);
        const QString key =
            QStringLiteral("%1 %2x%3 %4").arg(m_path).arg(size.width()).arg(size.height()).arg(color.name());
        QPixmap drawn;
        if (!QPixmapCache::find(key, &drawn)) {
            drawn = QPixmap::fromImage(renderSvg(m_path, size, color));
            QPixmapCache::insert(key, drawn);
        }
        return drawn;
    }

private:
    QString m_path;
};

}

QIcon themedIcon(QLatin1String name)
{
    return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name)
                                     : QIcon(new OwnIconEngine(QStringLiteral(":/icons/%1.svg").arg(name)));
}

QImage renderSvg(const QString &path, QSize size, const QColor &color)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return {};
    QSvgRenderer renderer(file.readAll().replace("currentColor", color.name().toLatin1()));
    if (!renderer.isValid())
        return {};
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}
