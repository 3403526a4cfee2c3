#include "CharacterClass.h"
#include "StringUtilities.h"
#include "TestRunner.h"

#include <QTest>

using QVString::Newlines;
using QVString::Punctuation;

class TestTextShaping : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void classes_data();
    void classes();
    void caseMapping_data();
    void caseMapping();
    void titleCase_data();
    void titleCase();
    void sortKeys_data();
    void sortKeys();
    void cleaning_data();
    void cleaning();
    void excerpts_data();
    void excerpts();
    void excerptOfHostilePositionsStaysInside();
    void quotes_data();
    void quotes();
};

void TestTextShaping::classes_data()
{
    QTest::addColumn<char16_t>("unit");
    QTest::addColumn<int>("type");
    const std::pair<int, std::u16string_view> rows[] = {
        {0, u"ªא中\xD83D\uE000½"},
        {1, u"AÀŽΩЖǅ"},
        {2, u"aßÿµωж"},
        {3, u"09٣"},
        {4, u" \t\n\r\u000B\u000C\u0085\u00A0\u2003\u2028\u2029\u3000"},
        {5, u"!'_+$^`«»“—€©♥"},
        {6, u"\u0001\u001B\u007F\u009F\u00AD\u200D\uFEFF"},
    };
    for (const auto &[type, units] : rows) {
        for (const char16_t unit : units)
            QTest::addRow("U+%04X", unsigned(unit)) << unit << type;
    }
    QTest::newRow("null") << u'\0' << 6;
}

void TestTextShaping::classes()
{
    QFETCH(char16_t, unit);
    QTEST(static_cast<int>(TypeOfChar(unit)), "type");
}

void TestTextShaping::caseMapping_data()
{
    QTest::addColumn<char16_t>("lower");
    QTest::addColumn<char16_t>("upper");
    QTest::addColumn<bool>("bothWays"); // else each stays as it is
    QTest::newRow("a") << u'a' << u'A' << true;
    QTest::newRow("z") << u'z' << u'Z' << true;
    QTest::newRow("first accented") << u'à' << u'À' << true;
    QTest::newRow("last accented") << u'þ' << u'Þ' << true;
    QTest::newRow("y with dots") << u'ÿ' << u'Ÿ' << true;
    QTest::newRow("Greek") << u'ω' << u'Ω' << true;
    QTest::newRow("signs 32 apart") << u'÷' << u'×' << false;
    QTest::newRow("brackets 32 apart") << u'{' << u'[' << false;
    QTest::newRow("sharp s and micro") << u'ß' << u'µ' << false;
    QTest::newRow("longer when mapped") << u'ŉ' << u'İ' << false;
}

void TestTextShaping::caseMapping()
{
    QFETCH(char16_t, lower);
    QFETCH(char16_t, upper);
    QFETCH(bool, bothWays);
    QCOMPARE(UpperCaseChar(lower), bothWays ? upper : lower);
    QCOMPARE(LowerCaseChar(upper), bothWays ? lower : upper);
    QCOMPARE(UpperCaseChar(upper), upper);
    QCOMPARE(LowerCaseChar(lower), lower);
}

void TestTextShaping::titleCase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    const auto row = [](const char *text, const char *title) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(title);
    };
    row("THE lord OF the rings", "The Lord of the Rings");
    row("a day in the life", "A Day in the Life");
    row("it's", "It's");
    row("ROCK 'N' ROLL", "Rock 'N' Roll");
    row("WE’LL SAY THEY'VE DON'T", "We’ll Say They've Don't");
    row("'s the one", "'s the One");
    row("rock-and-roll", "Rock-and-Roll");
    row("3RD of 2nd", "3rd of 2nd");
    row("élan À la carte", "Élan À La Carte");
    row("ßa", "ßa");
    row("...", "...");
    row("", "");
}

void TestTextShaping::titleCase()
{
    QFETCH(QString, text);
    QTEST(QVString::titleCaseString(text), "title");
}

void TestTextShaping::sortKeys_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key");
    const auto row = [](const char *text, const char *key) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(key);
    };
    row("The Lord of the Rings", "lord rings");
    row("A Tale, of Two Cities", "tale two cities");
    row("The", "The");
    row("The!  OF,", "The!  OF,");
    row("... --- ", "... --- ");
    row("  \"Quoted\" Words", "quoted words");
    row("Rock & Roll", "rock roll");
    row("O'Neil and the...", "oneil the");
    row("of-the Sea", "ofthe sea");
    row("tab\tand\vline", "tab line");
    row("", "");
}

void TestTextShaping::sortKeys()
{
    QFETCH(QString, text);
    QTEST(QVString::sortTitleString(text), "key");
}

void TestTextShaping::cleaning_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("oneLine");
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("linesWithoutMarks");
    const auto row = [](const char *tag, const char *text, const char *oneLine, const char *lines,
                        const char *withoutMarks) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(oneLine) << QString::fromUtf8(lines)
                           << QString::fromUtf8(withoutMarks);
    };
    row("a bit of all", " \tHello,\n\n world! ", "Hello,  world!", "Hello,\n world!", "Hello\n world");
    row("spaces merge", "a \t b", "a b", "a b", "a b");
    row("controls go", "a\a\u200Db", "ab", "ab", "ab");
    row("two-character line end", "a\r\nb", "a  b", "a\nb", "a\nb");
    row("Unicode line ends", "a\u2028\u0085b", "a  b", "a\nb", "a\nb");
    row("line end behind a space", "a \nb", "a  b", "a \nb", "a \nb");
    row("blank", "\u0001 \n", "", "", "");
    row("marks alone", "?!", "?!", "?!", "");
    row("empty", "", "", "", "");
}

void TestTextShaping::cleaning()
{
    QFETCH(QString, text);
    QTEST(QVString::cleanUp(text, Newlines::ToSpaces, Punctuation::Keep), "oneLine");
    QTEST(QVString::cleanUp(text, Newlines::Keep, Punctuation::Keep), "lines");
    const QString stripped = QVString::cleanUp(text, Newlines::Keep, Punctuation::Strip);
    QTEST(stripped, "linesWithoutMarks");
    QCOMPARE(stripped.isNull(), stripped.isEmpty());
}

void TestTextShaping::excerpts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key");
    QTest::addColumn<quint32>("maxLength");
    QTest::addColumn<QString>("excerpt");
    const auto row = [](const char *text, const char *key, quint32 maxLength, const char *excerpt) {
        QTest::newRow(excerpt) << QString::fromUtf8(text) << QString::fromUtf8(key) << maxLength
                               << QString::fromUtf8(excerpt);
    };
    row("one two three four", "three", 0, "two three four");
    row("one two three four", "hree", 0, "two three four");
    row("one\ntwo three\nfour", "three", 0, "two three");
    row("one two\nthree four", "three", 0, "three four");
    row("one  two   three", "three", 0, "two three");
    row("a key that is cut between words", "key", 15, "a key that is");
    row("a verylongkeyword", "verylongkeyword", 10, "a verylong");
    row("word key-and-more", "key", 10, "word key-a");
    row("tail", "", 0, "tail");
    row("a (b), key!", "key", 0, "(b), key!");
}

void TestTextShaping::excerpts()
{
    QFETCH(QString, text);
    QFETCH(QString, key);
    QFETCH(quint32, maxLength);
    const auto position = static_cast<quint32>(text.indexOf(key));
    QTEST(QVString::extract(text, position, static_cast<quint32>(key.size()), maxLength), "excerpt");
}

void TestTextShaping::excerptOfHostilePositionsStaysInside()
{
    const QString text = QStringLiteral("some, words");
    constexpr quint32 most = 0xFFFFFFFF;
    QCOMPARE(QVString::extract(text, most, most, most), QStringLiteral("some, words"));
    QCOMPARE(QVString::extract(text, 6, most, 5), QStringLiteral("some,"));
    QCOMPARE(QVString::extract(text, 0, 0, 0, Punctuation::Strip), QStringLiteral("some words"));
    QVERIFY(!QVString::extract(QStringLiteral("\nx")).isNull());
    const QString longText(300, QLatin1Char('x'));
    QCOMPARE(QVString::extract(longText).size(), 100);
}

void TestTextShaping::quotes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("curled");
    const auto row = [](const char *text, const char *curled) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(curled);
    };
    row("(\"x\" said 'y')", "(“x” said ‘y’)");
    row("the '90s and \"90s", "the ’90s and “90s");
    row("\t'90s", "\t‘90s");
    row("don't", "don’t");
    row("\"'nested'\"", "“‘nested’“");
    row("={'a'}<\"b\">", "={‘a’}<“b”>");
    row("none", "none");
}

void TestTextShaping::quotes()
{
    QFETCH(QString, text);
    QTEST(QVString::stringBySubstitutingQuotes(text, u' '), "curled");
    QCOMPARE(QVString::stringBySubstitutingQuotes(QStringLiteral("\""), u'x'), QStringLiteral("”"));
}

REGISTER_TEST(TestTextShaping)
#include "TestTextShaping.moc"
