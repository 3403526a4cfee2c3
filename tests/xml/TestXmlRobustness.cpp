#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "TestRunner.h"

#include <QRandomGenerator>
#include <QTest>

/// What the writer writes the reader reads, and nothing that a damaged file may hold brings the reader down.
class TestXmlRobustness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsComeBack();
    void readsMutatedDocumentsToAnEnd();
    void readsTruncatedDocumentsToAnEnd();
    void hostileTexts_data();
    void hostileTexts();
};

namespace {

/// Everything is asked for, so that views that point astray are noticed.
int countTags(QVXmlDecoder &decoder, qsizetype limit)
{
    int count = 0;
    qint64 sum = 0;
    for (; count <= limit && decoder.getNextTag(); ++count)
        sum += decoder.value().size() + decoder.xmlTag().size() + decoder.integerValue() % 2 +
               decoder.stringAttributeForTag(u"id").size() + decoder.decodeValue();
    return sum < 0 ? -1 : count;
}

QString document()
{
    QVXmlEncoder encoder;
    encoder.addAttribute("version", quint64(0));
    encoder.openTag("Photo");
    for (int i = 0; i < 4; ++i) {
        encoder.addAttribute("id", QStringLiteral("Ünïcode \"quoted\" & <odd> \U0001F4F7"));
        encoder.openTag("photo");
        encoder.addTag("caption", QStringLiteral("a & b &#x41; é"));
        encoder.addTag("thumb", 1'700'000'000);
        encoder.openAndCloseTag("filters");
        encoder.closeTag("photo");
    }
    encoder.closeTag("Photo");
    return encoder.xml();
}

}

void TestXmlRobustness::textsComeBack()
{
    QRandomGenerator random(11);
    const QString alphabet =
        QStringLiteral("& <>\"';\t\n\r/=!?-_xyzÄß€\u00a0\u2028\ufeff\uffff\U0001F4F7\u0001\u001f\u0085");
    for (int round = 0; round < 3000; ++round) {
        QString text(1, u'.'); // so that it is never empty, nor all white space
        for (int i = random.bounded(60); i > 0; --i) {
            const qsizetype at = random.bounded(alphabet.size());
            text += alphabet[at].isSurrogate() ? QStringView(u"\U0001F4F7") : QStringView(alphabet).sliced(at, 1);
        }
        QVXmlEncoder encoder;
        encoder.addAttribute("id", text);
        encoder.addTag("t", text);
        QVXmlDecoder decoder = *QVXmlDecoder::fromData(encoder.utf8());
        QVERIFY(decoder.getNextTag());
        text.removeIf(
            [](QChar c) { return c == QChar(1) || c == QChar(0x1f) || c == QChar(0x85) || c == QChar(0xffff); });
        QCOMPARE(decoder.value(), text);
        QCOMPARE(decoder.stringAttributeForTag(u"id"), text);
        QVERIFY(decoder.endTag() && !decoder.getNextTag() && decoder.error().isEmpty());
    }
}

void TestXmlRobustness::readsMutatedDocumentsToAnEnd()
{
    QRandomGenerator random(7);
    const QString valid = document();
    const QString pieces = QStringLiteral("<>/\"=&#x;!? \n_a1\u00a0é\U0001F4F7") + QChar(0) + QChar(0xd800);
    for (int round = 0; round < 6000; ++round) {
        QString text = valid;
        for (int i = 1 + random.bounded(6); i > 0; --i) {
            const qsizetype at = 5 + random.bounded(text.size() - 5);
            const qsizetype size = std::min<qsizetype>(random.bounded(4), text.size() - at);
            if (random.bounded(2) == 0)
                text.replace(at, size, pieces[random.bounded(pieces.size())]);
            else
                text.insert(at, QString(text.mid(random.bounded(text.size()), random.bounded(40))));
        }
        QVXmlDecoder decoder = *QVXmlDecoder::fromString(text);
        QVERIFY2(countTags(decoder, text.size()) <= text.size(), qPrintable(text));
    }
}

void TestXmlRobustness::readsTruncatedDocumentsToAnEnd()
{
    const QByteArray valid = document().toUtf8();
    int before = 0;
    for (qsizetype size = 5; size <= valid.size(); ++size) {
        // Of its own, so that a look behind the end is noticed by the sanitizer.
        const QByteArray cut(valid.constData(), size);
        auto decoder = QVXmlDecoder::fromData(cut);
        if (!decoder)
            continue; // cut within a character
        const int count = countTags(*decoder, size);
        QVERIFY2(count >= before, "more text, fewer tags");
        before = count;
    }
    QCOMPARE(before, 22);
}

void TestXmlRobustness::hostileTexts_data()
{
    QTest::addColumn<QString>("lead");
    QTest::addColumn<QString>("repeated");
    QTest::addColumn<QString>("end");
    QTest::addColumn<int>("tags");
    const auto row = [](const char *name, const char16_t *lead, const char16_t *repeated, const char16_t *end,
                        int tags) {
        QTest::newRow(name) << QString::fromUtf16(lead) << QString::fromUtf16(repeated) << QString::fromUtf16(end)
                            << tags;
    };
    constexpr int many = 1'000'000;
    row("open for ever", u"", u"<a>", u"\n", many - 1);
    row("brackets", u"", u"<", u"\n", 0);
    row("unfinished comments", u"", u"<!", u"\n", 0);
    row("comments between a tag and its end", u"<a>", u"<!>", u"</a>\n", 1);
    row("comments that hide a child", u"<a>", u"<!>", u"<b/></a>\n", 3);
    row("gigantic attribute", u"<a x=\"", u"&amp;lt;", u"\"/>\n", 1);
    row("gigantic reference", u"<a x=\"&#x", u"4", u";\"/>\n", 1);
    row("unfinished attribute", u"<a x=\"", u"&quot;", u"\n", 0);
    row("many attributes", u"<a", u" id=\"1\"", u"/>\n", 1);
    row("gigantic name", u"<", u"é", u"/>\n", 1);
    row("blanks in front", u"", u"\u00a0", u"<a/>\n", 1);
    row("blanks before an end", u"<a>", u" ", u"</a>\n", 1);
    row("text without end", u"<a>", u"t", u"\n", 0);
    row("leaves", u"", u"<a>1</b>", u"\n", many);
}

/// A reader that took more than linear time would not come to an end within the time limit of the tests.
void TestXmlRobustness::hostileTexts()
{
    QFETCH(QString, lead);
    QFETCH(QString, repeated);
    QFETCH(QString, end);
    const QString text = QStringLiteral("<?xml?>") + lead + repeated.repeated(1'000'000) + end;
    QVXmlDecoder decoder = *QVXmlDecoder::fromString(text);
    QTEST(countTags(decoder, text.size()), "tags");
}

REGISTER_TEST(TestXmlRobustness)
#include "TestXmlRobustness.moc"
