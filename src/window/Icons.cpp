#include "Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

namespace {

QIcon ownIcon(QLatin1String name)
{
    const QString path = QStringLiteral(":/icons/%1.svg").arg(name);
    const QPalette palette = QGuiApplication::palette();
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        const auto pixmap = [&](QPalette::ColorGroup group) {
            return QPixmap::fromImage(renderSvg(path, {side, side}, palette.color(group, QPalette::ButtonText)));
        };
        icon.addPixmap(pixmap(QPalette::Active), QIcon::Normal);
        icon.addPixmap(pixmap(QPalette::Disabled), QIcon::Disabled);
    }
    return icon;
}

}

QIcon themedIcon(QLatin1String name)
{
    return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name) : ownIcon(name);
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
