#include "FakeFilterBackEnd.h"
#include "FilterCatalogue.h"
#include "TestRunner.h"

#include <QTest>

namespace {

const QString kBlur = QStringLiteral("CICategoryBlur");
const QString kZoom = QStringLiteral("CIZoom");

FilterInput number(const char *name)
{
    return fakeInput(name, "NSNumber", 0.0);
}

FilterInput vector(const char *name, int components)
{
    FilterInput input = fakeInput(name, "CIVector", QPointF(1, 2));
    input.vectorComponents = components;
    return input;
}

FilterInput withoutAttributes(const char *name, const char *attributeClass = "")
{
    FilterInput input = fakeInput(name, attributeClass);
    input.hasAttributes = false;
    return input;
}

}

class TestFilterCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thereAreTenCategoriesInOrder()
    {
        FakeFilterBackEnd backEnd;
        for (const char *name : {"CIStraightenFilter", "CIUnsharpMask", "CIColorControls", "CIZoom", "CIAlpha"})
            backEnd.offer(kBlur, QString::fromLatin1(name), {number("inputAmount")});
        // An inadmissible filter is not even standard.
        backEnd.offer(kBlur, QStringLiteral("CIUnsharpMask"), {fakeInput("inputTable", "NSData")});
        backEnd.offer(QStringLiteral("CICategoryStylize"), kZoom);
        const FilterCatalogue catalogue(backEnd);
        QStringList shown;
        for (const auto &category : catalogue.categories())
            shown.append(category.name.mid(10) + u'=' + category.displayName + u':' + category.filters.join(u','));
        QCOMPARE(shown.join(u' '),
                 QStringLiteral("=Standard Effects:CIColorControls,CIStraightenFilter Blur=Blur:CIZoom,CIAlpha "
                                "ColorAdjustment=ColorAdjustment: ColorEffect=ColorEffect: "
                                "DistortionEffect=DistortionEffect: GeometryAdjustment=GeometryAdjustment: "
                                "HalftoneEffect=HalftoneEffect: Sharpen=Sharpen: Stylize=Stylize:CIZoom "
                                "TileEffect=TileEffect:"));
    }

    void aFilterIsAdmittedByItsInputs_data()
    {
        QTest::addColumn<QList<FilterInput>>("inputs"); // besides the image
        QTest::addColumn<bool>("admitted");
        const auto row = [](const char *name, bool admitted, const QList<FilterInput> &inputs) {
            QTest::newRow(name) << inputs << admitted;
        };
        row("image alone", true, {});
        row("five inputs", true, {number("a"), number("b"), number("c"), fakeInput("d", "CIColor")});
        row("six inputs", false, {number("a"), number("b"), number("c"), number("d"), number("e")});
        row("two images", false, {fakeInput("inputBackgroundImage", "CIImage")});
        row("another class", false, {number("a"), fakeInput("b", "NSValue")});
        row("two vectors", true, {vector("a", 2), vector("b", 1)});
        row("three vectors", false, {vector("a", 2), vector("b", 2), vector("c", 2)});
        row("vector of four", false, {vector("a", 4)});
        row("vector with a default alone", true, {fakeInput("a", "CIVector", {}, QPointF(3, 4))});
        row("vector with neither", false, {fakeInput("a", "CIVector")});
        row("not classed", true, {withoutAttributes("a", "NSData"), withoutAttributes("b", "CIImage")});
        row("but counted", false, QList<FilterInput>(5, withoutAttributes("a")));
    }
    void aFilterIsAdmittedByItsInputs()
    {
        QFETCH(QList<FilterInput>, inputs);
        QFETCH(bool, admitted);
        FakeFilterBackEnd backEnd;
        backEnd.offer(kBlur, kZoom, inputs);
        const FilterCatalogue catalogue(backEnd);
        QCOMPARE(catalogue.categories().at(1).filters.size(), admitted ? 1 : 0);
        QCOMPARE(catalogue.description(kZoom) != nullptr, admitted);
    }

    void filtersThatCanNotBeOfferedAreRefused()
    {
        FakeFilterBackEnd backEnd;
        for (const char *name :
             {"CICircularWrap", "CIHeightFieldFromMask", "CIMaskToAlpha", "CIStretchCrop", "CITemperatureAndTint"})
            backEnd.offer(kBlur, QString::fromLatin1(name));
        backEnd.offerExactly(kBlur, QStringLiteral("CINone"), {});
        backEnd.offerExactly(kBlur, QStringLiteral("CIGenerator"), {number("a")});
        QCOMPARE(FilterCatalogue(backEnd).categories().at(1).filters, QStringList());
    }

    void aNewEntryStartsWhereItChangesNothing()
    {
        FakeFilterBackEnd backEnd;
        backEnd.offer(kBlur, kZoom,
                      {fakeInput("inputCenter", "CIVector", {}, QPointF(150, 150)),
                       fakeInput("inputAmount", "NSNumber", 0.0, 20.0), fakeInput("inputWidth", "NSNumber", {}, 5.0),
                       fakeInput("inputNothing", "NSNumber")});
        const FilterCatalogue catalogue(backEnd);
        EffectEntry expected(kZoom);
        expected.setValue(QStringLiteral("inputWidth"), 5.0);
        expected.setValue(QStringLiteral("inputAmount"), 0.0);
        expected.setValue(QStringLiteral("inputCenter"), QPointF(0, 0));
        QCOMPARE(catalogue.startingEntry(kZoom), expected);
        QCOMPARE(catalogue.startingEntry(QStringLiteral("CIOther")), EffectEntry(QStringLiteral("CIOther")));
    }
};

REGISTER_TEST(TestFilterCatalogue)
#include "TestFilterCatalogue.moc"
