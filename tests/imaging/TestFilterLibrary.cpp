#include "FilterCatalogue.h"
#include "FilterReference.h"
#include "TestPictures.h"
#include "TestRunner.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <ctime>
#include <limits>
#include <thread>

namespace {

const QImage &alphaSample()
{
    static const QImage sample = samplePicture(true);
    return sample;
}

QList<FilterAttributes> allFilters()
{
    QList<FilterAttributes> filters;
    const FilterCatalogue catalogue(filterLibrary());
    for (const auto &category : catalogue.categories()) {
        for (const QString &name : filterLibrary().filterNames(category.name))
            filters.append(*filterLibrary().attributes(name));
    }
    return filters;
}

QStringList lengths()
{
    return {QStringLiteral("inputRadius"), QStringLiteral("inputWidth"),  QStringLiteral("inputHeight"),
            QStringLiteral("inputScale"),  QStringLiteral("inputAmount"), QStringLiteral("inputSize")};
}

bool isNeutral(const FilterAttributes &filter)
{
    return std::any_of(filter.inputs.cbegin(), filter.inputs.cend(),
                       [](const auto &i) { return i.identity.has_value(); });
}

/// The filter with every number, point and colour at that value.
EffectEntry extreme(const FilterAttributes &filter, double value)
{
    EffectEntry entry(filter.name);
    for (const FilterInput &input : filter.inputs) {
        if (input.attributeClass == u"NSNumber")
            entry.setValue(input.name, value);
        else if (input.attributeClass == u"CIVector")
            entry.setValue(input.name, QPointF(value, -value));
        else if (input.attributeClass == u"CIColor")
            entry.setValue(input.name, EffectColor{value, -value, value, value});
    }
    return entry;
}

/// The most memory that this process has had since `resetPeakMemory()`, in MB; the latter tells what it has.
qint64 peakMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QFile::ReadOnly))
        return 0;
    const auto note = QRegularExpression(QStringLiteral("VmHWM:\\s*(\\d+)")).match(QString::fromUtf8(status.readAll()));
    return note.captured(1).toLongLong() / 1024;
}

qint64 resetPeakMemory()
{
    QFile note(QStringLiteral("/proc/self/clear_refs"));
    if (note.open(QFile::WriteOnly))
        note.write("5");
    note.close();
    return peakMemory();
}

constexpr bool isSanitized()
{
#ifdef __SANITIZE_ADDRESS__
    return true;
#else
    return false;
#endif
}

QString textOf(const std::optional<EffectValue> &value)
{
    const auto text = [](double number) { return QString::number(number); };
    if (const auto *point = value ? std::get_if<QPointF>(&*value) : nullptr)
        return text(point->x()) + u',' + text(point->y());
    if (const auto *color = value ? std::get_if<EffectColor>(&*value) : nullptr)
        return QStringList{text(color->red), text(color->green), text(color->blue), text(color->alpha)}.join(u',');
    return value ? text(std::get<double>(*value)) : QStringLiteral("-");
}

QString textOf(const std::optional<double> &number)
{
    return number ? QString::number(*number) : QStringLiteral("-");
}

QString kindOf(const FilterInput &input)
{
    switch (input.numberType) {
    case NumberType::Angle:
        return QStringLiteral("Angle");
    case NumberType::Integer:
        return QStringLiteral("Integer");
    case NumberType::Boolean:
        return QStringLiteral("Boolean");
    case NumberType::Scalar:
        break;
    }
    return input.attributeClass;
}

/// The filter as a line of filters.txt tells it.
QString lineOf(const QString &category, const FilterAttributes &filter)
{
    QStringList words{category, filter.name};
    for (const FilterInput &i : filter.inputs) {
        if (i.attributeClass != u"CIImage")
            words << QStringList{i.name,
                                 kindOf(i),
                                 textOf(i.defaultValue),
                                 textOf(i.identity),
                                 textOf(i.sliderMinimum),
                                 textOf(i.sliderMaximum)}
                         .join(u':');
    }
    return words.join(u' ');
}

}

class TestFilterLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedFiltersAreKnownButNotOffered()
    {
        const FilterCatalogue catalogue(filterLibrary());
        QCOMPARE(catalogue.categories().at(0).filters.value(0), QStringLiteral("CIColorControls"));
        for (const char *name : {"CIColorClamp", "CIMaskToAlpha"}) {
            const QString refused = QString::fromLatin1(name);
            QVERIFY(filterLibrary().attributes(refused));
            QVERIFY2(!catalogue.description(refused), name);
        }
        QStringList shown;
        for (const auto &category : catalogue.categories())
            shown += category.filters;
        const QStringList all = QSet<QString>(shown.cbegin(), shown.cend()).values();
        QCOMPARE(all.size(), shown.size()); // each in one category
        QVERIFY(shown.contains(QStringLiteral("CIExposureAdjust")));
    }

    void whatIsOfferedIsAsListed()
    {
        QFile file(QStringLiteral(TEST_SOURCE_DIR "/filters.txt"));
        QVERIFY(file.open(QFile::ReadOnly));
        QStringList expected = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
        expected.removeFirst();
        const FilterCatalogue catalogue(filterLibrary());
        QStringList offered;
        for (const auto &category : catalogue.categories()) {
            for (const QString &name : filterLibrary().filterNames(category.name)) {
                if (catalogue.description(name))
                    offered.append(lineOf(category.name, *filterLibrary().attributes(name)));
            }
        }
        expected.sort(); // the order within categories is for menus
        offered.sort();
        for (int i = 0; i < std::min(expected.size(), offered.size()); ++i)
            QCOMPARE(offered.at(i), expected.at(i));
        QCOMPARE(offered.size(), expected.size());
    }

    /// What the catalogue starts with changes nothing, to the last bit; nor does what no filter changes on its way
    /// through linear light.
    void identitiesChangeNothing()
    {
        const FilterCatalogue catalogue(filterLibrary());
        const QImage &sample = alphaSample();
        int checked = 0;
        for (const FilterAttributes &filter : allFilters()) {
            if (!isNeutral(filter) || !catalogue.description(filter.name))
                continue;
            QVERIFY2(filtered({catalogue.startingEntry(filter.name)}, sample) == sample, qPrintable(filter.name));
            ++checked;
        }
        QVERIFY(checked > 4);
        QImage all(256, 256, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < 256; ++y) {
            for (int x = 0; x < 256; ++x)
                all.setPixel(x, y, qPremultiply(qRgba(x, 255 - x, 128, y)));
        }
        const QImage turned = filtered({effect("CIHueAdjust", {{"inputAngle", 1e-9}})}, all);
        QCOMPARE(turned, all);
    }

    /// A picture filtered small looks like the filtered picture made small: lengths in pixels follow.
    void smallRenderingsLookLikeLargeOnes()
    {
        const QImage full = TestPictures::colorful(QSize(320, 240));
        const QImage small = TestPictures::colorful(QSize(80, 60));
        int checked = 0;
        for (const FilterAttributes &filter : allFilters()) {
            EffectEntry entry(filter.name);
            bool hasLength = false;
            const bool isFine = filter.name.endsWith(u"Screen") || filter.name == u"CIOpTile";
            for (const FilterInput &input : filter.inputs) {
                if (input.attributeClass == u"CIVector")
                    entry.setValue(input.name, QPointF(0.1, 0.2));
                if (isFine && input.name == u"inputWidth")
                    entry.setValue(input.name, 120.0); // what is finer than pixels can not look alike
                hasLength = hasLength || lengths().contains(input.name);
            }
            const double most = 0.02;
            if (!hasLength)
                continue;
            const QImage large =
                filtered({entry}, full).scaled(small.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            const double apart = TestPictures::meanDifference(filtered({entry}, small, 0.25), large) / 255;
            QVERIFY2(apart < most, qPrintable(QStringLiteral("%1: %2").arg(filter.name).arg(apart)));
            ++checked;
        }
        QVERIFY(checked > 8);
    }

    void valuesOutOfHandDoNoHarm()
    {
        const double infinity = std::numeric_limits<double>::infinity();
        for (const FilterAttributes &filter : allFilters()) {
            for (const double value : {std::nan(""), infinity, -infinity, 1e9, -1e9, 0.0, 1e300}) {
                EffectEntry entry = extreme(filter, value);
                entry.setValue(QStringLiteral("inputUnheardOf"), QStringLiteral("text"));
                QVERIFY2(filtered({entry}, alphaSample()).size() == alphaSample().size(), qPrintable(filter.name));
            }
            EffectEntry texts(filter.name);
            for (const FilterInput &input : filter.inputs)
                texts.setValue(input.name, QStringLiteral("1"));
            QCOMPARE(filtered({texts}, alphaSample()), filtered({EffectEntry(filter.name)}, alphaSample()));
        }
    }

    /// Cells far smaller than pixels and centres far outside take neither long nor much memory.
    void tinyRenderingsAndFarCentresAreBounded()
    {
        const QImage picture = TestPictures::colorful(QSize(160, 120), /*withAlpha=*/true);
        const qint64 before = resetPeakMemory();
        for (const FilterAttributes &filter : allFilters()) {
            EffectEntry far(filter.name);
            for (const FilterInput &input : filter.inputs) {
                if (input.attributeClass == u"CIVector")
                    far.setValue(input.name, QPointF(1e4, -3e3));
            }
            QVERIFY2(!filtered({EffectEntry(filter.name)}, picture, 0.025).isNull(), qPrintable(filter.name));
            QVERIFY2(!filtered({far}, picture).isNull(), qPrintable(filter.name));
        }
        if (!isSanitized())
            QVERIFY2(peakMemory() - before < 200, qPrintable(QString::number(peakMemory() - before)));
    }

    /// What is evenly half clear looks as if it were opaque, behind a filter as well.
    void alphaIsCarried()
    {
        const QStringList makeOpaque{QStringLiteral("CISobelGradients"), QStringLiteral("CIGaborGradients"),
                                     QStringLiteral("CIPointillize")};
        const auto faded = [](const QImage &image) {
            QImage result = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
            for (qsizetype i = 0; i < result.sizeInBytes(); ++i)
                result.bits()[i] = uchar((result.constBits()[i] * 128 + 127) / 255);
            return result;
        };
        const QImage picture = TestPictures::colorful(QSize(90, 64));
        for (const FilterAttributes &filter : allFilters()) {
            EffectEntry entry(filter.name);
            for (const FilterInput &input : filter.inputs) {
                if (input.attributeClass == u"CIVector")
                    entry.setValue(input.name, QPointF(0.1, 0.2));
                if (input.attributeClass == u"NSNumber" && input.sliderMinimum && input.sliderMaximum)
                    entry.setValue(input.name, 0.8 * *input.sliderMinimum + 0.2 * *input.sliderMaximum);
            }
            const double apart =
                TestPictures::meanDifference(filtered({entry}, faded(picture)), faded(filtered({entry}, picture)));
            QVERIFY2(makeOpaque.contains(filter.name) || apart < 2, // slopes strengthen the rounding
                     qPrintable(filter.name + u' ' + QString::number(apart)));
        }
    }

    void unknownFiltersAreSkippedAndCancellingEndsIt()
    {
        QCOMPARE(filtered({effect("CINobody")}, alphaSample()), alphaSample());
        const std::atomic<bool> cancelled = true;
        for (const FilterAttributes &filter : allFilters()) {
            const auto run = filterLibrary().start(alphaSample(), FilterContext{1, &cancelled});
            QVERIFY2(!run->apply(EffectEntry(filter.name)) || run->result().isNull() ||
                         filtered({EffectEntry(filter.name)}, alphaSample()) == alphaSample(),
                     qPrintable(filter.name));
        }
    }

    /// What a long chain keeps on the way does not add up, and nothing of it is lost.
    void longChainsKeepLittle()
    {
        const QImage picture = TestPictures::colorful(QSize(1000, 300));
        const EffectChain three{effect("CIBloom", {{"inputRadius", 12.0}, {"inputIntensity", 0.3}}),
                                effect("CISharpenLuminance", {{"inputRadius", 3.0}, {"inputSharpness", 0.3}}),
                                effect("CIGloom", {{"inputRadius", 9.0}, {"inputIntensity", 0.3}})};
        const EffectChain nine = three + three + three;
        const EffectChain end = three + EffectChain{effect("CIEdgeWork")};
        const qint64 before = resetPeakMemory();
        const QImage whole = filtered(nine + end, picture);
        if (!isSanitized()) // which keeps what is freed
            QVERIFY2(peakMemory() - before < 300, qPrintable(QString::number(peakMemory() - before)));
        const double apart = TestPictures::meanDifference(whole, filtered(end, filtered(nine, picture)));
        QVERIFY2(apart < 1, qPrintable(QString::number(apart)));
    }

    /// Also into the work on a single piece, here one that needs all others behind slow filters.
    void cancellingReachesIntoPieces()
    {
        const QImage picture = TestPictures::colorful(QSize(4000, 3000));
        std::atomic<bool> cancelled = false;
        std::atomic<bool> isDone = false;
        QImage result = picture;
        std::jthread thread([&] {
            const auto run = filterLibrary().start(picture, FilterContext{1, &cancelled});
            bool isAdded = true;
            for (int i = 0; i < 8; ++i)
                isAdded = isAdded && run->apply(effect("CIMorphologyMaximum", {{"inputRadius", 59.0}}));
            isAdded = isAdded && run->apply(effect("CIGaussianBlur", {{"inputRadius", 1e6}}));
            result = isAdded ? run->result() : picture;
            isDone = true;
        });
        const clock_t begun = clock(); // the processor's time: the filters are at work
        QTRY_VERIFY_WITH_TIMEOUT(clock() - begun > CLOCKS_PER_SEC / 5, 60'000);
        cancelled = true;
        QTRY_VERIFY_WITH_TIMEOUT(isDone, 15'000);
        thread.join();
        QVERIFY(result.isNull());
    }
};

REGISTER_TEST(TestFilterLibrary)
#include "TestFilterLibrary.moc"
