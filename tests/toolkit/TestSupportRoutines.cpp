#include "AlertPresenter.h"
#include "Collections.h"
#include "DynamicArray.h"
#include "FormatMessage.h"
#include "GeometryText.h"
#include "GiveAlert.h"
#include "LogString.h"
#include "NotFound.h"
#include "SystemLog.h"
#include "TestRunner.h"
#include "TextForPeople.h"
#include "Toolkit.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <thread>

/// Answers every alert with one button and remembers what it was asked.
class AnsweringPresenter final : public AlertPresenter
{
public:
    int present(const Alert &alert) override
    {
        last = alert;
        nesting = alertNesting();
        return answer;
    }
    void beep() override { ++beeps; }

    Alert last;
    int answer = 0;
    int nesting = 0;
    int beeps = 0;
};

class TestSupportRoutines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void messages_data();
    void messages();
    void logLinesAreFilledOnce();
    void alertWithoutButtonsHidesCancel();
    void alertWithButtonsAnswersEscapeWithCancel();
    void arrayRefusesOddEntries_data();
    void arrayRefusesOddEntries();
    void arrayGrowsByAQuarter();
    void arrayMovesEntriesAndZeroesMissingOnes();
    void fileSizes_data();
    void fileSizes();
    void countsAgreeWithTheirNouns();
    void reasons_data();
    void reasons();
    void geometryReadsBackExactly_data();
    void geometryReadsBackExactly();
    void malformedGeometryReadsAsZero_data();
    void malformedGeometryReadsAsZero();
    void versions_data();
    void versions();
    void threadStorageIsPrivateAndZero();
    void sortedArraySearch_data();
    void sortedArraySearch();
};

void TestSupportRoutines::messages_data()
{
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *format, const QList<MessageArgument> &arguments, const char *expected) {
        QTest::newRow(format) << FormatMessage(QString::fromUtf8(format), arguments) << QString::fromUtf8(expected);
    };
    const QString hostile = QStringLiteral("%d %@ 100%");
    row("I can't rename \"%@\" to \"%@\".", {hostile, QStringLiteral("b")}, "I can't rename \"%d %@ 100%\" to \"b\".");
    row("%@ of %d", {3, -4}, "3 of -4");
    row("%d", {kNotFound}, "9223372036854775807");
    row("%02d:%02d|%4d|%04d|%3d", {7, 123, 5, -5, 1234}, "07:123|   5|-005|1234");
    row("%x %04x %x %X", {255, 10, -1, 171}, "ff 000a ffffffff AB");
    row("%s|%5s|%-4s|%.2s", {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("défg")},
        "a|    b|c   |dé");
    row("%.2f %g %qd %lu %i %d", {1.005e3, 0.5, 7, 8, -9, 2.5}, "1005.00 0.5 7 8 -9 2.5");
    row("100%% %@ %d", {QStringLiteral("x")}, "100% x (null)");
    row("%q %", {1}, "%q %");
    row("%99999999999999d", {1}, "%99999999999999d");
    row("unused", {1, 2}, "unused");
}

void TestSupportRoutines::messages()
{
    QFETCH(QString, shown);
    QTEST(shown, "expected");
}

void TestSupportRoutines::logLinesAreFilledOnce()
{
    QStringList lines;
    SystemLog::setSink([&](const QString &line) { lines.append(line); });
    LogString("Can't read %@ (%d)", QStringLiteral("/a/%@ %s"), 5);
    LogString(QStringLiteral("50% %@"));
    LogException(QStringLiteral("bad %d"), QStringLiteral("decoding"));
    SystemLog::setSink({});
    QCOMPARE(lines, QStringList({QStringLiteral("Can't read /a/%@ %s (5)"), QStringLiteral("50% %@"),
                                 QStringLiteral("decoding: bad %d")}));
}

void TestSupportRoutines::alertWithoutButtonsHidesCancel()
{
    AnsweringPresenter presenter;
    AlertPresenter *before = AlertPresenter::install(&presenter);
    presenter.answer = 1;
    const int answer = GiveAlert(QStringLiteral("Title"), QString());
    Beep();
    AlertPresenter::install(before);
    QCOMPARE(answer, 1);
    QCOMPARE(presenter.last.buttons, QStringList({QStringLiteral("OK"), QStringLiteral("Cancel")}));
    QCOMPARE(presenter.last.hiddenButton, 1);
    QCOMPARE(presenter.last.escapeButton, 1);
    QCOMPARE(presenter.nesting, 1);
    QCOMPARE(alertNesting(), 0);
    QCOMPARE(presenter.beeps, 1);
}

void TestSupportRoutines::alertWithButtonsAnswersEscapeWithCancel()
{
    AnsweringPresenter presenter;
    AlertPresenter *before = AlertPresenter::install(&presenter);
    const QStringList buttons = {QStringLiteral("Save"), QStringLiteral("Cancel"), QStringLiteral("Don't Save")};
    presenter.answer = 2;
    const int answer = GiveAlert(QString(), QStringLiteral("Message"), buttons);
    AlertPresenter::install(before);
    QCOMPARE(answer, 2);
    QCOMPARE(presenter.last.buttons, buttons);
    QCOMPARE(presenter.last.escapeButton, 1);
    QCOMPARE(presenter.last.hiddenButton, -1);

    AlertPresenter::install(&presenter);
    GiveAlert(QString(), QString(), {QStringLiteral("Ja"), QStringLiteral("Abbrechen"), QStringLiteral("Nein")}, 1);
    AlertPresenter::install(before);
    QCOMPARE(presenter.last.escapeButton, 1);
}

void TestSupportRoutines::arrayRefusesOddEntries_data()
{
    QTest::addColumn<quint32>("entrySize");
    QTest::addColumn<quint32>("initialCapacity");
    QTest::addColumn<quint32>("capacity"); // 0: no array
    QTest::newRow("odd") << 3U << 10U << 0U;
    QTest::newRow("nothing") << 0U << 10U << 0U;
    QTest::newRow("more than there is") << 0xFFFFFFFEU << 0xFFFFFFFFU << 0U;
    QTest::newRow("least") << 8U << 0U << 10U;
    QTest::newRow("as asked") << 2U << 100U << 100U;
}

void TestSupportRoutines::arrayRefusesOddEntries()
{
    QFETCH(quint32, entrySize);
    QFETCH(quint32, initialCapacity);
    const DynamicArrayPtr array(CreateDynamicArray(entrySize, initialCapacity));
    QTEST(array ? array->capacity : 0U, "capacity");
}

void TestSupportRoutines::arrayGrowsByAQuarter()
{
    const DynamicArrayPtr array(CreateDynamicArray(2, 0));
    quint32 expected = 10;
    for (quint32 i = 0; i < 1000; ++i) {
        if (i == expected)
            expected += std::max(expected / 4, 10U);
        const auto value = static_cast<quint16>(i);
        QCOMPARE(AppendToDynamicArray(array.get(), &value), i);
        QCOMPARE(array->capacity, expected);
    }
    quint16 value = 0;
    FetchDynamicArrayEntry(array.get(), 777, &value);
    QCOMPARE(value, quint16(777));
}

void TestSupportRoutines::arrayMovesEntriesAndZeroesMissingOnes()
{
    const DynamicArrayPtr array(CreateDynamicArray(sizeof(quint32), 0));
    for (quint32 i = 1; i <= 5; ++i)
        AppendToDynamicArray(array.get(), &i);
    quint32 value = 99;
    FetchDynamicArrayEntry(array.get(), 5, &value);
    QCOMPARE(value, 0U);
    DeleteFromDynamicArray(array.get(), 5);
    DeleteFromDynamicArray(array.get(), 1);
    DeleteFromDynamicArray(array.get(), 3);
    QCOMPARE(array->count, 3U);
    for (const auto &[index, expected] : {std::pair(0U, 1U), std::pair(1U, 3U), std::pair(2U, 4U)}) {
        FetchDynamicArrayEntry(array.get(), index, &value);
        QCOMPARE(value, expected);
    }
    QCOMPARE(AppendToDynamicArray(array.get(), nullptr), 3U);
    FetchDynamicArrayEntry(array.get(), 3, &value);
    QCOMPARE(value, 5U); // left as it was: the 5 that moved down and then went
    FreeDynamicArray(nullptr);
}

void TestSupportRoutines::fileSizes_data()
{
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](quint64 bytes, const char *text) { QTest::newRow(text) << bytes << QString::fromUtf8(text); };
    row(0, "0.00 KB");
    row(500, "0.50 KB");
    row(999'999, "1,000.00 KB");
    row(1'000'000, "1.00 MB");
    row(1'500'000, "1.50 MB");
    row(999'999'999, "1.00 GB"); // single precision makes it 1,000,000,000
    row(123'456'789'012, "123.46 GB");
    row(5'000'000'000'000, "5.00 TB");
    row(std::numeric_limits<quint64>::max(), "18,446,744.00 TB");
}

void TestSupportRoutines::fileSizes()
{
    QFETCH(quint64, bytes);
    QTEST(FileSizeString(bytes), "text");
}

void TestSupportRoutines::countsAgreeWithTheirNouns()
{
    const auto text = [](qint64 count) {
        return CountText(count, QStringLiteral("%n photo"), QStringLiteral("%n photos"));
    };
    QCOMPARE(text(0), QStringLiteral("0 photos"));
    QCOMPARE(text(1), QStringLiteral("1 photo"));
    QCOMPARE(text(21), QStringLiteral("21 photos"));
}

void TestSupportRoutines::reasons_data()
{
    QTest::addColumn<QString>("failureReason");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("shown");
    QTest::newRow("reason wins") << QStringLiteral("r") << QStringLiteral("d") << QStringLiteral("r");
    QTest::newRow("description") << QString() << QStringLiteral("d") << QStringLiteral("d");
    QTest::newRow("neither") << QString() << QString() << QStringLiteral("An unknown error occurred.");
    QTest::newRow("quotes") << QStringLiteral("can’t ‘a’ “b”") << QString() << QStringLiteral("can't 'a' \"b\"");
}

void TestSupportRoutines::reasons()
{
    QFETCH(QString, failureReason);
    QFETCH(QString, description);
    QTEST(reason(failureReason, description), "shown");
}

void TestSupportRoutines::geometryReadsBackExactly_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << QRectF(10, 20, 4000, 100000) << QStringLiteral("{{10, 20}, {4000, 100000}}");
    QTest::newRow("fractions") << QRectF(0.1, -2.5, 1.0 / 3, 1e-7)
                               << QStringLiteral("{{0.1, -2.5}, {0.3333333333333333, 0.0000001}}");
    QTest::newRow("huge") << QRectF(1e300, -1e300, 1, 1) << QStringLiteral("{{1e+300, -1e+300}, {1, 1}}");
    QTest::newRow("empty") << QRectF() << QStringLiteral("{{0, 0}, {0, 0}}");
}

void TestSupportRoutines::geometryReadsBackExactly()
{
    QFETCH(QRectF, rect);
    QTEST(textFromRect(rect), "text");
    const QRectF back = rectFromText(textFromRect(rect));
    QVERIFY(back.x() == rect.x() && back.y() == rect.y() && back.width() == rect.width() &&
            back.height() == rect.height());
    const QPointF point = pointFromText(textFromPoint(rect.topLeft()));
    QVERIFY(point.x() == rect.x() && point.y() == rect.y());
    QCOMPARE(textFromPoint({0.5, std::nan("")}), QStringLiteral("{0.5, 0}"));
}

void TestSupportRoutines::malformedGeometryReadsAsZero_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QRectF>("rect");
    QTest::newRow("nothing") << QString() << QRectF();
    QTest::newRow("words") << QStringLiteral("{{a, 2}, {x}}") << QRectF(0, 2, 0, 0);
    QTest::newRow("cut short") << QStringLiteral("{{1, 2}, {3") << QRectF(1, 2, 3, 0);
    QTest::newRow("no finite numbers") << QStringLiteral("{{inf, nan}, {1e999, 4}}") << QRectF(0, 0, 0, 4);
    QTest::newRow("close together") << QStringLiteral("{{1,2},{3,4}},5") << QRectF(1, 2, 3, 4);
}

void TestSupportRoutines::malformedGeometryReadsAsZero()
{
    QFETCH(QString, text);
    QTEST(rectFromText(text), "rect");
}

void TestSupportRoutines::versions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("version");
    QTest::newRow("three numbers") << QStringLiteral("10.8.3") << 0x0A0803U;
    QTest::newRow("two numbers") << QStringLiteral("10.8") << 0x0A0800U;
    QTest::newRow("with a tail") << QStringLiteral("6.1.0-18-amd64") << 0x060100U;
    QTest::newRow("large patch") << QStringLiteral("4.9.337") << 0x0409FFU;
    QTest::newRow("one number") << QStringLiteral("12") << 0x0A0600U;
    QTest::newRow("nothing") << QString() << 0x0A0600U;
    QTest::newRow("zero") << QStringLiteral("0.0") << 0x0A0600U;
}

void TestSupportRoutines::versions()
{
    QFETCH(QString, text);
    QTEST(systemVersionFromText(text), "version");
}

void TestSupportRoutines::threadStorageIsPrivateAndZero()
{
    GetQVThreadStorage()[0] = 1;
    std::array<std::uint8_t, 4> others = {9, 9, 9, 9};
    std::thread([&] {
        others = GetQVThreadStorage();
        GetQVThreadStorage()[0] = 7;
    }).join();
    QCOMPARE(others, (std::array<std::uint8_t, 4>{}));
    QCOMPARE(GetQVThreadStorage()[0], std::uint8_t(1));
    GetQVThreadStorage()[0] = 0;
}

void TestSupportRoutines::sortedArraySearch_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("index");
    QTest::newRow("first") << QStringLiteral("APPLE") << true << 0;
    QTest::newRow("last") << QStringLiteral("zoo") << true << 2;
    QTest::newRow("between") << QStringLiteral("bee") << false << 1;
    QTest::newRow("before") << QStringLiteral("aa") << false << 0;
    QTest::newRow("behind") << QStringLiteral("zz") << false << 3;
}

void TestSupportRoutines::sortedArraySearch()
{
    QFETCH(QString, text);
    const QStringList sorted = {QStringLiteral("apple"), QStringLiteral("Boat"), QStringLiteral("Zoo")};
    qsizetype index = -1;
    QTEST(isStringInSortedArray(sorted, text, &index), "found");
    QTEST(static_cast<int>(index), "index");
    QVERIFY(!isStringInSortedArray({}, text));
}

REGISTER_TEST(TestSupportRoutines)
#include "TestSupportRoutines.moc"
