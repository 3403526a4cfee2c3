#include "TestRunner.h"
#include "WindowDesk.h"

#include "LibraryFile.h"
#include "PIFindDialog.h"
#include "PIFolder.h"
#include "QuickSearchField.h"
#include "ThumbnailGridView.h"
#include "TypedSearch.h"

#include <QApplication>
#include <QCheckBox>
#include <QFocusEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTest>

#include <functional>

namespace {

/// A window over six photos in two folders; the captions of three are about cats.
struct FindDesk : WindowDesk
{
    std::shared_ptr<PIFolder> first = group()->folders().first();
    std::shared_ptr<PIFolder> second = group()->makeNewFolder();

    FindDesk()
    {
        LibraryFile::registerTags();
        fill(*first, "dog,cat,catalogue");
        fill(*second, ",wild cat,cow");
        controller->resetList(first);
        controller->selectIndexes(IndexSet::single(0));
    }
    void fill(PIFolder &folder, const char *captions)
    {
        for (const QString &caption : QString::fromLatin1(captions).split(u',')) {
            const QString path = QStringLiteral("/%1/%2.jpg").arg(folder.guid()).arg(folder.photos().size());
            folder.photos() << std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
            folder.photos().last()->setCaption(caption);
        }
    }
    QuickSearchField &field() const { return *controller->window().findChild<QuickSearchField *>(); }
    QString shown() const
    {
        const auto photo = controller->currentPhoto();
        return photo && controller->selectedIndexes().count() == 1 ? photo->caption() : QString();
    }
    /// Chooses Find…, and lets `answer` have the sheet.
    void find(const std::function<void(PIFindDialog &)> &answer) const
    {
        trigger(Command::Find);
        const QPointer<PIFindDialog> sheet = qobject_cast<PIFindDialog *>(QApplication::activeModalWidget());
        QVERIFY(sheet);
        answer(*sheet);
        if (sheet && sheet->isVisible())
            sheet->reject();
        QTRY_VERIFY(!sheet);
    }
};

QLabel &matches(const PIFindDialog &sheet)
{
    for (QLabel *label : sheet.findChildren<QLabel *>()) {
        if (label->accessibleName() == QLatin1String("Matches"))
            return *label;
    }
    qFatal("no label for the matches");
}

QPushButton &defaultButton(const PIFindDialog &sheet)
{
    for (auto *button : sheet.findChildren<QPushButton *>()) {
        if (button->isDefault())
            return *button;
    }
    qFatal("no default button");
}

}

/// Finding photos with the sheet, again, and while typing.
class TestFindCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSheetFindsByTheKeyboardAlone()
    {
        FindDesk desk;
        QAction *again = desk.controller->actions().action(Command::FindAgain);
        QVERIFY(!again->isEnabled());
        desk.find([](PIFindDialog &sheet) {
            QVERIFY(!defaultButton(sheet).isEnabled());
            QTest::keyClicks(sheet.focusWidget(), QStringLiteral("CAT"));
            QTRY_COMPARE(matches(sheet).text(), QStringLiteral("3 photos match."));
            QTest::keyClick(sheet.focusWidget(), Qt::Key_Return);
        });
        QCOMPARE(desk.shown(), QStringLiteral("cat"));
        QCOMPARE(desk.controller->window().focusWidget(), &desk.controller->thumbnailView());
        QVERIFY(again->isEnabled());
        again->trigger();
        again->trigger();
        QCOMPARE(desk.shown(), QStringLiteral("wild cat"));
        QCOMPARE(desk.controller->shownFolder(), desk.second);
        again->trigger();
        QCOMPARE(desk.shown(), QStringLiteral("wild cat"));
        QVERIFY(!desk.controller->window().statusBar()->currentMessage().isEmpty());
        desk.trigger(Command::FindPrevious);
        QCOMPARE(desk.shown(), QStringLiteral("catalogue"));

        // It begins with the last criteria; given up it leaves them as they are.
        desk.find([](PIFindDialog &sheet) {
            QCOMPARE(qobject_cast<QLineEdit *>(sheet.focusWidget())->text(), QStringLiteral("CAT"));
            QTest::keyClicks(sheet.focusWidget(), QStringLiteral("cow"));
            QTest::keyClick(&sheet, Qt::Key_Escape);
        });
        desk.trigger(Command::FindPrevious);
        QCOMPARE(desk.shown(), QStringLiteral("cat"));
    }

    void theSheetCollectsInAFolder()
    {
        FindDesk desk;
        desk.find([](PIFindDialog &sheet) {
            QTest::keyClicks(sheet.focusWidget(), QStringLiteral("cat"));
            for (auto *box : sheet.findChildren<QCheckBox *>())
                box->setChecked(true);
            QVERIFY(defaultButton(sheet).isEnabled());
            defaultButton(sheet).click();
        });
        const auto results = desk.controller->shownFolder();
        QCOMPARE(desk.library.groups().last()->groupType(), GroupType::Search);
        QCOMPARE(results->parent(), desk.library.groups().last());
        QCOMPARE(results->photos().size(), 3);
        desk.trigger(Command::Undo);
        QCOMPARE(desk.library.groups().size(), 1);
    }

    void theSheetKeepsWhatItIsTold_data()
    {
        QTest::addColumn<int>("field"); ///< of the four, from above
        QTest::addColumn<int>("box");   ///< the only place to look in
        QTest::addColumn<int>("start");
        QTest::addColumn<QString>("found"); ///< with "cat cow" in the field
        QTest::newRow("all words, captions, library") << 0 << 0 << 0 << QStringLiteral("dog");
        QTest::newRow("exact, file names, folder") << 1 << 1 << 1 << QStringLiteral("dog");
        QTest::newRow("one word, captions, library") << 2 << 0 << 0 << QStringLiteral("cat");
        QTest::newRow("one word, keywords, selection") << 2 << 2 << 2 << QStringLiteral("wild cat");
        QTest::newRow("no word") << 3 << 0 << 0 << QStringLiteral("dog");
    }
    void theSheetKeepsWhatItIsTold()
    {
        QFETCH(int, field);
        QFETCH(int, box);
        QFETCH(int, start);
        FindDesk desk;
        desk.second->photos().at(1)->setKeywordList(QStringLiteral("cow"), desk.library.keywords());
        const auto textOf = [](const PIFindDialog &sheet, int row) {
            auto *grid = sheet.findChild<QGridLayout *>();
            return qobject_cast<QLineEdit *>(grid->itemAtPosition(row, 1)->widget());
        };
        desk.find([&](PIFindDialog &sheet) {
            textOf(sheet, field)->setText(QStringLiteral("cat cow"));
            const auto boxes = sheet.findChildren<QCheckBox *>();
            for (int i = 0; i < 3; ++i)
                boxes.at(i)->setChecked(i == box);
            sheet.findChildren<QRadioButton *>().at(start)->setChecked(true);
            defaultButton(sheet).click();
        });
        QTEST(desk.shown(), "found");
        desk.find([&](PIFindDialog &sheet) {
            for (int row = 0; row < 4; ++row)
                QCOMPARE(textOf(sheet, row)->text().isEmpty(), row != field);
            for (int i = 0; i < 3; ++i) {
                QCOMPARE(sheet.findChildren<QCheckBox *>().at(i)->isChecked(), i == box);
                QCOMPARE(sheet.findChildren<QRadioButton *>().at(i)->isChecked(), i == start);
            }
        });
    }

    /// Some words, and somewhere to look: without either there is nothing to find.
    void theSheetAsksForWordsAndPlaces()
    {
        FindDesk desk;
        desk.find([](PIFindDialog &sheet) {
            QTest::keyClicks(sheet.focusWidget(), QStringLiteral("cat"));
            for (auto *box : sheet.findChildren<QCheckBox *>())
                box->setChecked(false);
            QVERIFY(!defaultButton(sheet).isEnabled());
            QTest::keyClick(sheet.focusWidget(), Qt::Key_Return);
            QVERIFY(sheet.isVisible());
        });
        QCOMPARE(desk.shown(), QStringLiteral("dog"));
    }

    void typingFindsFromWhereItBegan()
    {
        FindDesk desk;
        QuickSearchField &field = desk.field();
        desk.trigger(Command::QuickSearch);
        QTRY_VERIFY(field.hasFocus());
        QTest::keyClicks(&field, QStringLiteral("ca"));
        QTRY_COMPARE(desk.shown(), QStringLiteral("cat"));
        QTest::keyClicks(&field, QStringLiteral("t")); // the photo found is still the one
        QTRY_COMPARE(desk.controller->window().statusBar()->currentMessage(),
                     QStringLiteral("3 photos match from here on."));
        QCOMPARE(desk.shown(), QStringLiteral("cat"));
        QTest::keyClicks(&field, QStringLiteral("a"));
        QTRY_COMPARE(desk.shown(), QStringLiteral("catalogue"));
        QVERIFY(field.hasFocus());
        QTest::keyClicks(&field, QStringLiteral(" ")); // the next word is still to come
        QTest::keyClicks(&field, QStringLiteral("?"));
        QTRY_VERIFY(field.palette().color(QPalette::Text) != QPalette().color(QPalette::Text));
        QCOMPARE(desk.shown(), QStringLiteral("catalogue"));
        QTest::keyClick(&field, Qt::Key_Down, Qt::AltModifier); // no photo moves
        QMenu *menu = field.findChild<QMenu *>();
        QVERIFY(menu->isVisible());
        menu->hide();
        QCOMPARE(desk.first->photos().at(2)->caption(), QStringLiteral("catalogue"));

        field.clear();
        QTest::keyClicks(&field, QStringLiteral("CAT"));
        QTest::keyClick(&field, Qt::Key_Return); // at once, and after the selection
        QCOMPARE(desk.shown(), QStringLiteral("wild cat"));
        QCOMPARE(desk.controller->window().focusWidget(), &desk.controller->thumbnailView());
        QVERIFY(field.palette().color(QPalette::Text) == QPalette().color(QPalette::Text));
        desk.trigger(Command::FindPrevious);
        QCOMPARE(desk.shown(), QStringLiteral("catalogue"));
    }

    /// What is not asked for by a command does not select photos behind a question about others.
    void typingEndsWithTheFocus()
    {
        FindDesk desk;
        QuickSearchField &field = desk.field();
        QTest::keyClicks(&field, QStringLiteral("cat"));
        const auto *search = desk.controller->window().findChild<TypedSearch *>();
        QVERIFY(search->isRunning());
        QFocusEvent leaving(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QApplication::sendEvent(&field, &leaving);
        QVERIFY(!search->isRunning());
        QCOMPARE(desk.shown(), QStringLiteral("dog"));
    }

    void theOptionTellsHowWordsAreMeant()
    {
        FindDesk desk;
        QuickSearchField &field = desk.field();
        const auto checked = [&] {
            QStringList texts;
            for (const QAction *action : field.findChild<QMenu *>()->actions()) {
                if (action->isChecked())
                    texts << action->text();
            }
            return texts;
        };
        const QStringList before = checked();
        QCOMPARE(before.size(), 1);
        QTest::keyClicks(&field, QStringLiteral("cow dog"));
        QTest::keyClick(&field, Qt::Key_Return); // all of the words
        QCOMPARE(desk.shown(), QStringLiteral("dog"));
        field.findChild<QMenu *>()->actions().at(2)->trigger(); // one of them
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.quickFindOption", 0}), 2);
        QCOMPARE(checked().size(), 1);
        QVERIFY(checked() != before);
        QTRY_COMPARE(desk.shown(), QStringLiteral("cow"));
    }
};

REGISTER_TEST(TestFindCommands)
#include "TestFindCommands.moc"
