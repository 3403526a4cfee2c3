#include "FileWriter.h"
#include "PropertyList.h"
#include "TestRunner.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray xmlList(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content + "</plist>\n";
}

// A binary list of at most 256 objects, the first of which is the root.
QByteArray binaryList(const QList<QByteArray> &objects)
{
    QByteArray bytes = "bplist00";
    QByteArray table;
    for (const QByteArray &object : objects) {
        table += static_cast<char>(bytes.size() >> 8);
        table += static_cast<char>(bytes.size() & 0xFF);
        bytes += object;
    }
    const auto number = [](qsizetype value) {
        QByteArray text(8, '\0');
        text[6] = static_cast<char>(value >> 8);
        text[7] = static_cast<char>(value & 0xFF);
        return text;
    };
    const QByteArray sizes("\0\0\0\0\0\0\2\1", 8);
    return bytes + table + sizes + number(objects.size()) + number(0) + number(bytes.size());
}

QByteArray deepXml(int depth, const QByteArray &between = {})
{
    return xmlList(QByteArray("<array>" + between).repeated(depth) + QByteArray("</array>").repeated(depth));
}

// Each of the arrays holds the next one twice.
QByteArray doublingList(int arrays)
{
    QList<QByteArray> objects;
    for (int i = 1; i <= arrays; ++i)
        objects.append(QByteArray("\xA2") + static_cast<char>(i) + static_cast<char>(i));
    return binaryList(objects << QByteArray("\x10\x01", 2));
}

}

class TestPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesComeBackAsTheyWere_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("text") << QVariant(QStringLiteral("Grüße & <b> \"'\n\t𝄞"));
        QTest::newRow("empty text") << QVariant(QStringLiteral(""));
        QTest::newRow("true") << QVariant(true);
        QTest::newRow("false") << QVariant(false);
        QTest::newRow("zero") << QVariant(0LL);
        QTest::newRow("beyond 32 bits") << QVariant(0x123456789ALL);
        QTest::newRow("real") << QVariant(-2.5);
        QTest::newRow("data") << QVariant(QByteArray("\0\1\2\xFF", 4));
        QTest::newRow("date") << QVariant(QDateTime(QDate(2023, 6, 1), QTime(12, 30), Qt::UTC));
        QTest::newRow("empty list") << QVariant(QVariantList());
        QTest::newRow("empty dictionary") << QVariant(QVariantHash());
        const QVariantList inner{QVariantList{4LL, 100LL, 7LL}, QVariantList{QStringLiteral("a")}};
        QTest::newRow("nested") << QVariant(
            QVariantHash{{QStringLiteral("free"), inner}, {QStringLiteral("ä&<"), 4294967295LL}});
    }
    void valuesComeBackAsTheyWere()
    {
        QFETCH(QVariant, value);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("list ü.plist"));
        QVERIFY(FileWriter::replace(path, *PropertyList::toXml(value), FileWriter::Flush::No));
        const auto read = PropertyList::read(path);
        QVERIFY(read);
        QCOMPARE(read->typeId(), value.typeId());
        QCOMPARE(*read, value);
    }

    void aDictionaryOfEntriesThatComeOneByOneIsWrittenLikeAnyOther()
    {
        for (const int count : {0, 1, 12, 13, 1000}) {
            QVariantMap map; // written in the order of its keys
            for (int number = 0; number < count; ++number) {
                const QString key = QStringLiteral("<ä %1>").arg(number);
                const QVariantHash inner{{key, QStringLiteral("<dict>\n</dict>")}};
                map.insert(key, number % 3 == 0 ? QVariant(inner) : QVariant(number));
            }
            PropertyList::DictionaryWriter writer;
            for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
                QVERIFY(writer.add(entry.key(), entry.value()));
            QCOMPARE(writer.take(), PropertyList::toXml(map));
        }
        PropertyList::DictionaryWriter writer;
        QVERIFY(!writer.add(QString(QChar(1)), 1LL));
        QVERIFY(!writer.add(QStringLiteral("good"), 1LL));
        QVERIFY(!writer.take());
    }

    void handWrittenListsAreRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QVariant>("value");
        const QVariant dictionary = QVariantHash{{QStringLiteral("A"), 4LL}};
        QTest::newRow("XML") << xmlList("<dict><key>A</key><integer>4</integer></dict>") << dictionary;
        QTest::newRow("XML with comments and a document type")
            << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"x\" \"y\"><!-- <array> -->"
                          "<plist version=\"1.0\"><dict><key>A</key><!-- > --><integer>4</integer></dict></plist>")
            << dictionary;
        QTest::newRow("binary") << binaryList({QByteArray("\xD1\1\2", 3),
                                               "\x51"
                                               "A",
                                               QByteArray("\x10\4", 2)})
                                << dictionary;
        QTest::newRow("a negative number") << xmlList("<integer>-5</integer>") << QVariant(-5LL);
        QTest::newRow("the same object twice") << binaryList({QByteArray("\xA2\1\1", 3), "\x51"
                                                                                         "A"})
                                               << QVariant(QVariantList{QStringLiteral("A"), QStringLiteral("A")});
        QTest::newRow("a deep but honest list") << deepXml(1) << QVariant(QVariantList());
    }
    void handWrittenListsAreRead()
    {
        QFETCH(QByteArray, bytes);
        const auto read = PropertyList::fromData(bytes);
        QVERIFY(read);
        QTEST(*read, "value");
    }

    void brokenAndHostileListsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no list at all") << QByteArray("Photo");
        QTest::newRow("XML of another kind") << QByteArray("<?xml version=\"1.0\"?><html><p>4</p></html>");
        QTest::newRow("XML that breaks off") << xmlList("<dict><key>A</key><integer>4</integer></dict>").first(80);
        QTest::newRow("nested beyond the stack") << deepXml(300000);
        QTest::newRow("nested, with closing tags in comments") << deepXml(300000, "<!--</array>-->");
        QTest::newRow("nested, with closing tags in text") << deepXml(300000, "<string><![CDATA[</array>]]></string>");
        QTest::newRow("never closed") << "<plist>" + QByteArray("<array>").repeated(300000);
        QTest::newRow("binary head alone") << QByteArray("bplist00");
        QTest::newRow("binary that doubles sixty times") << doublingList(60);
        QTest::newRow("binary that holds itself") << binaryList({QByteArray("\xA1\0", 2)});
        QTest::newRow("binary with an object that does not exist") << binaryList({QByteArray("\xA1\7", 2)});
        QTest::newRow("binary array longer than the file")
            << binaryList({QByteArray("\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)});
        QTest::newRow("binary text longer than the file")
            << binaryList({QByteArray("\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)});
        QTest::newRow("binary table beyond the end") << binaryList({"\x51"
                                                                    "A"})
                                                                .chopped(2) +
                                                            QByteArray("\xFF\xFF", 2);
        QTest::newRow("binary that claims many objects") << binaryList({"\x51"
                                                                        "A"})
                                                                    .chopped(24) +
                                                                QByteArray("\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8) +
                                                                binaryList({"\x51"
                                                                            "A"})
                                                                    .last(16);
    }
    void brokenAndHostileListsAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QString reason;
        QVERIFY(!PropertyList::fromData(bytes, &reason));
        QVERIFY(!reason.isEmpty());
    }

    void whatCannotBeStoredIsTold_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("control character") << QVariant(QVariantList{QString(QChar(1))});
        QTest::newRow("null character") << QVariant(QString(QChar::Null));
        QTest::newRow("half a pair") << QVariant(QString(QChar(0xD800)));
        QTest::newRow("control character in a key") << QVariant(QVariantHash{{QString(QChar(2)), 1LL}});
        QTest::newRow("a kind that lists do not have") << QVariant(QVariantList{QSize(1, 2)});
        QTest::newRow("no value") << QVariant();
    }
    void whatCannotBeStoredIsTold()
    {
        QFETCH(QVariant, value);
        QString reason;
        QVERIFY(!PropertyList::toXml(value, &reason));
        QVERIFY(!reason.isEmpty());
    }

    void aFileThatIsNotThereTellsWhy()
    {
        QString reason;
        QVERIFY(!PropertyList::read(QStringLiteral("/nowhere/list"), &reason));
        QVERIFY(!reason.isEmpty());
    }
};

REGISTER_TEST(TestPropertyList)
#include "TestPropertyList.moc"
