#include "KeywordText.h"
#include "KeywordVocabulary.h"
#include "LibraryFile.h"
#include "LibrarySupport.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "TestRunner.h"

/// A photo's keywords, crop shape and the form in which it is copied and pasted.
class TestPIPhoto : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibraryFile::registerTags(); }

    void keywordsAreParsed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QList<quint64>>("indexes");
        QTest::newRow("nothing") << ""
                                 << "" << QList<quint64>{};
        QTest::newRow("delimiters alone") << " ,;\t\n- "
                                          << "" << QList<quint64>{};
        QTest::newRow("single letters are dropped") << "a bb \"new york\" cc"
                                                    << "bb \"new york\" cc" << QList<quint64>{1, 2, 3};
        QTest::newRow("first spelling wins, twice is twice") << "Dog dog"
                                                             << "Dog Dog" << QList<quint64>{1, 1};
        QTest::newRow("known without regard to case") << "KNOWN"
                                                      << "known" << QList<quint64>{0};
        QTest::newRow("any delimiter") << "one,two.three\ttwo"
                                       << "one two three two" << QList<quint64>{1, 2, 3, 2};
        QTest::newRow("signs are no delimiters") << "c++ a+b"
                                                 << "c++ a+b" << QList<quint64>{1, 2};
        QTest::newRow("apostrophe within") << "rock'n'roll"
                                           << "rock'n'roll" << QList<quint64>{1};
        QTest::newRow("quote within a word") << "ab\"cd ef"
                                             << "ab\"cd ef" << QList<quint64>{1, 2};
        QTest::newRow("quotes around nothing") << "\"\" xx"
                                               << "xx" << QList<quint64>{1};
        QTest::newRow("quotes around a blank") << "\" \""
                                               << "\" \"" << QList<quint64>{1};
        QTest::newRow("open quote takes the rest") << "xx \"a b c"
                                                   << "xx \"a b c" << QList<quint64>{1, 2};
        QTest::newRow("lone quote at the end") << "xx \""
                                               << "xx" << QList<quint64>{1};
        QTest::newRow("what follows a quote is skipped") << "\"ab\"cde fg"
                                                         << "\"ab\" de fg" << QList<quint64>{1, 2, 3};
        QTest::newRow("quote right behind a quote") << "\"ab\"\"cd\""
                                                    << "\"ab\" cd\"" << QList<quint64>{1, 2};
    }
    void keywordsAreParsed()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QFETCH(QList<quint64>, indexes);
        KeywordVocabulary vocabulary;
        vocabulary.setWords({QStringLiteral("known")});
        PIPhoto photo;
        QVERIFY(!photo.keywords());
        photo.setKeywordList(QStringLiteral("known"), vocabulary);
        photo.setKeywordList(text, vocabulary);
        QCOMPARE(photo.keywordIndexes(), indexes);
        QCOMPARE(photo.keywordList(vocabulary), shown);
        QCOMPARE(photo.keywords()->count, static_cast<quint32>(indexes.size()));

        PIPhoto second;
        second.setKeywordList(photo.keywordList(vocabulary), vocabulary);
        QCOMPARE(second.keywordIndexes(), indexes);
    }

    void equalWordsOfAFileKeepTheirNumbers()
    {
        KeywordVocabulary vocabulary;
        vocabulary.setWords({QStringLiteral("Cat"), QStringLiteral("cat"), QStringLiteral("Dog")});
        QCOMPARE(vocabulary.indexOf(QStringLiteral("CAT")), std::optional<quint64>(0));
        QCOMPARE(vocabulary.indexOf(QStringLiteral("dog")), std::optional<quint64>(2));
        QCOMPARE(vocabulary.indexOfOrAppend(QStringLiteral("bird")), quint64(3));
    }

    void aQuotedPhraseIsShownAmongTheWordsOfItsFirstLetter()
    {
        KeywordVocabulary vocabulary;
        vocabulary.setWords({QStringLiteral("Zoo"), QStringLiteral("\"new york\""), QStringLiteral("oslo"),
                             QStringLiteral("Munich"), QStringLiteral("munich")});
        QCOMPARE(vocabulary.displayOrder(), (QList<quint64>{3, 4, 1, 2, 0}));
    }

    void everyPhraseBecomesOneKeyword()
    {
        const QStringList phrases{
            QStringLiteral("sea"),   QStringLiteral("old town"), QStringLiteral("black-and-white"),
            QStringLiteral("x"),     QStringLiteral("6\" pipe"), QStringLiteral("\"as typed\""),
            QStringLiteral("O'Nay"), QStringLiteral("a\"b"),     QStringLiteral("last")};
        KeywordVocabulary vocabulary;
        PIPhoto photo;
        photo.setKeywordList(KeywordText::listOf(phrases), vocabulary);
        QCOMPARE(vocabulary.words().join(u'|'),
                 QStringLiteral("sea|\"old town\"|\"black-and-white\"|\"x\"|\"6' pipe\"|\"as typed\"|O'Nay|"
                                "a'b|last"));
        QCOMPARE(photo.keywordList(vocabulary), KeywordText::listOf(phrases));
    }

    void keywordsOutsideTheVocabularyAreNotShown()
    {
        KeywordVocabulary vocabulary;
        vocabulary.setWords({QStringLiteral("one"), QStringLiteral("two")});
        PIPhoto photo;
        photo.setKeywordIndexes({7, 1, 9, 0});
        QCOMPARE(photo.keywordList(vocabulary), QStringLiteral(" two one"));
        std::vector<quint64> remap(2, kNotFound);
        quint64 next = 5;
        photo.markKeywords(remap, next);
        QCOMPARE(remap, std::vector<quint64>({6, 5}));
    }

    void cropAgreesWithAShape_data()
    {
        QTest::addColumn<int>("preset");
        QTest::addColumn<QRectF>("crop");
        QTest::addColumn<bool>("good");
        QTest::newRow("free") << 0 << QRectF(0, 0, 10, 1000) << true;
        QTest::newRow("no height") << 3 << QRectF(0, 0, 10, 0) << false;
        QTest::newRow("landscape") << 3 << QRectF(5, 5, 600, 400) << true;
        QTest::newRow("portrait") << 3 << QRectF(5, 5, 400, 600) << true;
        QTest::newRow("within a hundredth") << 3 << QRectF(0, 0, 1509, 1000) << true;
        QTest::newRow("beyond a hundredth") << 3 << QRectF(0, 0, 1511, 1000) << false;
        QTest::newRow("last preset") << 6 << QRectF(0, 0, 1400, 1100) << true;
        QTest::newRow("no such preset") << 7 << QRectF(0, 0, 1, 9) << true;
    }
    void cropAgreesWithAShape()
    {
        QFETCH(int, preset);
        QFETCH(QRectF, crop);
        PIPhoto photo;
        photo.setCropRect(crop);
        QTEST(photo.goodCrop(preset), "good");
    }

    void copiesCarryEditsButNoState()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        photo->setKeywordList(QStringLiteral("one two"), test.library.keywords());
        photo->setCaption(QStringLiteral("caption"));
        photo->setMarked(true);
        photo->setCropRect({1, 2, 3, 4});
        photo->setFilterDicts({EffectEntry(QStringLiteral("CISepiaTone"))});
        const auto folder = test.library.groups().first()->lastFolder();
        const QStringList before = describe(test.library);
        photo->setThumbnailDate(77);
        photo->setSaveIndex(5);
        photo->setWaitingForThumbnail(true);
        photo->setCropChanged(true);
        folder->photos() = {photo->copy()};
        QCOMPARE(describe(test.library), before);
        const auto &copy = *folder->photos().first();
        QCOMPARE(copy.saveIndex(), quint64(0));
        QVERIFY(!copy.isWaitingForThumbnail() && !copy.isCropChanged());
        photo->setKeywordIndexes({});
        QCOMPARE(copy.keywordIndexes(), QList<quint64>({0, 1}));
    }

    void pastedFormNamesTheFileByItsGuid()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        photo->setKeywordIndexes({4, 2});
        photo->setCropRect({0, 0, 0, 300});
        QVXmlEncoder encoder;
        encoder.openTag("photos");
        photo->archiveToXml(encoder, nullptr);
        encoder.closeTag("photos");
        QVERIFY(encoder.xml().contains(QStringLiteral("ref=\"%1\"").arg(photo->fileRef()->guid())));
        QVERIFY(encoder.utf8().contains("<keys>4 2</keys>"));
        QVERIFY(!encoder.utf8().contains("crop"));

        auto decoder = QVXmlDecoder::fromString(encoder.xml());
        QVERIFY(decoder && decoder->getNextTag()); // stands on "photos": the reader steps to the photo by itself
        const auto pasted = PIPhoto::fromArchive(*decoder, test.library.fileRefs());
        QVERIFY(pasted);
        QCOMPARE(pasted->fileRef(), photo->fileRef());
        QCOMPARE(pasted->keywordIndexes(), photo->keywordIndexes());

        TestLibrary other;
        decoder = QVXmlDecoder::fromString(encoder.xml());
        QVERIFY(decoder && decoder->getNextTag());
        QVERIFY(PIPhoto::fromArchive(*decoder, other.library.fileRefs())->isFileLost());
        decoder = QVXmlDecoder::fromString(QStringLiteral("<?xml?>\n<photos>\n<group/>\n</photos>\n"));
        QVERIFY(decoder && decoder->getNextTag());
        QVERIFY(!PIPhoto::fromArchive(*decoder, other.library.fileRefs()));
    }
};

REGISTER_TEST(TestPIPhoto)
#include "TestPIPhoto.moc"
