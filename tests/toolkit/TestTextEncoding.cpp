#include "Base64.h"
#include "StringUtilities.h"
#include "TestRunner.h"

#include <QTest>

using QVString::Encoding;

class TestTextEncoding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unknownBytes_data();
    void unknownBytes();
    void base64Lines_data();
    void base64Lines();
    void base64Reading_data();
    void base64Reading();
};

void TestTextEncoding::unknownBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::addColumn<Encoding>("encoding");
    const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
    QTest::newRow("UTF-8") << QByteArray("caf\xC3\xA9") << QStringLiteral("café") << Encoding::Utf8;
    QTest::newRow("UTF-8 with mark") << hex("efbbbf61") << QStringLiteral("a") << Encoding::Utf8;
    QTest::newRow("UTF-8 cut short") << hex("61e282") << QStringLiteral("a‚Ç") << Encoding::MacRoman;
    QTest::newRow("little-endian") << hex("fffe6100e900") << QStringLiteral("aé") << Encoding::Utf16LE;
    QTest::newRow("big-endian") << hex("feff006100e9") << QStringLiteral("aé") << Encoding::Utf16BE;
    QTest::newRow("little-endian, broken") << hex("fffe6100d8") << QStringLiteral("a\uFFFD") << Encoding::Utf16LE;
    QTest::newRow("mark alone") << hex("feff") << QString() << Encoding::Utf16BE;
    QTest::newRow("Mac OS Roman") << hex("808ea5cadadbdef0ff") << QStringLiteral("Äé•\u00A0⁄€ﬁ\uF8FFˇ")
                                  << Encoding::MacRoman;
    QTest::newRow("nothing") << QByteArray() << QString() << Encoding::Utf8;
}

void TestTextEncoding::unknownBytes()
{
    QFETCH(QByteArray, bytes);
    const auto decoded = QVString::textFromDataInUnknownFormat(bytes);
    QVERIFY(decoded.has_value());
    QTEST(decoded->text, "text");
    QTEST(decoded->encoding, "encoding");
}

void TestTextEncoding::base64Lines_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("lineFeeds");
    QTest::newRow("empty") << 0 << 0;
    QTest::newRow("short") << 1 << 0;
    QTest::newRow("one less than a line") << 54 << 0;
    QTest::newRow("a whole line") << 57 << 1;
    QTest::newRow("one more") << 58 << 1;
    QTest::newRow("ten lines") << 570 << 10;
}

void TestTextEncoding::base64Lines()
{
    QFETCH(int, length);
    QByteArray bytes;
    for (int i = 0; i < length; ++i)
        bytes.append(static_cast<char>(i * 37 + 200));
    const QString text = NewBase64StringFromData(bytes);
    QTEST(static_cast<int>(text.count(QLatin1Char('\n'))), "lineFeeds");
    for (const QString &line : text.split(QLatin1Char('\n')))
        QVERIFY(line.size() <= 76);
    QCOMPARE(QByteArray::fromBase64(text.toLatin1()), bytes); // another decoder agrees
    QCOMPARE(NewDataFromBase64String(text), bytes);
}

void TestTextEncoding::base64Reading_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("reads");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("padded") << QStringLiteral("aGk=") << true << QByteArray("hi");
    QTest::newRow("without padding") << QStringLiteral("aGk") << true << QByteArray("hi");
    QTest::newRow("line ends anywhere") << QStringLiteral("\r\na\nGk\r=") << true << QByteArray("hi");
    QTest::newRow("strange after the end") << QStringLiteral("aGk=?!") << true << QByteArray("hi");
    QTest::newRow("both special digits") << QStringLiteral("+/+/") << true << QByteArray::fromHex("fbffbf");
    QTest::newRow("blank") << QStringLiteral("aG k=") << false << QByteArray();
    QTest::newRow("beyond ASCII") << QStringLiteral("aGkš") << false << QByteArray();
    QTest::newRow("empty") << QString() << true << QByteArray();
}

void TestTextEncoding::base64Reading()
{
    QFETCH(QString, text);
    const auto bytes = NewDataFromBase64String(text);
    QTEST(bytes.has_value(), "reads");
    QTEST(bytes.value_or(QByteArray()), "bytes");
}

REGISTER_TEST(TestTextEncoding)
#include "TestTextEncoding.moc"
