#include "QVXmlEncoder.h"
#include "TestRunner.h"

#include <QTest>

class TestQVXmlEncoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layoutOfADocument();
    void encodesText_data();
    void encodesText();
    void encodesLongTexts_data();
    void encodesLongTexts();
    void numbers();
    void attributesGoToTheNextTagOnly();
    void absentTextLeavesTheElementOpen();
    void insertsAtTheSavedPoint();
    void insertionWithoutAPointOrTwiceAtOnceDoesNothing();
    void insertsTwiceAtTheSamePlace();
    void tooManyClosingTagsDoNoHarm();
    void textHandedOutIsNotChangedLater();
};

namespace {

const QByteArray declaration("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");

QByteArray body(const QVXmlEncoder &encoder)
{
    return encoder.utf8().startsWith(declaration) ? encoder.utf8().sliced(declaration.size()) : QByteArray();
}

}

void TestQVXmlEncoder::layoutOfADocument()
{
    QVXmlEncoder encoder;
    QCOMPARE(encoder.utf8(), declaration);
    encoder.addAttribute("version", quint64(0));
    encoder.openTag("Photo");
    encoder.openTag("files");
    encoder.addAttribute("seq", 3);
    encoder.addAttribute("id", u"A");
    encoder.openAndCloseTag("ref");
    encoder.addTag("caption", u"Köln");
    encoder.addTag("keys", u"");
    encoder.closeTag("files");
    encoder.addAttribute("seq", 4);
    encoder.openTag("group");
    encoder.closeTag("group");
    encoder.closeTag("Photo");
    QCOMPARE(body(encoder), QByteArray("<Photo version=\"0\">\n"
                                       "\t<files>\n"
                                       "\t\t<ref seq=\"3\" id=\"A\"></ref>\n"
                                       "\t\t<caption>Köln</caption>\n"
                                       "\t\t<keys></keys>\n"
                                       "\t</files>\n"
                                       "\t<group seq=\"4\"></group>\n"
                                       "</Photo>\n"));
    QCOMPARE(encoder.level(), quint64(0));
}

void TestQVXmlEncoder::encodesText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoded");
    QTest::newRow("entities") << QStringLiteral("<a href=\"x\">&amp;'")
                              << QStringLiteral("&lt;a href=&quot;x&quot;&gt;&amp;amp;'");
    QTest::newRow("control characters") << QStringLiteral("a\u0001b\u0000c\u001fd\u007fe\u0085f\u009fg\u00a0h")
                                        << QStringLiteral("abcdefg\u00a0h");
    QTest::newRow("white space") << QStringLiteral("\t a\r\nb ") << QStringLiteral("\t a\r\nb ");
    QTest::newRow("only control characters") << QStringLiteral("\u0001\u0002") << QString();
    QTest::newRow("every length of UTF-8") << QStringLiteral("a\u07ff\u0800\uffee\U0001F4F7\U0010FFFD")
                                           << QStringLiteral("a\u07ff\u0800\uffee\U0001F4F7\U0010FFFD");
    QTest::newRow("joiners stay") << QStringLiteral("\U0001F468\u200D\U0001F469")
                                  << QStringLiteral("\U0001F468\u200D\U0001F469");
    const QString high(QChar(0xd83d)), low(QChar(0xdcf7)), replaced(QChar::ReplacementCharacter);
    QTest::newRow("codes that no document may hold")
        << QStringLiteral("a\uFFFEb\uFFFFc\uFFFD") << QStringLiteral("abc\uFFFD");
    QTest::newRow("high surrogate alone") << QString(high + u'a') << QString(replaced + u'a');
    QTest::newRow("high surrogate at the end") << high << replaced;
    QTest::newRow("surrogates in the wrong order") << QString(low + high) << QString(replaced + replaced);
    for (int place = 0; place < 33; ++place) {
        const QString before(place, u'x');
        QTest::addRow("one of many, at %d", place)
            << QString(before + u'<' + QString(33 - place, u'y'))
            << QString(before + QStringLiteral("&lt;") + QString(33 - place, u'y'));
    }
}

void TestQVXmlEncoder::encodesText()
{
    QFETCH(QString, text);
    QFETCH(QString, encoded);
    QCOMPARE(QVXmlEncoder::createEncodedValue(text), encoded);
    QVXmlEncoder encoder;
    encoder.addAttribute("id", text);
    encoder.addTag("t", text);
    QCOMPARE(body(encoder), QByteArray("<t id=\"" + encoded.toUtf8() + "\">" + encoded.toUtf8() + "</t>\n"));
}

void TestQVXmlEncoder::encodesLongTexts_data()
{
    QTest::addColumn<int>("lead");
    for (int lead : {4080, 4094, 4095, 4096, 4097})
        QTest::addRow("%d", lead) << lead;
}

/// Pairs and entities wherever the slices of the encoder may meet.
void TestQVXmlEncoder::encodesLongTexts()
{
    QFETCH(int, lead);
    const QString camera = QStringLiteral("\U0001F4F7");
    const QString text = QString(lead, u'a') + camera.repeated(5000) + QString(9000, u'&');
    const QString expected = QString(lead, u'a') + camera.repeated(5000) + QStringLiteral("&amp;").repeated(9000);
    QVERIFY(QVXmlEncoder::createEncodedValue(text) == expected);
}

void TestQVXmlEncoder::numbers()
{
    QVXmlEncoder encoder;
    encoder.addAttribute("none", kNotFound);
    encoder.addAttribute("cut", quint64(0x1'8000'0000));
    encoder.addTag("short", quint64(1) << 32);
    encoder.addTagWithLongNumber("long", qint64(1) << 32);
    encoder.addTagWithLongNumber("least", std::numeric_limits<qint64>::min());
    QCOMPARE(body(encoder), QByteArray("<short none=\"-1\" cut=\"-2147483648\">0</short>\n"
                                       "<long>4294967296</long>\n"
                                       "<least>-9223372036854775808</least>\n"));
}

void TestQVXmlEncoder::attributesGoToTheNextTagOnly()
{
    QVXmlEncoder encoder;
    encoder.addAttribute("empty", u"");
    encoder.addAttribute("absent", QString());
    encoder.openTag("a");
    encoder.addAttribute("id", u"1");
    encoder.addTag("b", 2);
    encoder.openTag("c");
    QCOMPARE(body(encoder), QByteArray("<a>\n\t<b id=\"1\">2</b>\n\t<c>\n"));
}

void TestQVXmlEncoder::absentTextLeavesTheElementOpen()
{
    QVXmlEncoder encoder;
    encoder.addTag("a", QString());
    encoder.closeTag("a");
    QCOMPARE(body(encoder), QByteArray("<a>\n</a>\n"));
}

void TestQVXmlEncoder::insertsAtTheSavedPoint()
{
    QVXmlEncoder encoder;
    encoder.openTag("a");
    encoder.addTag("first", 1);
    encoder.saveInsertionPoint();
    encoder.openTag("later");
    encoder.addTag("b", 2);
    encoder.beginInsertion();
    QCOMPARE(encoder.level(), quint64(1));
    encoder.openTag("inserted");
    encoder.addTag("c", 3);
    encoder.closeTag("inserted");
    encoder.endInsertion();
    QCOMPARE(encoder.level(), quint64(2));
    encoder.closeTag("later");
    encoder.closeTag("a");
    QCOMPARE(body(encoder), QByteArray("<a>\n"
                                       "\t<first>1</first>\n"
                                       "\t<inserted>\n"
                                       "\t\t<c>3</c>\n"
                                       "\t</inserted>\n"
                                       "\t<later>\n"
                                       "\t\t<b>2</b>\n"
                                       "\t</later>\n"
                                       "</a>\n"));
}

void TestQVXmlEncoder::insertionWithoutAPointOrTwiceAtOnceDoesNothing()
{
    QVXmlEncoder encoder;
    encoder.openTag("a");
    encoder.beginInsertion();
    encoder.endInsertion();
    encoder.addTag("b", 1);
    QCOMPARE(body(encoder), QByteArray("<a>\n\t<b>1</b>\n"));

    encoder.saveInsertionPoint();
    encoder.addTag("tail", 1);
    encoder.beginInsertion();
    encoder.addTag("c", 1);
    encoder.beginInsertion();
    encoder.addTag("d", 1);
    encoder.endInsertion();
    QCOMPARE(body(encoder), QByteArray("<a>\n\t<b>1</b>\n\t<c>1</c>\n\t<d>1</d>\n\t<tail>1</tail>\n"));
    encoder.endInsertion();
    QCOMPARE(encoder.level(), quint64(1));
}

void TestQVXmlEncoder::insertsTwiceAtTheSamePlace()
{
    QVXmlEncoder encoder;
    encoder.saveInsertionPoint();
    for (const char *name : {"a", "b"}) {
        encoder.beginInsertion();
        encoder.addTag(name, 1);
        encoder.endInsertion();
    }
    QCOMPARE(body(encoder), QByteArray("<b>1</b>\n<a>1</a>\n"));
}

void TestQVXmlEncoder::tooManyClosingTagsDoNoHarm()
{
    QVXmlEncoder encoder;
    encoder.closeTag("a");
    QCOMPARE(encoder.level(), std::numeric_limits<quint64>::max());
    encoder.openTag("b");
    QCOMPARE(body(encoder), QByteArray("</a>\n<b>\n"));
}

void TestQVXmlEncoder::textHandedOutIsNotChangedLater()
{
    QVXmlEncoder encoder(1 << 16);
    encoder.openTag("a");
    const QByteArray before = encoder.utf8();
    encoder.addTag("b", QString(1000, u'&'));
    QCOMPARE(before, QByteArray(declaration + "<a>\n"));
    QVERIFY(encoder.utf8().endsWith("&amp;</b>\n"));
}

REGISTER_TEST(TestQVXmlEncoder)
#include "TestQVXmlEncoder.moc"
