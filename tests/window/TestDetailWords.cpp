#include "TestRunner.h"

#include "DetailScene.h"

#include "CollapsibleSection.h"
#include "PIDetailEffectVC.h"
#include "PIDetailWordsVC.h"
#include "WordField.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QTest>
#include <QToolButton>

/// What the detail pane lets the user say about a photo, and what it shows of crop and effects.
class TestDetailWords : public QObject
{
    Q_OBJECT

    static void type(WordField &field, const char *text)
    {
        field.setFocus();
        QTRY_VERIFY(field.hasFocus());
        field.selectAll();
        QTest::keyClicks(&field, QString::fromLatin1(text));
    }

    static QString words(const DetailScene &scene, const PIPhoto &photo)
    {
        return photo.caption() + u'|' + photo.keywordList(scene.library.keywords());
    }

private Q_SLOTS:
    void typedWordsAreTakenUndoneAndTakenBack()
    {
        DetailScene scene;
        auto &caption = scene.child<WordField>("Caption");
        auto &keywords = scene.child<WordField>("Keywords");
        type(caption, "At sea");
        QTest::keyClick(&caption, Qt::Key_Return);
        QCOMPARE(scene.photo->caption(), QStringLiteral("At sea"));
        type(keywords, "boat, x sea ");
        caption.setFocus();
        QTRY_COMPARE(words(scene, *scene.photo), QStringLiteral("At sea|boat sea"));
        QCOMPARE(keywords.text(), QStringLiteral("boat sea"));

        QAction undo;
        undo.setShortcut(QKeySequence::Undo);
        connect(&undo, &QAction::triggered, &scene.window, [&scene] { scene.manager.undo(); });
        scene.window.addAction(&undo);
        QTest::keyClicks(&caption, QStringLiteral("!"));
        for (const char *expected : {"At sea|boat sea", "At sea|", "|"}) { // the first takes back what was typed only
            QTest::keyClick(&caption, Qt::Key_Z, Qt::ControlModifier);
            QCOMPARE(words(scene, *scene.photo), QString::fromLatin1(expected));
        }
        QCOMPARE(caption.text() + keywords.text(), QString());
        scene.manager.redo();
        QCOMPARE(caption.text(), QStringLiteral("At sea"));

        type(caption, "A mistake");
        QTest::keyClick(&caption, Qt::Key_Escape);
        QCOMPARE(caption.text(), QStringLiteral("At sea"));
        keywords.setFocus();
        QTRY_VERIFY(keywords.hasFocus());
        QCOMPARE(scene.photo->caption(), QStringLiteral("At sea"));
    }

    void whatWasBegunForAPhotoIsKeptForIt()
    {
        DetailScene scene;
        auto &keywords = scene.child<WordField>("Keywords");
        PIDetailWordsVC &section = scene.controller->wordController();
        type(keywords, "boat");
        scene.notifications.post(kThumbnailNotification, scene.photo);
        QCOMPARE(keywords.text(), QStringLiteral("boat")); // while its picture is made, for one
        QCOMPARE(section.activeWordField(), PIDetailWordsVC::ActiveField::Keywords);

        scene.select(scene.other);
        QCOMPARE(words(scene, *scene.photo), QStringLiteral("|boat"));
        QCOMPARE(words(scene, *scene.other), QStringLiteral("|"));
        QCOMPARE(scene.controller->photo(), scene.other);
        QCOMPARE(keywords.text(), QString());
        QCOMPARE(section.activeWordField(), PIDetailWordsVC::ActiveField::Keywords);

        section.setActiveWordField(PIDetailWordsVC::ActiveField::Caption);
        type(scene.child<WordField>("Caption"), "second");
        scene.select(nullptr);
        QCOMPARE(words(scene, *scene.other), QStringLiteral("second|"));
        QVERIFY(!scene.controller->photo());
        QVERIFY(!keywords.isEnabled());

        scene.select(scene.photo);
        section.setActiveWordField(PIDetailWordsVC::ActiveField::Keywords);
        QTRY_VERIFY(keywords.hasFocus());
        QTest::keyClicks(&keywords, QStringLiteral("sail"));
        QWidget another;
        another.show();
        another.activateWindow();
        QTRY_COMPARE(words(scene, *scene.photo), QStringLiteral("|boat sail"));
    }

    void refusedWordsLeaveEverythingAsItWas()
    {
        DetailScene scene;
        scene.photo->setCaption(QStringLiteral("old"));
        scene.select(scene.photo);
        scene.manager.setDelegate(nullptr);
        for (const char *name : {"Caption", "Keywords"}) {
            auto &field = scene.child<WordField>(name);
            const QString before = field.text();
            type(field, "new");
            QTest::keyClick(&field, Qt::Key_Return);
            QCOMPARE(field.text(), before);
        }
        QCOMPARE(words(scene, *scene.photo), QStringLiteral("old|"));
        QVERIFY(scene.library.keywords().isEmpty());
    }

    void aFieldGrowsButHasNoLineBreaks()
    {
        DetailScene scene;
        auto &caption = scene.child<WordField>("Caption");
        const int low = caption.height();
        type(caption, "a");
        QGuiApplication::clipboard()->setText(QStringLiteral("\r\nb\nc ") + QStringLiteral("long ").repeated(200));
        caption.paste();
        QTest::keyClick(&caption, Qt::Key_Enter);
        QVERIFY(scene.photo->caption().startsWith(QLatin1String("a b c long ")));
        QVERIFY(caption.height() > low);
    }

    void keywordsOfTheLibraryAreChosenFromAMenu()
    {
        DetailScene scene;
        scene.photo->setKeywordList(QStringLiteral("sea"), scene.library.keywords());
        scene.select(scene.photo);
        auto &popup = scene.child<QToolButton>("Add keyword");
        QTRY_COMPARE(popup.menu()->actions().size(), 1); // filled some time after loading
        scene.library.keywords().append(QStringLiteral("\"a & b\""));
        scene.notifications.post(kKeywordsNotification);
        QCOMPARE(popup.menu()->actions().size(), 2);
        QAction *phrase = popup.menu()->actions().first();
        QCOMPARE(phrase->text(), QStringLiteral("\"a && b\""));

        type(scene.child<WordField>("Keywords"), "sea fish");
        phrase->trigger();
        QCOMPARE(words(scene, *scene.photo), QStringLiteral("|sea fish \"a & b\""));
        Q_EMIT popup.menu()->aboutToShow();
        const auto items = popup.menu()->actions();
        QVERIFY(std::none_of(items.begin(), items.end(), [](const auto *item) { return item->isEnabled(); }));
    }

    void aCropIsShownAndTakenAway()
    {
        DetailScene scene;
        auto &size = scene.child<QLabel>("Crop size");
        QCOMPARE(size.text(), QStringLiteral("None"));
        QVERIFY(scene.offeredButtons().isEmpty());
        scene.photo->setCropRect({1, 2, 30.9, 40.2});
        scene.select(scene.photo);
        QCOMPARE(size.text(), QStringLiteral("30 x 40"));
        QCOMPARE(scene.offeredButtons(), QStringList{QStringLiteral("Uncrop")});
        QTest::mouseClick(&scene.child<QPushButton>("Uncrop"), Qt::LeftButton);
        QVERIFY(scene.photo->cropRect().isEmpty());
        QCOMPARE(size.text(), QStringLiteral("None"));
        scene.manager.undo();
        QCOMPARE(size.text(), QStringLiteral("30 x 40"));
        scene.select(nullptr);
        QCOMPARE(size.text(), QString());
        QVERIFY(scene.offeredButtons().isEmpty());
    }

    void effectsAreNamedInTheirOrder()
    {
        DetailScene scene;
        const auto effects = [&scene] {
            QStringList texts;
            for (const auto *label : scene.controller->effectController().findChildren<QLabel *>())
                texts << (label->isVisible() ? label->text() : QString());
            texts.removeAll(QString());
            return texts.join(u' ');
        };
        QCOMPARE(effects(), QStringLiteral("None"));
        scene.photo->setFilterDicts({EffectEntry(QStringLiteral("b")), EffectEntry(QStringLiteral("<i>"))});
        scene.select(scene.photo);
        QTRY_COMPARE(effects(), QStringLiteral("b <i>"));
        scene.select(nullptr);
        QCOMPARE(effects(), QString());
    }

    void sectionsStayAsTheyWereLeft()
    {
        DetailScene scene;
        const auto openSections = [&scene] {
            QStringList open;
            for (const auto *section : scene.window.findChildren<CollapsibleSection *>())
                open << (section->isOpen() ? section->findChild<QToolButton *>()->text() : QStringLiteral("-"));
            return open.join(u',');
        };
        QCOMPARE(openSections(), QStringLiteral("Caption and Keywords,File,Crop,Effects"));
        QTest::mouseClick(&scene.child<QToolButton>("Crop"), Qt::LeftButton);
        scene.controller.reset();
        qDeleteAll(scene.window.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly));
        scene.makePane();
        QCOMPARE(openSections(), QStringLiteral("Caption and Keywords,File,-,Effects"));
    }

    void theStepControlNeedsSomewhereToGo()
    {
        DetailScene scene;
        QAction previous;
        QAction next(QStringLiteral("Next"));
        int steps = 0;
        connect(&next, &QAction::triggered, &scene.window, [&steps] { ++steps; });
        scene.controller->addStepControl(previous, next);
        auto &button = scene.child<QToolButton>("Next");
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(steps, 1);
        scene.select(std::make_shared<PIPhoto>()); // of another folder
        QVERIFY(!button.isEnabled());
        scene.select(scene.photo);
        QVERIFY(button.isEnabled());
        scene.a->photos().removeOne(scene.other);
        scene.select(scene.photo);
        QVERIFY(!button.isEnabled());
    }
};

REGISTER_TEST(TestDetailWords)
#include "TestDetailWords.moc"
