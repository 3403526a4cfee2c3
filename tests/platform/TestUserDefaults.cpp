#include "TestRunner.h"
#include "UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr Preference<bool> kSwitch = {"test.switch", true};
constexpr Preference<int> kNumber = {"test.number", 42};
constexpr Preference<double> kMeasure = {"test.measure", 7.0};
constexpr Preference<const char *> kText = {"test.text", "default ü"};

}

class TestUserDefaults : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("new folder/prefs.ini")); }

private Q_SLOTS:
    void cleanup() { QFile::remove(path()); }
    void storedTextConvertsOrCountsAsAbsent_data();
    void storedTextConvertsOrCountsAsAbsent();
    void valuesSurviveARestart();
    void keysStandVerbatimInTheFile();
    void absentDiffersFromFalseAndZero();
    void synchronizeTellsOfFailure();
};

void TestUserDefaults::storedTextConvertsOrCountsAsAbsent_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<bool>("asSwitch");
    QTest::addColumn<int>("asNumber");
    QTest::addColumn<double>("asMeasure");
    QTest::addColumn<QString>("asText");
    const QString fallback = QString::fromUtf8(kText.fallback);
    QTest::newRow("false") << QByteArray("false") << false << 42 << 7.0 << QStringLiteral("false");
    QTest::newRow("zero") << QByteArray("0") << false << 0 << 0.0 << QStringLiteral("0");
    QTest::newRow("one") << QByteArray("1") << true << 1 << 1.0 << QStringLiteral("1");
    QTest::newRow("fraction") << QByteArray("2.5") << true << 42 << 2.5 << QStringLiteral("2.5");
    QTest::newRow("too large") << QByteArray("99999999999") << true << 42 << 99999999999.0
                               << QStringLiteral("99999999999");
    QTest::newRow("no finite number") << QByteArray("nan") << true << 42 << 7.0 << QStringLiteral("nan");
    QTest::newRow("words") << QByteArray("maybe so") << true << 42 << 7.0 << QStringLiteral("maybe so");
    QTest::newRow("a list by hand") << QByteArray("1, 2") << true << 42 << 7.0 << fallback;
    QTest::newRow("bytes") << QByteArray("@ByteArray(1)") << true << 42 << 7.0 << fallback;
    QTest::newRow("empty") << QByteArray("") << true << 42 << 7.0 << QString();
}

void TestUserDefaults::storedTextConvertsOrCountsAsAbsent()
{
    QFETCH(QByteArray, stored);
    const QTemporaryDir folder; // one per row: QSettings remembers files by name, size and time
    const QString file = folder.filePath(QStringLiteral("by hand.ini"));
    QFile ini(file);
    QVERIFY(ini.open(QFile::WriteOnly));
    ini.write("[General]\n");
    for (const char *key : {kSwitch.key, kNumber.key, kMeasure.key, kText.key})
        ini.write(QByteArray(key) + "=" + stored + "\n");
    ini.close();
    const UserDefaults defaults(file);
    QTEST(defaults.value(kSwitch), "asSwitch");
    QTEST(defaults.value(kNumber), "asNumber");
    QTEST(defaults.value(kMeasure), "asMeasure");
    QTEST(defaults.value(kText), "asText");
}

void TestUserDefaults::valuesSurviveARestart()
{
    const QByteArray bytes = QByteArray::fromHex("00ff0a5c2c22") + "@Variant";
    const QVariantMap dictionary = {{QStringLiteral("a/b ü"), 3}, {QStringLiteral("x"), QStringLiteral("1, 2")}};
    const QString text = QStringLiteral("@ü, \"quoted\"; \\ and\n a line 😀");
    {
        UserDefaults defaults(path());
        defaults.setValue(kSwitch, false);
        defaults.setValue(kNumber, -5);
        defaults.setValue(kMeasure, 0.1);
        defaults.setValue(kText, text);
        defaults.setData(QStringLiteral("test.bytes"), bytes);
        defaults.setDictionary(QStringLiteral("test.dictionary"), dictionary);
        QVERIFY(defaults.synchronize());
    }
    const UserDefaults defaults(path());
    QCOMPARE(defaults.value(kSwitch), false);
    QCOMPARE(defaults.value(kNumber), -5);
    QCOMPARE(defaults.value(kMeasure), 0.1);
    QCOMPARE(defaults.value(kText), text);
    QCOMPARE(defaults.data(QStringLiteral("test.bytes")), bytes);
    QCOMPARE(defaults.dictionary(QStringLiteral("test.dictionary")), dictionary);
}

void TestUserDefaults::keysStandVerbatimInTheFile()
{
    UserDefaults defaults(path());
    defaults.setValue(Preference<bool>{"hmphoto.run", false}, true);
    QVERIFY(defaults.synchronize());
    QFile file(path());
    QVERIFY(file.open(QFile::ReadOnly));
    QVERIFY(file.readAll().contains("\nhmphoto.run=true\n"));
}

void TestUserDefaults::absentDiffersFromFalseAndZero()
{
    UserDefaults defaults(path());
    QVERIFY(!defaults.contains(QString::fromUtf8(kSwitch.key)));
    QCOMPARE(defaults.value(kSwitch), true);
    defaults.setValue(kSwitch, false);
    defaults.setValue(kNumber, 0);
    defaults.setValue(kText, QString());
    QCOMPARE(defaults.value(kSwitch), false);
    QCOMPARE(defaults.value(kNumber), 0);
    QCOMPARE(defaults.value(kText), QString());
    defaults.remove(QString::fromUtf8(kSwitch.key));
    QCOMPARE(defaults.value(kSwitch), true);
}

void TestUserDefaults::synchronizeTellsOfFailure()
{
    const QString blocker = m_folder.filePath(QStringLiteral("a file"));
    QVERIFY(QFile(blocker).open(QFile::WriteOnly));
    UserDefaults defaults(blocker + QStringLiteral("/prefs.ini"));
    defaults.setValue(kNumber, 1);
    QVERIFY(!defaults.synchronize());
}

REGISTER_TEST(TestUserDefaults)
#include "TestUserDefaults.moc"
