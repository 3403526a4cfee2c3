#include "QVXmlDecoder.h"
#include "SystemLog.h"
#include "TestRunner.h"

#include <QTemporaryDir>
#include <QTest>

class TestQVXmlDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsTags_data();
    void readsTags();
    void syntaxErrors_data();
    void syntaxErrors();
    void staysAtTheEnd();
    void attributes();
    void attributeNamesBeyondAscii();
    void repeatedAttributesShareOneText();
    void integers_data();
    void integers();
    void escapes_data();
    void escapes();
    void namesBecomeNumbers();
    void valuesInLists();
    void skipsToTheLastClosingTagAndBack();
    void skipsToAnOpeningTag();
    void opensTexts_data();
    void opensTexts();
    void opensFiles_data();
    void opensFiles();
    void fileThatCannotBeRead();
    void copyOutlivesItsOrigin();
};

namespace {

/// Each tag as name:level, "/" when nothing of it follows, and "=value" when it has one.
QString trace(QVXmlDecoder &decoder)
{
    QStringList tags;
    while (decoder.getNextTag())
        tags += decoder.xmlTag() + u':' + QString::number(decoder.level()) +
                (decoder.endTag() ? QStringLiteral("/") : QString()) +
                (decoder.hasValue() ? QString(u'=' + decoder.value()) : QString());
    return tags.join(u' ');
}

QVXmlDecoder decoderFor(const QString &elements)
{
    return *QVXmlDecoder::fromString(QStringLiteral("<?xml?>") + elements);
}

}

void TestQVXmlDecoder::init()
{
    QVXmlDecoder::setKeyDecoder({{QStringLiteral("photo"), 24}, {QStringLiteral("group"), 16}});
}

void TestQVXmlDecoder::readsTags_data()
{
    QTest::addColumn<QString>("elements");
    QTest::addColumn<QString>("tags");
    const auto row = [](const char *name, const QString &elements, const QString &tags) {
        QTest::newRow(name) << elements << tags;
    };
    row("nothing", QStringLiteral(" \n"), QString());
    row("levels", QStringLiteral("<a>\n\t<b>\n\t\t<c>1</c>\n\t</b>\n\t<d>2</d>\n</a>\n"),
        QStringLiteral("a:1 b:2 c:2/=1 b:1/ d:1/=2 a:0/"));
    row("empty elements", QStringLiteral("<r><a></a><b/><c>\n\t\t</c><d x=\"1\"></d><e x=\"1\" y=\"2\" /></r>\n"),
        QStringLiteral("r:1 a:1/ b:1/ c:1/ d:1/=1 e:1/=2 r:0/"));
    row("attribute value stays as value", QStringLiteral("<a x=\"1\">\n<b/>\n</a>\n"),
        QStringLiteral("a:1=1 b:1/ a:0/"));
    row("text replaces it", QStringLiteral("<a x=\"1\">t</a>\n"), QStringLiteral("a:0/=t"));
    row("empty attribute", QStringLiteral("<a x=\"\"></a>\n"), QStringLiteral("a:0/="));
    row("leading blanks", QStringLiteral("<a>  word </a>\n"), QStringLiteral("a:0/=  word "));
    row("text before a child", QStringLiteral("<a>text<b/></a>\n"), QStringLiteral("a:1=text b:1/ a:0/"));
    row("unknown names close each other", QStringLiteral("<a></b><a>t</c>\n"), QStringLiteral("a:0/ a:0/=t"));
    row("known names do not", QStringLiteral("<photo></group><photo></photo>\n"),
        QStringLiteral("photo:1 group:0/ photo:0/"));
    row("unknown does not close known", QStringLiteral("<photo></b></photo>\n"),
        QStringLiteral("photo:1 b:0/ photo:-1/"));
    row("comments", QStringLiteral("<!DOCTYPE a><a><!-- c --></a><!-- d -->\n<b>t<!-- e --></b><!-- f -->\n"),
        QStringLiteral("a:0/ b:0/=t"));
    row("attributes without white space between", QStringLiteral("<a x=\"1\"y=\"2\"/>\n"), QStringLiteral("a:0/=2"));
    row("angle brackets in attributes", QStringLiteral("<a x=\"<b/>\"/>\n"), QStringLiteral("a:0/=<b/>"));
    row("white space in a tag", QStringLiteral("<a\n\tx=\"1\"\u00a0\u2028\n>\n</a>\n"), QStringLiteral("a:0/=1"));
    row("names beyond ASCII", QStringLiteral("<größe_1>\u00a0<Ж/></größe_1>\n"),
        QStringLiteral("größe_1:1 Ж:1/ größe_1:0/"));
    row("closing bracket is the last character", QStringLiteral("<a><b/></a>"), QStringLiteral("a:1 b:1/ a:1/"));
    row("closing bracket of a leaf is the last character", QStringLiteral("<a></a>"), QStringLiteral("a:0/"));
    row("last character beyond ASCII", QStringLiteral("<a><b/></a>\n\uffee"), QStringLiteral("a:1 b:1/ a:0/"));
    row("closed too often", QStringLiteral("</a></a>\n"), QStringLiteral("a:-1/ a:-2/"));
}

void TestQVXmlDecoder::readsTags()
{
    QFETCH(QString, elements);
    QVXmlDecoder decoder = decoderFor(elements);
    QTEST(trace(decoder), "tags");
    QCOMPARE(decoder.error(), QString());
}

void TestQVXmlDecoder::syntaxErrors_data()
{
    QTest::addColumn<QString>("elements");
    QTest::addColumn<QString>("tags");
    QTest::addColumn<int>("offset"); // behind the declaration
    const auto row = [](const char *name, const QString &elements, const QString &tags, int offset) {
        QTest::newRow(name) << elements << tags << offset;
    };
    row("text outside", QStringLiteral("<a/> x\n"), QStringLiteral("a:0/"), 5);
    row("bracket inside a comment", QStringLiteral("<!-- > --><a/>\n"), QString(), 7);
    row("comment without end", QStringLiteral("<a/><!-- \n"), QStringLiteral("a:0/"), 5);
    row("comment ends with the last character", QStringLiteral("<a/><!-- -->"), QStringLiteral("a:0/"), 5);
    row("no name", QStringLiteral("< a/>\n"), QString(), 1);
    row("no name to close", QStringLiteral("</>\n"), QString(), 2);
    row("hyphen in a name", QStringLiteral("<a-b/>\n"), QString(), 2);
    row("blank in a closing tag", QStringLiteral("<a><b/></a >\n"), QStringLiteral("a:1 b:1/ a:0/"), 11);
    row("no end of tag", QStringLiteral("<a\n"), QString(), 2);
    row("last character ends the tag", QStringLiteral("<a/>"), QString(), 3);
    row("slash alone", QStringLiteral("<a / >\n"), QString(), 4);
    row("single quotes", QStringLiteral("<a x='1'/>  \n"), QString(), 5);
    row("blank before the equals sign", QStringLiteral("<a x =\"1\"/>\n"), QString(), 4);
    row("blank behind the equals sign", QStringLiteral("<a x= \"1\"/>\n"), QString(), 5);
    row("attribute without value", QStringLiteral("<a x/>    \n"), QString(), 4);
    row("digit before an attribute", QStringLiteral("<a 1x=\"1\"/>\n"), QString(), 3);
    row("underscore in an attribute", QStringLiteral("<a x_y=\"1\"/>\n"), QString(), 4);
    row("no closing quote", QStringLiteral("<a x=\"1/></a>\n"), QString(), 5);
    row("closing quote is examined last", QStringLiteral("<a x=\"12345\">"), QString(), 5);
    row("equals sign among the last four", QStringLiteral("<a x=\"\">\n"), QString(), 4);
    row("text without end", QStringLiteral("<a>text\n"), QString(), 3);
    row("nothing behind an opening tag", QStringLiteral("<a>\n"), QString(), 3);
    row("offsets count UTF-16 units", QStringLiteral("<a x=\"é\u2028\U0001F4F7\"/>x\n"),
        QStringLiteral("a:0/=é\u2028\U0001F4F7"), 13);
    row("last character is a pair", QStringLiteral("<a/>\U0001F4F7"), QStringLiteral("a:0/"), 4);
}

void TestQVXmlDecoder::syntaxErrors()
{
    QFETCH(QString, elements);
    QFETCH(int, offset);
    QVXmlDecoder decoder = decoderFor(elements);
    QTEST(trace(decoder), "tags");
    QCOMPARE(decoder.error(),
             QStringLiteral("this is not a valid XML file (offset 0x%1)").arg(QString::number(7 + offset, 16)));
}

void TestQVXmlDecoder::staysAtTheEnd()
{
    QVXmlDecoder faulty = decoderFor(QStringLiteral("<a/>x<b/>\n"));
    QCOMPARE(trace(faulty), QStringLiteral("a:0/"));
    const QString error = faulty.error();
    QVERIFY(!faulty.getNextTag());
    QCOMPARE(faulty.error(), error);

    QVXmlDecoder undeclared = *QVXmlDecoder::fromString(QStringLiteral("<?xml >\n<a/>\n"));
    QVERIFY(!undeclared.getNextTag());
    QVERIFY(undeclared.error().endsWith(QStringLiteral("0x0)")));
    QVERIFY(!undeclared.getNextTag());
}

void TestQVXmlDecoder::attributes()
{
    QVXmlDecoder decoder = decoderFor(QStringLiteral("<a id=\"x &lt; y\" n=\"-12\" empty=\"\" n=\"13\"><b/></a>\n"));
    QVERIFY(decoder.getNextTag());
    QCOMPARE(decoder.stringAttributeForTag(u"id"), QStringLiteral("x < y"));
    QCOMPARE(decoder.integerAttributeForTag(u"n"), 13);
    QVERIFY(!decoder.stringAttributeForTag(u"empty").isNull());
    QCOMPARE(decoder.stringAttributeForTag(u"empty"), QStringLiteral(""));
    QVERIFY(decoder.stringAttributeForTag(u"i").isNull());
    QVERIFY(decoder.stringAttributeForTag(u"idx").isNull());
    QCOMPARE(decoder.integerAttributeForTag(u"absent"), 0);
    QCOMPARE(decoder.integerValue(), 13);
    QVERIFY(decoder.getNextTag());
    QVERIFY(decoder.stringAttributeForTag(u"id").isNull());
    QVERIFY(!decoder.hasValue());
    QVERIFY(decoder.value().isNull());
}

void TestQVXmlDecoder::attributeNamesBeyondAscii()
{
    QVXmlDecoder decoder = decoderFor(QStringLiteral("<a größe=\"1\" grö=\"2\"/>\n"));
    QVERIFY(decoder.getNextTag());
    QCOMPARE(decoder.integerAttributeForTag(u"größe"), 1);
    QCOMPARE(decoder.integerAttributeForTag(u"grö"), 2);
    QVERIFY(decoder.stringAttributeForTag(u"gr").isNull());
    QVERIFY(decoder.stringAttributeForTag(u"grÃ¶").isNull());
}

void TestQVXmlDecoder::repeatedAttributesShareOneText()
{
    // The first three are as long as each other and end alike.
    const QStringList values{QStringLiteral("number"), QStringLiteral("member"), QStringLiteral("number"),
                             QStringLiteral("number"), QStringLiteral("a & b"),  QStringLiteral("")};
    QString elements;
    for (const QString &value : values)
        elements += QStringLiteral("<a t=\"%1\"/>").arg(QString(value).replace(u'&', QStringLiteral("&amp;")));
    QVXmlDecoder decoder = decoderFor(elements + QStringLiteral("<a/>\n"));
    QStringList read;
    while (decoder.getNextTag())
        read += decoder.repeatedAttributeForTag(u"t");
    QVERIFY(read.last().isNull());
    read.removeLast();
    QCOMPARE(read, values);
    QVERIFY(!read.last().isNull());
    QCOMPARE(read[3].constData(), read[2].constData());
}

void TestQVXmlDecoder::integers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("number");
    QTest::newRow("plain") << QStringLiteral("42") << qint64(42);
    QTest::newRow("white space and sign") << QStringLiteral(" \n\u00a0-7 8") << qint64(-7);
    QTest::newRow("plus") << QStringLiteral("+7x") << qint64(7);
    QTest::newRow("sign alone") << QStringLiteral("-") << qint64(0);
    QTest::newRow("two signs") << QStringLiteral("--1") << qint64(0);
    QTest::newRow("word") << QStringLiteral("x1") << qint64(0);
    QTest::newRow("largest") << QStringLiteral("9223372036854775807") << std::numeric_limits<qint64>::max();
    QTest::newRow("too large") << QStringLiteral("9223372036854775808") << std::numeric_limits<qint64>::max();
    QTest::newRow("least") << QStringLiteral("-9223372036854775808") << std::numeric_limits<qint64>::min();
    QTest::newRow("far too small") << QString(QStringLiteral("-1") + QString(99, u'0'))
                                   << std::numeric_limits<qint64>::min();
    QTest::newRow("escaped") << QStringLiteral("&#x31;2") << qint64(12);
}

void TestQVXmlDecoder::integers()
{
    QFETCH(QString, text);
    QFETCH(qint64, number);
    QVXmlDecoder decoder =
        decoderFor(QStringLiteral("<a n=\"") + text + QStringLiteral("\">") + text + QStringLiteral("</a>\n"));
    QVERIFY(decoder.getNextTag());
    QCOMPARE(decoder.integerValue(), number);
    QCOMPARE(decoder.integerAttributeForTag(u"n"), number);
}

void TestQVXmlDecoder::escapes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("decoded");
    const auto row = [](const char *name, const QString &text, const QString &decoded) {
        QTest::newRow(name) << text << decoded;
    };
    row("all names", QStringLiteral("&lt;&gt;&amp;&apos;&quot;&nbsp;|"), QStringLiteral("<>&'\" |"));
    row("none", QStringLiteral("a; b#x41;"), QStringLiteral("a; b#x41;"));
    row("unknown and unfinished", QStringLiteral("&uuml; & &am &lt &#65; &LT; &"),
        QStringLiteral("&uuml; & &am &lt &#65; &LT; &"));
    row("decoded twice", QStringLiteral("&amp;lt;&amp;quot;&amp;#x41;"), QStringLiteral("<\"A"));
    row("but not the ampersand", QStringLiteral("&amp;amp;lt;"), QStringLiteral("&amp;lt;"));
    row("ampersands in a row", QStringLiteral("&&amp;&&lt;&"), QStringLiteral("&&&<&"));
    row("hexadecimal", QStringLiteral("x&#x41;&#x20ac;&#x1F600;y"), QStringLiteral("xA\u20ac\uF600y"));
    row("hexadecimal is not decoded again", QStringLiteral("&#x26;lt;&#x26;#x41;"), QStringLiteral("&lt;&#x41;"));
    row("every other character is a digit", QStringLiteral("&#xG;&#x-1;"), QString(QChar(0x10) + QChar(0xff61)));
    row("entities within a reference", QStringLiteral("&#x4&lt;;"), QString(QChar(0x40 + u'<' - 55)));
    row("reference without digits", QStringLiteral("a&#x;b"), QString(QStringLiteral("a") + QChar(0) + u'b'));
    row("reference without end", QStringLiteral("a&#x41"), QStringLiteral("aA"));
    row("bare start of a reference", QStringLiteral("a&#x"), QString(QStringLiteral("a") + QChar(0)));
    row("pair from two references", QStringLiteral("&#xd83d;&#xdcf7;"), QStringLiteral("\U0001F4F7"));
}

void TestQVXmlDecoder::escapes()
{
    QFETCH(QString, text);
    QFETCH(QString, decoded);
    QCOMPARE(QVXmlDecoder::decodeEscapes(text), decoded);
    QVXmlDecoder decoder =
        decoderFor(QStringLiteral("<a x=\"") + QString(text).replace(u'"', QString()) + QStringLiteral("\"/>\n"));
    QVERIFY(decoder.getNextTag());
    QCOMPARE(decoder.stringAttributeForTag(u"x"), decoded);
    QCOMPARE(decoder.value(), decoded);
}

void TestQVXmlDecoder::namesBecomeNumbers()
{
    QVXmlDecoder::addDecoderKey(7, QStringLiteral("größe"));
    for (int i = 100; i < 400; ++i)
        QVXmlDecoder::addDecoderKey(i, QStringLiteral("tag%1").arg(i));
    QVXmlDecoder::addDecoderKey(8, QStringLiteral("tag100"));
    QVXmlDecoder decoder =
        decoderFor(QStringLiteral("<group/><Group/><größe/><tag399/><tag100/><tag/><x>photo</x><x>no</x>\n"));
    QList<int> keys;
    while (decoder.getNextTag())
        keys += decoder.hasValue() ? decoder.decodeValue() : decoder.key();
    QCOMPARE(keys, QList<int>({16, 0, 7, 399, 8, 0, 24, 0}));

    QVXmlDecoder::setKeyDecoder({});
    QVXmlDecoder without = decoderFor(QStringLiteral("<group/>\n"));
    QVERIFY(without.getNextTag());
    QCOMPARE(without.key(), 0);
}

void TestQVXmlDecoder::valuesInLists()
{
    const QStringList types{QStringLiteral("normal"), QStringLiteral("search"), QStringLiteral(""),
                            QStringLiteral("search")};
    QCOMPARE(QVXmlDecoder::decodeValue(QStringLiteral("search"), types), 1);
    QCOMPARE(QVXmlDecoder::decodeValue(QStringLiteral("Search"), types), 0);
    QCOMPARE(QVXmlDecoder::decodeValue(QStringLiteral(""), types), 2);
    QCOMPARE(QVXmlDecoder::decodeValue(QString(), types), 0);
    QCOMPARE(QVXmlDecoder::decodeValue(QStringLiteral("search"), {}), 0);
    QVXmlDecoder decoder = decoderFor(QStringLiteral("<a t=\"search\">\n<b/></a>\n"));
    QVERIFY(decoder.getNextTag());
    QCOMPARE(decoder.decodeValueFromValues(types), 1);
    QCOMPARE(decoder.decodeAttribute(u"t", types), 1);
    QCOMPARE(decoder.decodeAttribute(u"absent", types), 0);
}

void TestQVXmlDecoder::skipsToTheLastClosingTagAndBack()
{
    QVXmlDecoder decoder = decoderFor(QStringLiteral("<r><a><b/></a><a><c/></a><d/></r>\n"));
    QVERIFY(decoder.getNextTag() && decoder.getNextTag());
    const QVXmlDecoder::Bookmark bookmark = decoder.skipTag();
    QCOMPARE(decoder.xmlTag(), QStringLiteral("a"));
    QVERIFY(decoder.endTag());
    QCOMPARE(decoder.level(), 1);
    QCOMPARE(trace(decoder), QStringLiteral("d:1/ r:0/"));
    decoder.unskipTag(bookmark);
    QCOMPARE(decoder.level(), 2);
    QCOMPARE(trace(decoder), QStringLiteral("b:2/ a:1/ a:2 c:2/ a:1/ d:1/ r:0/"));

    QVXmlDecoder unclosed = decoderFor(QStringLiteral("<a><b/><c/>\n"));
    QVERIFY(unclosed.getNextTag());
    unclosed.skipTag();
    QVERIFY(!unclosed.getNextTag());
    QCOMPARE(unclosed.error(), QString());
}

void TestQVXmlDecoder::skipsToAnOpeningTag()
{
    QVXmlDecoder decoder = decoderFor(QStringLiteral("<r><group x=\"1\"><group><b/></group></group></r>\n"));
    QVERIFY(decoder.getNextTag());
    QVERIFY(!decoder.skipToTag(QStringLiteral("nowhere")));
    QVERIFY(decoder.skipToTag(QStringLiteral("group")));
    QCOMPARE(decoder.key(), 16);
    QCOMPARE(decoder.xmlTag(), QStringLiteral("group"));
    QCOMPARE(decoder.level(), 2);
    QVERIFY(!decoder.endTag() && !decoder.hasValue() && decoder.stringAttributeForTag(u"x").isNull());
    QCOMPARE(trace(decoder), QStringLiteral("b:2/ group:1/ group:0/ r:-1/"));
    QVERIFY(!decoder.skipToTag(QStringLiteral("r")));

    QVXmlDecoder oneBehind = decoderFor(QStringLiteral("<r/><a>t</a>\n"));
    QVERIFY(oneBehind.getNextTag());
    QVERIFY2(!oneBehind.skipToTag(QStringLiteral("a")), "the search begins one past the reading position");
}

void TestQVXmlDecoder::opensTexts_data()
{
    QTest::addColumn<QByteArray>("utf8");
    QTest::addColumn<bool>("opens");
    QTest::addColumn<bool>("logs");
    QTest::newRow("xml") << QByteArray("<?xml?>\n<a/>\n") << true << false;
    QTest::newRow("beginning alone") << QByteArray("<?xml") << true << false;
    QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbf<?xml?><a/>\n") << true << false;
    QTest::newRow("blank first") << QByteArray(" <?xml?>\n") << false << true;
    QTest::newRow("empty") << QByteArray() << false << true;
    QTest::newRow("no xml") << QByteArray("bplist00") << false << true;
    QTest::newRow("Latin-1") << QByteArray("<?xml?>\n<a>K\xf6ln</a>\n") << false << false;
    QTest::newRow("cut within a character") << QByteArray("<?xml?>\n<a/>\xc3") << false << false;
    QTest::newRow("encoded surrogate") << QByteArray("<?xml?>\n<a>\xed\xa0\x80</a>\n") << false << false;
}

void TestQVXmlDecoder::opensTexts()
{
    QFETCH(QByteArray, utf8);
    QFETCH(bool, logs);
    QStringList log;
    SystemLog::setSink([&log](const QString &line) { log += line; });
    const auto decoder = QVXmlDecoder::fromData(utf8);
    SystemLog::setSink({});
    QTEST(decoder.has_value(), "opens");
    QCOMPARE(log, logs ? QStringList(QStringLiteral("Unknown xml format")) : QStringList());
}

void TestQVXmlDecoder::opensFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("opens");
    QTest::addColumn<bool>("hasReason");
    QTest::newRow("library") << QByteArray("<?xml?>\n<a>Köln</a>\n") << true << false;
    QTest::newRow("with byte-order mark") << QByteArray("\xef\xbb\xbf<?xml?>\n<a>Köln</a>\n") << true << false;
    QTest::newRow("not xml") << QByteArray("hello") << false << false;
    QTest::newRow("empty") << QByteArray() << false << false;
    QTest::newRow("not text") << QByteArray("<?xml?>\n\xff\xfe") << false << true;
}

void TestQVXmlDecoder::opensFiles()
{
    QFETCH(QByteArray, content);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Photo ü.xml"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    QString error = QStringLiteral("left over");
    auto decoder = QVXmlDecoder::fromFile(path, &error);
    QTEST(decoder.has_value(), "opens");
    QTEST(!error.isEmpty(), "hasReason");
    if (decoder)
        QCOMPARE(trace(*decoder), QStringLiteral("a:0/=Köln"));
}

void TestQVXmlDecoder::fileThatCannotBeRead()
{
    QTemporaryDir folder;
    for (const QString &path : {folder.path(), folder.filePath(QStringLiteral("missing.xml"))}) {
        QString error;
        QVERIFY(!QVXmlDecoder::fromFile(path, &error));
        QVERIFY2(!error.isEmpty(), qPrintable(path));
    }
}

void TestQVXmlDecoder::copyOutlivesItsOrigin()
{
    auto origin = std::make_unique<QVXmlDecoder>(decoderFor(QStringLiteral("<a id=\"1\">text</a><b/>\n")));
    QVERIFY(origin->getNextTag());
    QVXmlDecoder copy = *origin;
    origin.reset();
    QCOMPARE(copy.value(), QStringLiteral("text"));
    QCOMPARE(copy.stringAttributeForTag(u"id"), QStringLiteral("1"));
    QCOMPARE(trace(copy), QStringLiteral("b:0/"));
}

REGISTER_TEST(TestQVXmlDecoder)
#include "TestQVXmlDecoder.moc"
