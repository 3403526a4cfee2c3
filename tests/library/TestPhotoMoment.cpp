#include "TestRunner.h"

#include "PIPhoto.h"
#include "PhotoMoment.h"

#include <QTest>

class TestPhotoMoment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void momentsRememberWhicheverEndsFirst_data()
    {
        QTest::addColumn<int>("ended");
        QTest::newRow("none") << -1;
        QTest::newRow("the first") << 0;
        QTest::newRow("one between") << 1;
        QTest::newRow("the last") << 3;
    }
    void momentsRememberWhicheverEndsFirst()
    {
        QFETCH(int, ended);
        const auto photo = std::make_shared<PIPhoto>();
        const auto untouched = std::make_shared<PIPhoto>();
        std::array<std::unique_ptr<PhotoMoment>, 4> moments;
        for (size_t i = 0; i < moments.size(); ++i) {
            moments.at(i) = std::make_unique<PhotoMoment>();
            if (i == 1)
                continue; // nothing happens between this one and the next
            photo->setCaption(QString::number(i));
            photo->setKeywordIndexes({i, i});
        }
        if (ended >= 0)
            moments.at(size_t(ended)).reset();
        photo->setMarked(true);
        const QStringList captions = {QString(), QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("2")};
        for (size_t i = 0; i < moments.size(); ++i) {
            if (!moments.at(i))
                continue;
            const auto changes = moments.at(i)->changes();
            QCOMPARE(changes.size(), 1);
            QCOMPARE(changes.value(photo)->caption(), captions.at(qsizetype(i)));
            QCOMPARE(changes.value(photo)->keywordIndexes().size(), i == 0 ? 0 : 2);
            QVERIFY(!changes.value(photo)->isMarked());
        }
    }

    void aPhotoIsLetGoWithTheLastMoment()
    {
        std::weak_ptr<PIPhoto> gone;
        auto moment = std::make_unique<PhotoMoment>();
        {
            const auto younger = std::make_shared<PIPhoto>(); // no moment knows it
            younger->setCaption(QStringLiteral("new"));
            QVERIFY(moment->changes().isEmpty());
            const PhotoMoment later;
            younger->setCaption(QStringLiteral("newer"));
            QCOMPARE(later.changes().size(), 1);
            gone = younger;
        }
        QVERIFY(!gone.expired()); // the earlier moment has taken over what the later one kept
        moment.reset();
        QVERIFY(gone.expired());
        QCOMPARE(PhotoMoment::newest(), quint64(0));
    }
};

REGISTER_TEST(TestPhotoMoment)
#include "TestPhotoMoment.moc"
