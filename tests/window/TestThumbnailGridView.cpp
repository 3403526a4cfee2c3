#include "CameraFile.h"
#include "TestRunner.h"

#include "Decoder.h"
#include "FileFinder.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailGridView.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QFile>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextDocumentFragment>
#include <QWheelEvent>

namespace {

/// A library with one folder, and the grid beside it.
struct Desk
{
    QTemporaryDir dir;
    NotificationCenter notifications;
    PathFileFinder finder;
    PhotoLibrary library;
    std::shared_ptr<PIFolder> folder = std::make_shared<PIFolder>(QStringLiteral("Folder"));
    ThumbnailGridView view;

    explicit Desk(const QString &thumbnails = {})
        : library(thumbnails.isEmpty() ? dir.path() : thumbnails, finder, notifications)
        , view(library)
    {
        Decoder::initialize();
        view.resize(620, 500);
    }

    /// Photos whose files are nowhere.
    Desk &addPhotos(int count)
    {
        for (int number = 0; number < count; ++number)
            add(QStringLiteral("nowhere/%1.jpg").arg(number));
        return *this;
    }
    std::shared_ptr<PIPhoto> add(const QString &name)
    {
        folder->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(dir.filePath(name))));
        return folder->photos().last();
    }
    std::shared_ptr<PIPhoto> addFile(const QString &name, const QByteArray &bytes)
    {
        QFile file(dir.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? add(name) : nullptr;
    }
    Desk &show()
    {
        view.setFolder(folder);
        view.show();
        (void)QTest::qWaitForWindowExposed(&view);
        return *this;
    }

    [[nodiscard]] QModelIndex index(int row) const { return view.model()->index(row, 0); }
    [[nodiscard]] QPoint center(int row) const { return view.visualRect(index(row)).center(); }
    [[nodiscard]] QString selected() const { return view.selectedPositions().archive(); }
    void click(int row, Qt::KeyboardModifiers modifiers = {}, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(view.viewport(), button, modifiers, center(row));
    }
    void drag(QPoint to) // QTest's moves carry no buttons
    {
        QMouseEvent move(QEvent::MouseMove, to, view.viewport()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view.viewport(), &move);
    }
    [[nodiscard]] QColor colorAt(int row) { return view.viewport()->grab().toImage().pixelColor(center(row)); }
};

bool isAbout(const QColor &color, const QColor &wanted)
{
    return std::abs(color.red() - wanted.red()) < 12 && std::abs(color.green() - wanted.green()) < 12 &&
           std::abs(color.blue() - wanted.blue()) < 12;
}

}

class TestThumbnailGridView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysMoveAndSelectAmongAHundredThousand()
    {
        Desk desk;
        desk.addPhotos(100'000).show();
        QSignalSpy changed(&desk.view, &ThumbnailGridView::selectedPhotosChanged);
        QCOMPARE(desk.selected(), QStringLiteral("0"));
        const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(&desk.view, key, modifiers);
            return desk.selected();
        };
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("1"));
        QCOMPARE(press(Qt::Key_Down), QStringLiteral("5"));
        QCOMPARE(press(Qt::Key_Right, Qt::ShiftModifier), QStringLiteral("5-6"));
        QCOMPARE(press(Qt::Key_Left, Qt::ShiftModifier), QStringLiteral("5"));
        QCOMPARE(changed.count(), 4);
        QCOMPARE(press(Qt::Key_End), QStringLiteral("99999"));
        QVERIFY(desk.view.viewport()->rect().contains(desk.view.visualRect(desk.index(99'999))));
        QCOMPARE(desk.view.currentPhoto(), desk.folder->photos().last());
        QCOMPARE(press(Qt::Key_Home, Qt::ShiftModifier), QStringLiteral("0-99999"));
        QCOMPARE(press(Qt::Key_End), QStringLiteral("99999"));
        QCOMPARE(press(Qt::Key_A, Qt::ControlModifier), QStringLiteral("0-99999"));
        QCOMPARE(press(Qt::Key_Up, Qt::ControlModifier), QStringLiteral("0-99999"));
        QCOMPARE(press(Qt::Key_Space, Qt::ControlModifier), QStringLiteral("0-99994 99996-99999"));
        QCOMPARE(desk.folder->selection(), desk.view.selectedPositions());
    }

    void typingFindsAFileName()
    {
        Desk desk;
        desk.add(QStringLiteral("apple.jpg"));
        desk.add(QStringLiteral("pear.jpg"));
        desk.add(QStringLiteral("plum.jpg"));
        desk.show();
        QTest::keyClicks(&desk.view, QStringLiteral("pl"));
        QCOMPARE(desk.selected(), QStringLiteral("2"));
    }

    void clicksSelect()
    {
        Desk desk;
        desk.addPhotos(30).show();
        desk.click(5);
        QCOMPARE(desk.selected(), QStringLiteral("5"));
        desk.click(9, Qt::ShiftModifier);
        QCOMPARE(desk.selected(), QStringLiteral("5-9"));
        desk.click(7, Qt::ControlModifier);
        QCOMPARE(desk.selected(), QStringLiteral("5-6 8-9"));
        QCOMPARE(desk.view.leadingPhoto(), desk.folder->photos().at(6)); // 7 is no longer one of them

        // A press keeps a selection of several, for a menu or a drag; only the release chooses the one.
        QTest::mousePress(desk.view.viewport(), Qt::LeftButton, {}, desk.center(8));
        QCOMPARE(desk.selected(), QStringLiteral("5-6 8-9"));
        QTest::mouseRelease(desk.view.viewport(), Qt::LeftButton, {}, desk.center(8));
        QCOMPARE(desk.selected(), QStringLiteral("8"));
        desk.click(9, Qt::ControlModifier);
        desk.click(8, {}, Qt::RightButton);
        QCOMPARE(desk.selected(), QStringLiteral("8-9"));
        desk.click(2, {}, Qt::RightButton);
        QCOMPARE(desk.selected(), QStringLiteral("2"));
    }

    void rubberBand()
    {
        Desk desk;
        desk.addPhotos(30).show();
        QWidget *viewport = desk.view.viewport();
        const QPoint gap = desk.view.visualRect(desk.index(1)).topLeft();
        QTest::mousePress(viewport, Qt::LeftButton, {}, gap);
        QCOMPARE(desk.selected(), QString());
        desk.drag(desk.center(6));
        QCOMPARE(desk.selected(), QStringLiteral("1-2 5-6"));
        desk.drag(desk.center(2));
        QCOMPARE(desk.selected(), QStringLiteral("1-2"));
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, desk.center(2));
        QTest::mousePress(viewport, Qt::LeftButton, Qt::ControlModifier, gap);
        desk.drag(desk.center(5));
        QCOMPARE(desk.selected(), QStringLiteral("2 5"));
        QCOMPARE(desk.view.currentPhoto(), desk.view.leadingPhoto());
        QTest::mouseRelease(viewport, Qt::LeftButton, Qt::ControlModifier, desk.center(5));
        desk.drag(desk.center(11)); // no band any more
        QCOMPARE(desk.selected(), QStringLiteral("2 5"));
    }

    void aBandHeldBelowTheViewScrolls()
    {
        Desk desk;
        desk.addPhotos(80).show();
        QTest::mousePress(desk.view.viewport(), Qt::LeftButton, {}, desk.view.visualRect(desk.index(0)).topLeft());
        desk.drag({600, desk.view.viewport()->height() + 200});
        QTRY_COMPARE(desk.selected(), QStringLiteral("0-79"));
        QTRY_COMPARE(desk.view.verticalScrollBar()->value(), desk.view.verticalScrollBar()->maximum());
    }

    void enterAndDoubleClickActivate()
    {
        Desk desk;
        desk.addPhotos(10).show();
        QSignalSpy activated(&desk.view, &ThumbnailGridView::photoActivated);
        QTest::keyClick(&desk.view, Qt::Key_Right);
        QTest::keyClick(&desk.view, Qt::Key_Return);
        QTest::mouseDClick(desk.view.viewport(), Qt::LeftButton, {}, desk.center(6));
        QTest::mouseDClick(desk.view.viewport(), Qt::LeftButton, {}, {1, 1});
        QCOMPARE(activated.count(), 2);
        QCOMPARE(activated.at(0).first().toInt(), 1);
        QCOMPARE(activated.at(1).first().toInt(), 6);
    }

    void columnsChangeByKeysAndWheel()
    {
        Desk desk;
        desk.addPhotos(5000).show();
        QSignalSpy changed(&desk.view, &ThumbnailGridView::columnCountChanged);
        desk.view.setColumnCount(0);
        QCOMPARE(desk.view.columnCount(), 1);
        desk.view.setColumnCount(99);
        QCOMPARE(desk.view.columnCount(), 20);
        QCOMPARE(changed.count(), 2);
        desk.view.setColumnCount(5);
        QTest::keyClick(&desk.view, Qt::Key_Plus);
        QCOMPARE(desk.view.columnCount(), 4);
        QTest::keyClick(&desk.view, Qt::Key_Minus);
        QCOMPARE(desk.view.columnCount(), 5);

        const auto turn = [&](int angle, Qt::KeyboardModifiers modifiers) {
            const QPoint at(100, 100);
            QWheelEvent event(at, desk.view.mapToGlobal(at), {}, {0, angle}, {}, modifiers, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(desk.view.viewport(), &event);
        };
        turn(60, Qt::ControlModifier);
        QCOMPARE(desk.view.columnCount(), 5);
        turn(60, Qt::ControlModifier);
        QCOMPARE(desk.view.columnCount(), 4);
        turn(-240, Qt::ControlModifier);
        QCOMPARE(desk.view.columnCount(), 6);
        turn(-240, {});
        QCOMPARE(desk.view.columnCount(), 6);
        QVERIFY(desk.view.verticalScrollBar()->value() > 0);

        // Steps start from what is seen.
        for (int step = 0; step < 30; ++step)
            desk.view.addColumns(1);
        QCOMPARE(desk.view.columnCount(), GridLayout(1, 1, desk.view.viewport()->width(), 0).maxColumns());
        QVERIFY(!desk.view.canAddColumns(1));
        desk.view.setColumnCount(20);
        const int width = desk.view.visualRect(desk.index(0)).width();
        desk.view.addColumns(-1);
        QVERIFY(desk.view.visualRect(desk.index(0)).width() > width);
    }

    void theCurrentPhotoStaysInSightWhileZooming()
    {
        Desk desk;
        desk.addPhotos(5000).show();
        desk.view.selectIndexes(IndexSet::single(2500));
        desk.view.scrollToSelection();
        for (const int columns : {7, 2, 1, 20, 4}) {
            desk.view.setColumnCount(columns);
            QVERIFY2(desk.view.viewport()->rect().contains(desk.center(2500)), qPrintable(QString::number(columns)));
        }
    }

    void theScrollBarComesWhenItIsNeededAndRests()
    {
        Desk desk;
        desk.addPhotos(9).show();
        desk.view.setColumnCount(3);
        for (int height = 560; height < 680; ++height) {
            desk.view.resize(600, height);
            QCoreApplication::processEvents();
            const QRect last = desk.view.visualRect(desk.index(8));
            QCOMPARE(desk.view.verticalScrollBar()->maximum() > 0, desk.view.verticalScrollBar()->isVisible());
            QVERIFY(desk.view.verticalScrollBar()->isVisible() || last.bottom() < desk.view.viewport()->height());
        }
    }

    void foldersRememberTheirSelection()
    {
        Desk desk;
        desk.addPhotos(20).show();
        desk.view.selectIndexes(IndexSet::range(3, 4));
        const auto other = std::make_shared<PIFolder>();
        QSignalSpy changed(&desk.view, &ThumbnailGridView::selectedPhotosChanged);
        desk.view.setFolder(other);
        QCOMPARE(desk.selected(), QString());
        QVERIFY(!desk.view.currentPhoto());
        desk.view.setFolder(nullptr);
        QVERIFY(!desk.view.folder());
        QCOMPARE(desk.folder->selection().archive(), QStringLiteral("3-6"));
        desk.view.setFolder(desk.folder);
        QCOMPARE(desk.selected(), QStringLiteral("3-6"));
        QCOMPARE(desk.view.currentPhoto(), desk.folder->photos().at(3));
        QCOMPARE(changed.count(), 3);

        desk.folder->photos().resize(5);
        desk.view.setFolder(nullptr);
        desk.view.setFolder(desk.folder);
        QCOMPARE(desk.selected(), QStringLiteral("3-4"));
    }

    void reloadKeepsTheSamePhotosSelected()
    {
        Desk desk;
        desk.addPhotos(20).show();
        auto &photos = desk.folder->photos();
        IndexSet wanted = IndexSet::range(5, 3);
        wanted.add(12);
        desk.view.selectIndexes(wanted);
        QSignalSpy changed(&desk.view, &ThumbnailGridView::selectedPhotosChanged);
        desk.view.reload();
        QCOMPARE(changed.count(), 0);

        photos.remove(0, 2);
        photos.removeAt(4);                               // the second of those selected
        QCOMPARE(desk.view.currentPhoto(), photos.at(3)); // nothing is taken up before the reload
        desk.view.reload();
        QCOMPARE(desk.selected(), QStringLiteral("3-4 9"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(desk.view.currentPhoto(), photos.at(3));

        std::reverse(photos.begin(), photos.end());
        photos[7] = photos.at(7)->copy(); // as undoing does; it stands at 9 from the other end
        desk.view.reload();
        QCOMPARE(desk.selected(), QStringLiteral("7 12-13"));

        photos.clear();
        desk.view.reload();
        QCOMPARE(desk.selected(), QString());
        QVERIFY(!desk.view.currentPhoto());
    }

    void scatteredSelectionsAreExchanged()
    {
        Desk desk;
        desk.addPhotos(40'000).show();
        IndexSet odd;
        IndexSet even;
        for (int index = 0; index < 40'000; index += 2) {
            even.add(index);
            odd.add(index + 1);
        }
        QSignalSpy changed(&desk.view, &ThumbnailGridView::selectedPhotosChanged);
        desk.view.selectIndexes(even);
        desk.view.selectIndexes(odd);
        QCOMPARE(desk.view.selectedPositions(), odd);
        QCOMPARE(changed.count(), 2);
        desk.view.selectIndexes(IndexSet::range(39'990, 1000));
        QCOMPARE(desk.selected(), QStringLiteral("39990-39999"));
    }

    void linesOfTextMakeTheTilesHigher()
    {
        Desk desk;
        desk.addFile(QStringLiteral("a.jpg"), CameraFile::jpeg(Qt::red, {80, 60}));
        desk.addPhotos(1000).show();
        const auto height = [&] { return desk.view.visualRect(desk.index(0)).height(); };
        const int bare = height();
        desk.view.setShown(TileLine::Caption);
        const int one = height();
        desk.view.setShown(TileLine::Caption | TileLine::Date | TileLine::FileName);
        QCOMPARE(desk.view.shown(), TileText(TileLine::Caption | TileLine::Date | TileLine::FileName));
        QVERIFY(bare < one);
        QCOMPARE(height() - one, 2 * desk.view.fontMetrics().height());
        QTRY_VERIFY(!desk.index(0).data(ThumbnailGridModel::DateRole).toString().isEmpty());
        desk.view.setShown({});
        QCOMPARE(height(), bare);
    }

    void theModelTellsOfEachPhoto()
    {
        Desk desk;
        const auto photo = desk.addFile(QStringLiteral("my [photo].jpg"), CameraFile::jpeg(Qt::red, {80, 60}));
        photo->setCaption(QStringLiteral("Harbour"));
        photo->setMarked(true);
        desk.folder->photos().append(std::make_shared<PIPhoto>()); // of no file at all
        ThumbnailGridModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setFolder(desk.folder);
        const QModelIndex first = model.index(0);
        QCOMPARE(first.data(Qt::ToolTipRole).toString(), QStringLiteral("my [photo].jpg"));
        QCOMPARE(first.data(ThumbnailGridModel::LostRole).toBool(), false);
        QCOMPARE(model.index(1).data(ThumbnailGridModel::LostRole).toBool(), true);

        photo->fileRef()->setFileLost(true);
        QCOMPARE(first.data(Qt::ToolTipRole).toString(), QStringLiteral("my [photo].jpg\nFile missing"));
        photo->fileRef()->setVolumeAway(true);
        QCOMPARE(first.data(Qt::ToolTipRole).toString(), QStringLiteral("my [photo].jpg\nVolume not mounted"));
        QVERIFY(first.data(Qt::AccessibleTextRole).toString().endsWith(QStringLiteral(", volume not mounted")));
        model.learnDate(1);
        QVERIFY(model.isDateKnown(1));
        QVERIFY(!model.isDateKnown(0));
    }

    void namesAreNoMarkup()
    {
        Desk desk;
        desk.add(QStringLiteral("a<b>x.jpg"));
        desk.show();
        const QString shown = desk.index(0).data(Qt::ToolTipRole).toString();
        QCOMPARE(QTextDocumentFragment::fromHtml(shown).toPlainText(), QStringLiteral("a<b>x.jpg\nFile missing"));
    }

    void assistiveToolsSeeAListOfPhotos()
    {
        Desk desk;
        desk.addPhotos(100'000);
        desk.folder->photos().at(1)->setCaption(QStringLiteral("Harbour"));
        desk.folder->photos().at(1)->setMarked(true);
        desk.show();
        desk.view.activateWindow();
        desk.view.setFocus();
        QTRY_VERIFY(desk.view.hasFocus());

        QAccessibleInterface *list = QAccessible::queryAccessibleInterface(&desk.view);
        QVERIFY(list);
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->text(QAccessible::Name), QStringLiteral("Photos"));
        QCOMPARE(list->childCount(), 100'000);
        QVERIFY(!list->child(100'000));
        QTest::keyClick(&desk.view, Qt::Key_Right);
        QAccessibleInterface *photo = list->focusChild();
        QVERIFY(photo && photo == list->child(1));
        QCOMPARE(photo->role(), QAccessible::ListItem);
        QCOMPARE(photo->text(QAccessible::Name), QStringLiteral("1.jpg, Harbour, marked, file missing"));
        QCOMPARE(photo->parent(), list);
        QCOMPARE(list->indexOfChild(photo), 1);
        QVERIFY(photo->state().selected && photo->state().focused && !photo->state().offscreen);
        QVERIFY(!list->child(0)->state().selected && list->child(90'000)->state().offscreen);
        QCOMPARE(list->childAt(photo->rect().center().x(), photo->rect().center().y()), photo);

        desk.view.setFolder(nullptr);
        QCOMPARE(list->childCount(), 0);
        QVERIFY(!photo->isValid());
    }

    void thumbnailsAppearAndFollowTheirFiles()
    {
        Desk desk;
        const auto photo = desk.addFile(QStringLiteral("a.jpg"), CameraFile::jpeg(Qt::red, {800, 600}));
        desk.addFile(QStringLiteral("b.jpg"), CameraFile::jpeg(Qt::green, {600, 800}));
        desk.addFile(QStringLiteral("c.jpg"), QByteArray("no picture"));
        desk.addFile(QStringLiteral("d.jpg"), CameraFile::jpeg(Qt::blue, {30, 30}));
        desk.show();
        QTRY_VERIFY(isAbout(desk.colorAt(0), Qt::red));
        QTRY_VERIFY(isAbout(desk.colorAt(1), Qt::green));
        QTRY_VERIFY(isAbout(desk.colorAt(3), Qt::blue));
        // A small picture is not blown up.
        const QPoint beside = desk.center(3) + QPoint(25, 0);
        QVERIFY(!isAbout(desk.view.viewport()->grab().toImage().pixelColor(beside), Qt::blue));

        QFile file(desk.dir.filePath(QStringLiteral("a.jpg")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(CameraFile::jpeg(Qt::yellow, {800, 600}));
        file.close();
        desk.library.thumbnails().fileChanged(*photo);
        QTRY_VERIFY(isAbout(desk.colorAt(0), Qt::yellow));
    }

    void aMarkShowsAtOnce()
    {
        Desk desk;
        const auto photo = desk.addFile(QStringLiteral("a.jpg"), CameraFile::jpeg(Qt::red, {800, 600}));
        desk.show();
        QTRY_VERIFY(isAbout(desk.colorAt(0), Qt::red));
        const QImage before = desk.view.viewport()->grab().toImage();
        photo->setMarked(true);
        desk.notifications.post(kThumbnailNotification, photo);
        QTRY_VERIFY(desk.view.viewport()->grab().toImage() != before);
        QVERIFY(isAbout(desk.colorAt(0), Qt::red));
    }

    void theCamerasPictureStandsInForAThumbnail()
    {
        QTemporaryDir outside;
        Desk desk(outside.filePath(QStringLiteral("gone"))); // no thumbnail can ever be written there
        const auto untouched = desk.addFile(QStringLiteral("a.jpg"), CameraFile::twoColors(Qt::red, Qt::green));
        const auto cropped = desk.addFile(QStringLiteral("b.jpg"), CameraFile::twoColors(Qt::red, Qt::green));
        desk.addFile(QStringLiteral("c.jpg"), CameraFile::jpeg(Qt::red, {800, 600}));
        cropped->setCropRect({0, 0, 100, 100});
        desk.show();
        QTRY_VERIFY(isAbout(desk.colorAt(0), Qt::green));
        QVERIFY(!isAbout(desk.colorAt(1), Qt::green));
        QVERIFY(!isAbout(desk.colorAt(2), Qt::red));
    }
};

REGISTER_TEST(TestThumbnailGridView)
#include "TestThumbnailGridView.moc"
