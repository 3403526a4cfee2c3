#include "TestRunner.h"
#include "WindowDesk.h"

#include "DetailScene.h"
#include "KeywordTable.h"
#include "LibraryNotifications.h"
#include "PIAddKeywordDialog.h"
#include "PIDetailWordsVC.h"
#include "PIFolder.h"
#include "PIKeywordDialog.h"
#include "ThumbnailGridView.h"
#include "WordField.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <utility>

namespace {

/// The window over folder "A" with the photos "a", "b" and "c", and folder "B" with "c" once more and "d".
struct KeywordDesk : WindowDesk
{
    std::shared_ptr<PIFolder> first = group()->lastFolder();
    std::shared_ptr<PIFolder> second = group()->makeNewFolder();
    PIGroup::PhotoList photos;

    KeywordDesk()
    {
        const char *words[] = {"boat sea", "sea", "boat", "sea <b>"};
        for (const char *each : words) {
            photos << std::make_shared<PIPhoto>();
            photos.last()->setKeywordList(QString::fromLatin1(each), library.keywords());
        }
        library.keywords().append(QStringLiteral("<b>bold</b>"));
        first->photos() = photos.mid(0, 3);
        second->photos() = photos.mid(2);
        controller->resetList(first);
        controller->window().activateWindow();
    }
    template<typename Dialog>
    [[nodiscard]] Dialog &open(Command command) const
    {
        trigger(command);
        auto *dialog = controller->window().findChild<Dialog *>();
        if (!dialog || !dialog->isVisible())
            qFatal("no dialog");
        dialog->activateWindow();
        return *dialog;
    }
    [[nodiscard]] bool isOpen() const
    {
        const auto dialogs = controller->window().findChildren<QDialog *>();
        return std::any_of(dialogs.begin(), dialogs.end(), [](const auto *dialog) { return dialog->isVisible(); });
    }
    [[nodiscard]] QString words() const
    {
        QStringList lists;
        for (const auto &photo : photos)
            lists << photo->keywordList(library.keywords());
        return lists.join(u'|');
    }
};

/// What the manager shows.
struct Manager
{
    PIKeywordDialog &dialog;
    KeywordTable &table = *dialog.findChild<KeywordTable *>();
    ThumbnailGridView &results = *dialog.findChild<ThumbnailGridView *>();
    QLineEdit &filter = *dialog.findChild<QLineEdit *>();

    [[nodiscard]] QString rows() const
    {
        QStringList texts;
        for (int row = 0; row < table.model()->rowCount(); ++row)
            texts << table.model()->index(row, 0).data().toString() + u':' +
                         table.model()->index(row, 1).data().toString();
        return texts.join(u' ');
    }
    [[nodiscard]] QPushButton &button(const char *text) const
    {
        for (auto *button : dialog.findChildren<QPushButton *>()) {
            if (button->text().remove(u'&') == QLatin1String(text))
                return *button;
        }
        qFatal("no such button");
    }
    [[nodiscard]] bool shows(const char *count) const
    {
        const auto labels = dialog.findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(),
                           [count](const auto *label) { return label->text() == QLatin1String(count); });
    }
    void select(int row) const { table.setCurrentIndex(table.model()->index(row, 0)); }
    void type(int row, const char *text) const
    {
        select(row);
        button("Rename").click();
        auto *editor = table.viewport()->findChild<QLineEdit *>();
        editor->setText(QString::fromUtf8(text));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY(!table.viewport()->findChild<QLineEdit *>());
    }
};

QAbstractItemView &listOf(const QWidget &field)
{
    return *field.findChild<QCompleter *>()->popup();
}

}

/// The sheets that change the keywords of many photos, and the keywords that are offered while one is typed.
class TestKeywordDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theManagerShowsWhatHasAKeyword()
    {
        KeywordDesk desk;
        const Manager manager{desk.open<PIKeywordDialog>(Command::ManageKeywords)};
        QTRY_COMPARE(manager.rows(), QStringLiteral("<b>:1 <b>bold</b>:0 boat:3 sea:3"));
        QVERIFY(!manager.button("Delete").isEnabled() && !manager.button("Show Photo").isEnabled());

        manager.select(2);
        QTRY_VERIFY(manager.shows("3 photos"));
        QCOMPARE(manager.results.folder()->photos(),
                 (PIGroup::PhotoList{desk.photos[0], desk.photos[2], desk.photos[2]})); // once for each folder
        QCOMPARE(manager.results.selectedPositions(), IndexSet::single(2));
        manager.select(1);
        QVERIFY(!manager.shows("3 photos") && manager.results.folder()->photos().isEmpty());
        QVERIFY(!manager.button("Show Photo").isEnabled());
        manager.select(0);
        QTRY_VERIFY(manager.shows("1 photo"));

        desk.photos[1]->setKeywordList(QStringLiteral("bay"), desk.library.keywords()); // as an import would
        desk.notifications.post(kKeywordsNotification);
        QTRY_COMPARE(manager.rows(), QStringLiteral("<b>:1 <b>bold</b>:0 bay:1 boat:3 sea:2"));
        QCOMPARE(manager.table.selectedRow(), 0);
        manager.filter.setFocus();
        QTest::keyClicks(&manager.filter, QStringLiteral("BO"));
        QCOMPARE(manager.rows(), QStringLiteral("<b>bold</b>:0 boat:3"));
        QCOMPARE(manager.table.selectedRow(), -1); // none takes the place of the one that went
        QTest::keyClick(&manager.filter, Qt::Key_Return);
        QCOMPARE(manager.table.selectedRow(), 1);
        QTest::keyClick(&manager.table, Qt::Key_Return);
        QVERIFY(desk.isOpen() && manager.table.viewport()->findChild<QLineEdit *>());
        QTest::keyClick(manager.table.viewport()->findChild<QLineEdit *>(), Qt::Key_Escape);
        QTest::keyClick(&manager.table, Qt::Key_Delete);
        manager.filter.setText(QStringLiteral("sea"));
        QCOMPARE(manager.rows(), QStringLiteral("<b>bold</b>:0 sea:2")); // what is to be deleted stays in sight
    }

    void theManagerCommitsOrForgets()
    {
        KeywordDesk desk;
        desk.library.setDirty(false);
        for (const bool commits : {false, true}) {
            const Manager manager{desk.open<PIKeywordDialog>(Command::ManageKeywords)};
            manager.type(2, " new york ");
            for (const char *nothing : {"  ", "\"", "\" \""})
                manager.type(3, nothing);
            manager.type(1, "");
            manager.select(3);
            manager.table.setFocus();
            QTest::keyClick(&manager.table, Qt::Key_Delete);
            QVERIFY(manager.button("Undelete").isEnabled());
            QTest::keyClick(&manager.table, Qt::Key_Delete);
            QVERIFY(manager.button("Delete").isEnabled());
            manager.button("Delete").click();
            QVERIFY(manager.rows().contains(QLatin1String("\"new york\"")));
            QCOMPARE(desk.words(), QStringLiteral("boat sea|sea|boat|sea <b>"));
            manager.button(commits ? "OK" : "Cancel").click();
            QTRY_VERIFY(!desk.isOpen());
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        QCOMPARE(desk.words(), QStringLiteral("\"new york\"||\"new york\"|<b>"));
        QVERIFY(desk.library.isDirty());
        auto &field = *desk.controller->window().findChild<PIDetailWordsVC *>()->findChildren<WordField *>().last();
        QCOMPARE(field.text(), QStringLiteral("\"new york\""));
    }

    void theManagerGoesToAPhoto()
    {
        KeywordDesk desk;
        const Manager manager{desk.open<PIKeywordDialog>(Command::ManageKeywords)};
        manager.type(3, "lake");
        QTRY_VERIFY(manager.shows("3 photos"));
        manager.results.setFocus();
        QTest::keyClick(&manager.results, Qt::Key_Home);
        QTest::keyClick(&manager.results, Qt::Key_End);
        QTest::keyClick(&manager.results, Qt::Key_Return);
        QTRY_VERIFY(!desk.isOpen());
        QCOMPARE(desk.controller->shownFolder(), desk.second);
        QCOMPARE(desk.controller->selectedIndexes(), IndexSet::single(1));
        QCOMPARE(desk.controller->currentPhoto(), desk.photos.last());
        QCOMPARE(desk.words(), QStringLiteral("boat lake|lake|boat|lake <b>"));
    }

    void aKeywordIsAddedToThePhotosThatWereSelected()
    {
        KeywordDesk desk;
        desk.controller->selectIndexes(IndexSet::range(0, 2));
        {
            auto &dialog = desk.open<PIAddKeywordDialog>(Command::AddKeyword);
            auto *field = dialog.findChild<QLineEdit *>();
            QTest::keyClicks(field, QStringLiteral("boat"));
            desk.controller->resetList(desk.second); // as at the end of an import
            QTest::keyClick(field, Qt::Key_Return);
            QTRY_VERIFY(!desk.isOpen());
            QCOMPARE(desk.words(), QStringLiteral("boat sea|sea boat|boat|sea <b>"));
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        desk.trigger(Command::Undo);
        QCOMPARE(desk.words(), QStringLiteral("boat sea|sea|boat|sea <b>"));

        desk.controller->undoManager().setDelegate(nullptr);
        auto &dialog = desk.open<PIAddKeywordDialog>(Command::AddKeyword);
        const auto items = dialog.findChild<QToolButton *>()->menu()->actions();
        items.at(3)->trigger();
        QCOMPARE(dialog.findChild<QLineEdit *>()->text(), QStringLiteral("sea"));
        QTest::keyClick(&dialog, Qt::Key_Return);
        QVERIFY(desk.isOpen()); // it was refused
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QTRY_VERIFY(!desk.isOpen());

        desk.controller->selectIndexes({});
        QVERIFY(!desk.controller->actions().action(Command::AddKeyword)->isEnabled());
        QVERIFY(desk.controller->actions().action(Command::ManageKeywords)->isEnabled());
    }

    void keywordsAreOfferedWhileOneIsTyped()
    {
        DetailScene scene;
        scene.library.keywords().setWords({QStringLiteral("\"new <b>york\""), QStringLiteral("news")});
        auto &field = scene.child<WordField>("Keywords");
        QAbstractItemView &list = listOf(field);
        field.setFocus();
        QTRY_VERIFY(field.hasFocus());
        const auto type = [&](const char *text) { // keys go to the list while it is open
            for (const char *key = text; *key; ++key)
                QTest::keyClick(list.isVisible() ? static_cast<QWidget *>(&list) : &field, *key);
        };
        type("boat, n");
        QVERIFY(list.isVisible());
        QCOMPARE(list.model()->rowCount(), 2);
        type("ews");
        QVERIFY(!list.isVisible());
        QTest::keyClick(&field, Qt::Key_Backspace);
        QTest::keyClick(&list, Qt::Key_Escape);
        QVERIFY(!list.isVisible());
        QCOMPARE(field.text(), QStringLiteral("boat, new"));
        type(" n");
        QTest::keyClick(&list, Qt::Key_Down);
        QTest::keyClick(&list, Qt::Key_Tab);
        QCOMPARE(field.text(), QStringLiteral("boat, new \"new <b>york\""));
        QVERIFY(!list.isVisible());
        field.undo();
        QCOMPARE(field.text(), QStringLiteral("boat, new n"));

        type("e");
        QTest::keyClick(&list, Qt::Key_Home); // what is offered belongs where the cursor was
        QVERIFY(!list.isVisible());
        Q_EMIT field.findChild<QCompleter *>()->activated(QStringLiteral("news"));
        QCOMPARE(field.text(), QStringLiteral("boat, new ne"));

        field.selectAll();
        type("n");
        QTest::keyClick(&list, Qt::Key_Return); // nothing was chosen: the text is what counts
        QVERIFY(!list.isVisible());
        QCOMPARE(scene.photo->keywordList(scene.library.keywords()), QString());
        type("ne");
        QTest::keyClick(&list, Qt::Key_Tab);
        QTRY_VERIFY(!field.hasFocus());
        QCOMPARE(scene.photo->keywordList(scene.library.keywords()), QStringLiteral("ne"));
    }
};

REGISTER_TEST(TestKeywordDialogs)
#include "TestKeywordDialogs.moc"
