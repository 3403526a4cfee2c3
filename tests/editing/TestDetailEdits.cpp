#include "TestRunner.h"

#include "House.h"

#include "DetailEdits.h"
#include "LibraryNotifications.h"

#include <QTest>

/// Changes of one photo's caption, keywords and crop.
class TestDetailEdits : public QObject
{
    Q_OBJECT

    /// A photo with something of everything, and what was told of it.
    struct Scene : House
    {
        std::shared_ptr<PIPhoto> photo = photos({QStringLiteral("a")}).first();
        QStringList told;
        std::vector<NotificationCenter::Observer> observers;

        Scene()
        {
            photo->setKeywordList(QStringLiteral("Dog"), library.keywords());
            photo->setCropRect({1, 2, 30, 40});
            for (const QString &name : {kRedrawNotification, kThumbnailNotification, kKeywordsNotification})
                observers.push_back(notifications.observe(name, [this, name](const auto &) { told << name; }));
        }

        QString text() const
        {
            const QRectF &crop = photo->cropRect();
            return QStringLiteral("%1|%2|%3x%4|%5")
                .arg(photo->caption(), photo->keywordList(library.keywords()))
                .arg(crop.width())
                .arg(crop.height())
                .arg(library.keywords().words().join(u','));
        }
    };

    using Edit = std::function<bool(Scene &)>;

private Q_SLOTS:
    void anEditIsRecordedToldAndMayBeRefused_data()
    {
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("recorded"); // action and name; nothing when nothing changes
        QTest::addColumn<QStringList>("told");
        const auto row = [](const char *name, const Edit &edit, const char *result, const char *recorded,
                            const QStringList &told) {
            QTest::newRow(name) << edit << QString::fromLatin1(result) << QString::fromLatin1(recorded) << told;
        };
        const auto caption = [](const char *text) {
            return [text](Scene &s) { return DetailEdits::setCaption(s.editor, s.photo, QString::fromLatin1(text)); };
        };
        const auto words = [](const char *text) {
            return [text](Scene &s) { return DetailEdits::setKeywords(s.editor, s.photo, QString::fromLatin1(text)); };
        };
        const auto word = [](const char *text) {
            return [text](Scene &s) { return DetailEdits::addKeyword(s.editor, s.photo, QString::fromLatin1(text)); };
        };
        row("caption", caption("b"), "b|Dog|30x40|Dog", "0/14/", {kRedrawNotification});
        row("the same caption", caption("a"), "a|Dog|30x40|Dog", "", {});
        row("a new keyword", words("cat dog"), "a|cat Dog|30x40|Dog,cat", "0/16/",
            {kKeywordsNotification, kRedrawNotification});
        row("no keywords", words(""), "a||30x40|Dog", "0/16/", {kRedrawNotification});
        row("the same keywords", words(" dog, "), "a|Dog|30x40|Dog", "", {});
        row("one more", word("\"new york\""), "a|Dog \"new york\"|30x40|Dog,\"new york\"", "0/16/",
            {kKeywordsNotification, kRedrawNotification});
        const auto crop = [](const QRectF &rect) {
            return [rect](Scene &s) { return DetailEdits::setCrop(s.editor, s.photo, rect); };
        };
        row("crop", crop({1, 2, 3, 4}), "a|Dog|3x4|Dog", "0/4/", {kThumbnailNotification});
        row("the same crop", crop({1, 2, 30, 40}), "a|Dog|30x40|Dog", "", {});
        row("no crop", crop({}), "a|Dog|0x0|Dog", "0/4/", {kThumbnailNotification});
    }
    void anEditIsRecordedToldAndMayBeRefused()
    {
        QFETCH(Edit, edit);
        QFETCH(QString, recorded);
        Scene scene;
        QVERIFY(edit(scene));
        QTEST(scene.text(), "result");
        QCOMPARE(scene.recorder.asked.join(u','), recorded);
        QTEST(scene.told, "told");

        Scene refusing;
        refusing.recorder.refuses = true;
        const QString before = refusing.text();
        QCOMPARE(edit(refusing), recorded.isEmpty());
        QCOMPARE(refusing.text(), before);
        QVERIFY(refusing.told.isEmpty());
    }

    void theFirstKeywordStandsAlone()
    {
        House house;
        const auto photo = house.photos({QStringLiteral("a")}).first();
        QVERIFY(DetailEdits::addKeyword(house.editor, photo, QStringLiteral("sea")));
        QCOMPARE(photo->keywordList(house.library.keywords()), QStringLiteral("sea"));
    }
};

REGISTER_TEST(TestDetailEdits)
#include "TestDetailEdits.moc"
