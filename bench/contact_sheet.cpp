// contact_sheet PICTURE TARGET: writes a picture that shows every filter of the catalogue on that picture, for looking
// at: a wrong filter is plain to see.

#include "FilterCatalogue.h"
#include "FilterLibrary.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>

#include <cstdio>
#include <map>

namespace {

constexpr QSize kPicture(240, 160);
constexpr QSize kTile(250, 185);
constexpr int kColumns = 10;
constexpr double kFull = 900; // pixels of the full picture's width, which lengths refer to

/// What shows filters that change nothing with their defaults.
const std::map<QString, std::vector<std::pair<QString, double>>> &values()
{
    static const std::map<QString, std::vector<std::pair<QString, double>>> all{
        {QStringLiteral("CIColorControls"), {{QStringLiteral("inputSaturation"), 1.8}}},
        {QStringLiteral("CIStraightenFilter"), {{QStringLiteral("inputAngle"), 0.2}}},
        {QStringLiteral("CIMorphologyMaximum"), {{QStringLiteral("inputRadius"), 12}}},
        {QStringLiteral("CIMorphologyMinimum"), {{QStringLiteral("inputRadius"), 12}}},
        {QStringLiteral("CIExposureAdjust"), {{QStringLiteral("inputEV"), 1}}},
        {QStringLiteral("CIGammaAdjust"), {{QStringLiteral("inputPower"), 2}}},
        {QStringLiteral("CIHueAdjust"), {{QStringLiteral("inputAngle"), 1.5}}},
        {QStringLiteral("CIVibrance"), {{QStringLiteral("inputAmount"), 1}}},
        {QStringLiteral("CIVignette"), {{QStringLiteral("inputIntensity"), 1}}},
        {QStringLiteral("CIVignetteEffect"), {{QStringLiteral("inputRadius"), 400}}},
        {QStringLiteral("CIPerspectiveRotate"), {{QStringLiteral("inputYaw"), 0.4}}},
        {QStringLiteral("CILanczosScaleTransform"), {{QStringLiteral("inputScale"), 0.6}}},
        {QStringLiteral("CIBicubicScaleTransform"), {{QStringLiteral("inputScale"), 1.5}}},
        {QStringLiteral("CIHighlightShadowAdjust"), {{QStringLiteral("inputShadowAmount"), 1}}},
        {QStringLiteral("CIUnsharpMask"), {{QStringLiteral("inputRadius"), 15}}}};
    return all;
}

EffectEntry entryOf(const FilterAttributes &filter)
{
    EffectEntry entry(filter.name);
    for (const FilterInput &input : filter.inputs) {
        if (input.attributeClass == u"CIVector")
            entry.setValue(input.name, input.name == u"inputPoint1" ? QPointF(0.5, 0.3) : QPointF(0, 0));
        if (input.attributeClass == u"CIColor" && filter.name == u"CIWhitePointAdjust")
            entry.setValue(input.name, EffectColor{1, 0.8, 0.6, 1});
    }
    const auto found = values().find(filter.name);
    for (const auto &[input, value] :
         found == values().end() ? std::vector<std::pair<QString, double>>() : found->second)
        entry.setValue(input, value);
    return entry;
}

/// In the order of the menus; how many failed.
int paint(QPainter &painter, const QImage &picture, const FilterLibrary &library, const FilterCatalogue &catalogue)
{
    FilterContext context;
    context.scale = picture.width() / kFull;
    int count = 0;
    int failed = 0;
    for (const auto &category : catalogue.categories()) {
        for (const QString &name : category.filters) {
            const auto result = EvaluateChain({entryOf(*library.attributes(name))}, picture, library, context);
            const QPoint corner(count % kColumns * kTile.width(), count / kColumns * kTile.height());
            if (result)
                painter.drawImage(corner, *result);
            painter.drawText(corner + QPoint(2, kPicture.height() + 16), name.mid(2));
            failed += result ? 0 : 1;
            ++count;
        }
    }
    return failed;
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    QImage picture = argc == 3 ? QImage(QFile::decodeName(argv[1])) : QImage();
    if (picture.isNull()) {
        std::fprintf(stderr, "contact_sheet PICTURE TARGET\n");
        return 2;
    }
    picture = picture.convertToFormat(QImage::Format_RGB32)
                  .scaled(kPicture, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation)
                  .copy(QRect(QPoint(), kPicture));
    const FilterLibrary library;
    const FilterCatalogue catalogue(library);
    int count = 0;
    for (const auto &category : catalogue.categories())
        count += int(category.filters.size());
    QImage sheet(kColumns * kTile.width(), (count + kColumns - 1) / kColumns * kTile.height(), QImage::Format_RGB32);
    sheet.fill(Qt::darkGray);
    QPainter painter(&sheet);
    painter.setPen(Qt::white);
    const int failed = paint(painter, picture, library, catalogue);
    painter.end();
    std::printf("%d filters, %d failed\n", count, failed);
    return failed == 0 && sheet.save(QFile::decodeName(argv[2])) ? 0 : 1;
}
