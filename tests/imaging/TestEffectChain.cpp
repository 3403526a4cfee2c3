#include "EffectChain.h"
#include "EffectSetStore.h"
#include "LibraryTags.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "TestRunner.h"

#include <QTest>

#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(EffectValue)

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const QByteArray kDeclaration = QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
const QString kInput = QStringLiteral("inputX");

QByteArray archived(const EffectChain &chain)
{
    QVXmlEncoder encoder;
    ArchiveFilters(encoder, chain);
    return encoder.utf8().mid(kDeclaration.size());
}

// A decoder that stands on the first "filters" element of the text.
std::optional<QVXmlDecoder> decoderAtFilters(const QByteArray &xml)
{
    auto decoder = QVXmlDecoder::fromData(kDeclaration + xml + "\n");
    while (decoder && decoder->getNextTag()) {
        if (decoder->key() == LibraryTag::Filters)
            return decoder;
    }
    return std::nullopt;
}

std::optional<EffectChain> unarchived(const QByteArray &xml)
{
    auto decoder = decoderAtFilters(xml);
    return decoder ? UnarchiveFilters(*decoder) : std::nullopt;
}

QByteArray filters(const QByteArray &attrs)
{
    return "<filters><filter>" + attrs + "</filter></filters>";
}

QByteArray attr(const char *type, const QByteArray &value, const QByteArray &key = "inputX")
{
    return "<attr key=\"" + key + "\" type=\"" + type + "\" value=\"" + value + "\"></attr>";
}

EffectEntry entryWith(const EffectValue &value)
{
    EffectEntry entry;
    entry.setValue(kInput, value);
    return entry;
}

}

class TestEffectChain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (std::size_t i = 0; i < LibraryTag::kNames.size(); ++i)
            QVXmlDecoder::addDecoderKey(static_cast<int>(i) + 1, QString::fromLatin1(LibraryTag::kNames[i]));
    }

    void aChainIsWrittenAsByHandAndReadBack()
    {
        EffectEntry controls(QStringLiteral("CIColorControls"));
        controls.setValue(QStringLiteral("inputSaturation"), 0.5);
        EffectEntry bump(QStringLiteral("CIBumpDistortion"));
        bump.setValue(QStringLiteral("inputCenter"), QStringLiteral("replaced in its place"));
        bump.setValue(QStringLiteral("inputColor"), EffectColor{1, 0.5, 0, 0.3});
        bump.setValue(QStringLiteral("inputCenter"), QPointF(0.25, -1));
        bump.setValue(QStringLiteral("inputText"), QStringLiteral("a \"b\" <c>"));
        const QByteArray expected =
            "<filters>\n"
            "\t<filter>\n"
            "\t\t<attr key=\"CIAttributeFilterName\" type=\"string\" value=\"CIColorControls\"></attr>\n"
            "\t\t<attr key=\"inputSaturation\" type=\"number\" value=\"0.50000000\"></attr>\n"
            "\t</filter>\n"
            "\t<filter>\n"
            "\t\t<attr key=\"CIAttributeFilterName\" type=\"string\" value=\"CIBumpDistortion\"></attr>\n"
            "\t\t<attr key=\"inputCenter\" type=\"vector\" value=\"{0.25, -1}\"></attr>\n"
            "\t\t<attr key=\"inputColor\" type=\"color\" value=\"{255, 127, 0}\"></attr>\n"
            "\t\t<attr key=\"inputText\" type=\"string\" value=\"a &quot;b&quot; &lt;c&gt;\"></attr>\n"
            "\t</filter>\n"
            "</filters>\n";
        QCOMPARE(archived({controls, bump}), expected);
        bump.setValue(QStringLiteral("inputColor"), EffectColor{1, 127 / 255.0, 0, 1});
        QCOMPARE(unarchived(expected).value(), EffectChain({controls, bump}));
    }

    void aValueIsWrittenAs_data()
    {
        QTest::addColumn<EffectValue>("value");
        QTest::addColumn<QByteArray>("expected"); // empty: left out
        const auto row = [](const char *name, const EffectValue &value, const QByteArray &expected) {
            QTest::newRow(name) << value << expected;
        };
        row("a tie goes to the even digit", 0.001953125, attr("number", "0.00195312"));
        row("negative", -12.25, attr("number", "-12.25000000"));
        row("large", 1e20, attr("number", "100000000000000000000.00000000"));
        row("largest", 1.7e308, attr("number", QByteArray::number(1.7e308, 'f', 8)));
        row("no number", kNaN, {});
        row("infinite", -kInfinity, {});
        row("infinite point", QPointF(0, kInfinity), {});
        row("colours are cut, not rounded", EffectColor{0.999, 0, 0, 1}, attr("color", "{254, 0, 0}"));
        row("and wrap around", EffectColor{1.2, -0.5, 1e300, 1}, attr("color", "{50, 129, 0}"));
        row("no colour", EffectColor{kNaN, kInfinity, 0, 1}, attr("color", "{0, 0, 0}"));
        row("empty text", QString(), "<attr key=\"inputX\" type=\"string\"></attr>");
    }
    void aValueIsWrittenAs()
    {
        QFETCH(EffectValue, value);
        QFETCH(QByteArray, expected);
        const QByteArray xml = archived({entryWith(value)});
        QCOMPARE(xml.split('\n').value(2).trimmed(), expected.isEmpty() ? QByteArray("</filters>") : expected);
        QVERIFY(unarchived(xml));
    }

    void aNumberReadsBackToEightDecimals()
    {
        for (const double number : {0.0, 0.1, -0.5, 1 / 3.0, -123456.789012345, 1e15 + 0.5}) {
            const auto back = unarchived(archived({entryWith(number)}));
            QVERIFY(back);
            const double read = std::get<double>(*back->first().value(kInput));
            QVERIFY2(std::abs(read - number) <= 5e-9, qPrintable(QString::number(read, 'g', 17)));
        }
    }

    void aTextReadsAs_data()
    {
        QTest::addColumn<QByteArray>("attrText");
        QTest::addColumn<EffectValue>("expected");
        const auto number = [](const QByteArray &text, double expected) {
            QTest::newRow(text.isEmpty() ? "no number" : text.left(20).constData())
                << attr("number", text) << EffectValue(expected);
        };
        number("", 0);
        number("-0.50000000", -0.5);
        number("1e3", 633);
        number("1.5.25", 6.25); // the second point counts the digits anew but keeps them
        number("2-5", 25);
        number("+1", -49); // "+" is a digit of value -5
        number(QByteArray(5000, '9'), 0);
        number("1." + QByteArray(5000, '9'), 0);
        const auto color = [](const QByteArray &text, const EffectColor &expected) {
            QTest::newRow(text.left(20).constData()) << attr("color", text) << EffectValue(expected);
        };
        color("{1, 2, 3}", {1 / 255.0, 2 / 255.0, 3 / 255.0, 1});
        color("{255, 0, 0, 50}", {1, 0, 0, 0.5});
        for (const char *clear : {"{255, 0, 0, 101}", "{255, 0, 0, 0}", "{1, 2}", "{1,2,3}", "{1,2, 3}", "{2555, 100}"})
            color(clear, {});
        color("{255.9, 0x, 51z}", {1, 0, 0.2, 1});
        color("{256, -1, 0}", {0, 1, 0, 1});
        color("{0, 0, 0, " + QByteArray(400, '-') + "}", {});
    }
    void aTextReadsAs()
    {
        QFETCH(QByteArray, attrText);
        QFETCH(EffectValue, expected);
        QCOMPARE(unarchived(filters(attrText)).value(), EffectChain{entryWith(expected)});
    }

    void aChainIsReadOrDroppedAndWhatFollowsIsReadable_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<int>("entries"); // -1: none
        const auto row = [](const char *name, int entries, const QByteArray &xml) {
            QTest::newRow(name) << xml << entries;
        };
        const QByteArray number = attr("number", "1");
        row("empty", 0, "<filters></filters>");
        row("self-closing", 0, "<filters/>");
        row("line break inside", 0, "<filters>\n\t</filters>");
        row("one filter", 1, filters(number));
        row("a filter without anything", 1, filters({}));
        row("empty filters among others", 3,
            "<filters><filter/><filter>" + number + "</filter><filter></filter></filters>");
        row("unknown type", -1, filters(number + attr("data", "1")));
        row("no type", -1, filters("<attr key=\"inputX\" value=\"1\"></attr>"));
        row("no key", -1, filters("<attr type=\"number\" value=\"1\"></attr>"));
        row("no filter", -1, "<filters><caption>a</caption></filters>");
        row("no attr", -1, filters("<value>1</value>" + number));
        row("attr with a child", -1, filters("<attr key=\"a\" type=\"number\" value=\"1\"><id>1</id></attr>"));
        row("filter in a filter", -1, filters("<filter>" + number + "</filter>"));
        QByteArray many;
        for (int i = 0; i < 1000; ++i)
            many += attr("number", "1", "k" + QByteArray::number(i));
        row("more values than any filter has", -1, filters(many));
    }
    void aChainIsReadOrDroppedAndWhatFollowsIsReadable()
    {
        QFETCH(QByteArray, xml);
        QFETCH(int, entries);
        for (const QByteArray sibling : {"<caption>after</caption>", ""}) {
            auto decoder = decoderAtFilters("<photos><photo id=\"1\">" + xml + sibling + "</photo></photos>");
            QVERIFY(decoder);
            const auto chain = UnarchiveFilters(*decoder);
            QCOMPARE(chain ? int(chain->size()) : -1, entries);
            QVERIFY(decoder->getNextTag());
            QCOMPARE(decoder->key(), int(sibling.isEmpty() ? LibraryTag::Photo : LibraryTag::Caption));
            QCOMPARE(decoder->level(), sibling.isEmpty() ? 1 : 2);
        }
    }

    void aDocumentThatEndsInsideAFilterGivesNoChain()
    {
        const QByteArray inFilter = "<filters><filter>" + attr("number", "1");
        const QList<QByteArray> cut{"<filters><filter><!-- -->", inFilter, inFilter + "<attr key=\"a\" ty",
                                    inFilter + "</filter>"};
        for (const QByteArray &xml : cut)
            QVERIFY2(!unarchived(xml), xml.constData());
        QCOMPARE(unarchived("<filters><!-- -->").value(), EffectChain());
    }

    void onlyATextNamesTheFilter()
    {
        const QByteArray name = attr("string", "CIVignette", kFilterNameKey);
        QCOMPARE(unarchived(filters(name)).value(), EffectChain{EffectEntry(QStringLiteral("CIVignette"))});
        QCOMPARE(unarchived(filters(name + attr("number", "1", kFilterNameKey))).value(), EffectChain{EffectEntry()});
    }

    void effectSetsAreListedWithoutRegardToCase()
    {
        EffectSetStore store;
        for (const char *name : {"sepia", "Zebra", "Alps", "Sepia", "SEPIA 2", "beach"})
            store.insert(QString::fromLatin1(name), {});
        QCOMPARE(sortedEffectSetNames(store).join(u','), QStringLiteral("Alps,beach,Sepia,sepia,SEPIA 2,Zebra"));
    }
};

REGISTER_TEST(TestEffectChain)
#include "TestEffectChain.moc"
