#include "../editing/UndoHouse.h"
#include "../imaging/FakeFilterBackEnd.h"

#include "EffectList.h"
#include "EffectPreview.h"
#include "PIEffectDialog.h"
#include "TestRunner.h"
#include "UserDefaults.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace {

const QString kBlur = QStringLiteral("CICategoryBlur");

/// A library with one photo of red, two filters that paint it, and the dialog over them.
struct Stage : UndoHouse
{
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
    FakeFilterBackEnd filters;
    std::unique_ptr<FilterCatalogue> catalogue;
    std::shared_ptr<PIPhoto> photo;
    QWidget window;
    QPointer<PIEffectDialog> dialog;

    Stage()
    {
        const auto paint = [](Qt::GlobalColor color) {
            return [color](const EffectEntry &, QImage image) {
                image.fill(color);
                return image;
            };
        };
        filters.offer(kBlur, QStringLiteral("CIColorControls"), {}, paint(Qt::green));
        filters.offer(kBlur, QStringLiteral("CIBlue"), {}, paint(Qt::blue));
        installFilterBackEnd(&filters);
        catalogue = std::make_unique<FilterCatalogue>(filters);
        QImage image(60, 40, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QString path = dir.filePath(QStringLiteral("a.png"));
        image.save(path);
        photo = std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
        a->photos() << photo;
        view.folder = a;
        window.show();
    }
    ~Stage()
    {
        delete dialog;
        QTRY_VERIFY(!dialog);
        installFilterBackEnd(nullptr);
    }

    void open()
    {
        dialog = PIEffectDialog::editPhotoEffects(undoable, *catalogue, defaults, photo, window);
        (void)QTest::qWaitForWindowExposed(dialog);
    }
    EffectList &list() const { return *dialog->findChild<EffectList *>(); }
    /// The row of that title in the category; empty for the category itself.
    QTreeWidgetItem *row(const char *category, const char *title = "") const
    {
        for (int i = 0; i < list().topLevelItemCount(); ++i) {
            QTreeWidgetItem *top = list().topLevelItem(i);
            if (top->text(0) != QLatin1String(category))
                continue;
            if (!*title)
                return top;
            for (int k = 0; k < top->childCount(); ++k) {
                if (top->child(k)->text(0) == QLatin1String(title))
                    return top->child(k);
            }
        }
        return nullptr;
    }
    void click(QTreeWidgetItem *item) const
    {
        list().scrollToItem(item);
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().visualItemRect(item).center());
    }
    QPushButton *button(const char *text) const
    {
        for (auto *each : dialog->findChildren<QPushButton *>()) {
            if (each->text().remove(u'&') == QLatin1String(text))
                return each;
        }
        return nullptr;
    }
    QString enabled() const
    {
        QString names;
        for (const char *name : {"Add", "Remove"})
            names += button(name)->isEnabled() ? QLatin1String(name) : QLatin1String("-");
        return names;
    }
    QStringList applied() const
    {
        QStringList names;
        const QTreeWidgetItem *top = list().topLevelItem(0);
        for (int i = 0; i < top->childCount(); ++i)
            names << top->child(i)->text(0);
        return names;
    }
    bool says(const QString &text) const
    {
        const auto labels = dialog->findChildren<QLabel *>();
        return std::any_of(labels.cbegin(), labels.cend(), [&](const auto *label) { return label->text() == text; });
    }
    QColor shown() const
    {
        auto &preview = *dialog->findChild<EffectPreview *>();
        return preview.grab().toImage().pixelColor(preview.width() / 2, preview.height() / 2);
    }
    QStringList effects() const
    {
        QStringList names;
        for (const EffectEntry &entry : photo->filterDicts())
            names << entry.filterName();
        return names;
    }
};

}

/// The effects dialog, driven as a user does it.
class TestEffectDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEffectIsTriedAddedComparedAndTaken()
    {
        Stage stage;
        stage.open();
        QTRY_COMPARE(stage.shown(), QColor(Qt::red));
        stage.click(stage.row("Blur", "The CIBlue"));
        QTRY_COMPARE(stage.shown(), QColor(Qt::blue));
        QVERIFY(stage.says(QStringLiteral("The CIBlue (trial)")));
        QCOMPARE(stage.enabled(), QStringLiteral("Add-"));
        stage.click(stage.row("Standard Effects", "The CIColorControls"));
        QTRY_COMPARE(stage.shown(), QColor(Qt::green));
        QCOMPARE(stage.applied(), QStringList{QStringLiteral("The CIColorControls")});
        QTest::keyPress(&stage.list(), Qt::Key_F8);
        QCOMPARE(stage.shown(), QColor(Qt::red));
        QTest::keyRelease(&stage.list(), Qt::Key_F8);
        QCOMPARE(stage.shown(), QColor(Qt::green));
        stage.button("Add")->click();
        QVERIFY(stage.says(QStringLiteral("The CIColorControls")));
        QCOMPARE(stage.enabled(), QStringLiteral("-Remove"));
        QVERIFY(stage.effects().isEmpty());
        stage.button("OK")->click();
        QTRY_VERIFY(!stage.dialog);
        QCOMPARE(stage.effects(), QStringList{QStringLiteral("CIColorControls")});
        stage.manager.undo();
        QVERIFY(stage.effects().isEmpty());
    }

    void givingUpLeavesThePhotoAlone()
    {
        Stage stage;
        stage.open();
        stage.click(stage.row("Blur", "The CIBlue"));
        stage.button("Add")->click();
        QTest::keyClick(stage.dialog, Qt::Key_Escape);
        QTRY_VERIFY(!stage.dialog);
        QVERIFY(stage.effects().isEmpty());
        QVERIFY(!stage.manager.isUndoAvailable());
        QCOMPARE(stage.library.thumbnails().sequenceCount(), quint64(0)); // nothing was made for the working copy
    }

    void appliedEffectsAreRemovedAlsoUnknownOnes()
    {
        Stage stage;
        stage.photo->setFilterDicts({EffectEntry(QStringLiteral("CIBlue")), EffectEntry(QStringLiteral("CIForeign"))});
        stage.open();
        QTRY_COMPARE(stage.shown(), QColor(Qt::blue));
        for (const char *name : {"CIForeign", "The CIBlue"}) {
            stage.click(stage.row("Applied Effects", name));
            QCOMPARE(stage.enabled(), QStringLiteral("-Remove"));
            stage.button("Remove")->click();
            QCOMPARE(stage.enabled(), QStringLiteral("--"));
        }
        QTRY_COMPARE(stage.shown(), QColor(Qt::red));
        stage.button("OK")->click();
        QTRY_VERIFY(!stage.dialog);
        QVERIFY(stage.effects().isEmpty());
    }

    void keysOfTheSearchFieldStayThere()
    {
        Stage stage;
        stage.open();
        auto &find = *stage.dialog->findChild<QLineEdit *>();
        find.setFocus();
        QTest::keyClicks(&find, QStringLiteral("blue"));
        QTest::keyClick(&find, Qt::Key_Return);
        QVERIFY(stage.says(QStringLiteral("The CIBlue (trial)")));
        stage.click(stage.row("Blur")); // a heading
        QVERIFY(stage.says(QStringLiteral("The CIBlue (trial)")));
        find.setFocus();
        QTest::keyClick(&find, Qt::Key_Escape);
        QVERIFY(stage.dialog && stage.dialog->isVisible());
        QCOMPARE(find.text(), QString());
        QTest::keyClick(&find, Qt::Key_Escape);
        QTRY_VERIFY(!stage.dialog);
    }

    void categoriesStayAsTheyWereLeft()
    {
        Stage stage;
        stage.defaults.setDictionary(QStringLiteral("hmphoto.filterCatOpen"),
                                     {{QStringLiteral("PIPhotoFilters"), false}, {kBlur, QStringLiteral("nonsense")}});
        stage.open();
        QVERIFY(stage.row("Applied Effects")->isExpanded());
        QVERIFY(stage.row("Standard Effects")->isExpanded());
        QVERIFY(!stage.row("Sharpen")); // has no filters
        stage.row("Standard Effects")->setExpanded(false);
        stage.dialog->findChild<QLineEdit *>()->setText(QStringLiteral("color"));
        QVERIFY(stage.row("Standard Effects")->isExpanded() && stage.row("Blur")->isHidden());
        stage.dialog->reject();
        QTRY_VERIFY(!stage.dialog);
        stage.open();
        QVERIFY(!stage.row("Standard Effects")->isExpanded());
        QCOMPARE(stage.defaults.dictionary(QStringLiteral("hmphoto.filterCatOpen"))
                     .value(QStringLiteral("PIStandardFilters")),
                 QVariant(false));
    }
};

REGISTER_TEST(TestEffectDialog)
#include "TestEffectDialog.moc"
