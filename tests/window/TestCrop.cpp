#include "WindowDesk.h"

#include "CropSizes.h"
#include "FakeAlerts.h"
#include "PIDetailController.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "TestRunner.h"
#include "ThumbnailGridView.h"
#include "WindowPreferences.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTest>

namespace {

/// The window on a folder of three photos of 64 x 48 pixels, the first selected and sharp.
struct CropGallery : WindowDesk
{
    QScopedValueRollback<int> chosenSize{g_cropSizeIndex, 0};
    PIGroup::PhotoList photos;

    CropGallery()
    {
        Decoder::initialize();
        const auto folder = group()->lastFolder();
        for (const char *name : {"a.png", "b.png", "c.png"})
            photos << std::make_shared<PIPhoto>(
                library.fileRefs().fileRefForPath(makePicture(QString::fromLatin1(name))));
        folder->photos() = photos;
        controller->resetList(folder);
        controller->selectIndexes(IndexSet::single(0));
        controller->window().activateWindow();
        (void)QTest::qWaitForWindowActive(&controller->window());
        controller->thumbnailView().setFocus();
        [&] { QTRY_COMPARE(view().state(), PhotoView::State::Sharp); }();
    }
    [[nodiscard]] PIImageView &view() const { return controller->detailController().photoView(); }
    [[nodiscard]] QAction &action(Command command) const { return *controller->actions().action(command); }
    [[nodiscard]] QAction &size(int index) const { return *controller->cropSizesMenu().actions().at(index); }
    template<typename Widget>
    [[nodiscard]] Widget &named(const char *accessibleName) const
    {
        for (auto *widget : controller->window().findChildren<Widget *>()) {
            if (widget->accessibleName() == QLatin1String(accessibleName))
                return *widget;
        }
        qFatal("no such widget");
    }
    [[nodiscard]] QString sizeField() const { return named<QLabel>("Crop size").text(); }
    [[nodiscard]] bool canUncrop() const { return named<QPushButton>("Uncrop").isEnabled(); }
};

}

/// Cropping in the library window.
class TestCrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandBeginsAndCancels()
    {
        CropGallery gallery;
        QCOMPARE(gallery.action(Command::Crop).text(), QStringLiteral("Crop"));
        QCOMPARE(gallery.sizeField(), QStringLiteral("None"));
        QVERIFY(!gallery.canUncrop());
        gallery.trigger(Command::Crop);
        QVERIFY(gallery.view().isCropping() && gallery.view().hasFocus());
        QCOMPARE(gallery.action(Command::Crop).text(), QStringLiteral("Cancel Crop"));
        QCOMPARE(gallery.sizeField(), QStringLiteral("64 x 48"));
        QVERIFY(!gallery.canUncrop());
        gallery.trigger(Command::Crop);
        QVERIFY(!gallery.view().isCropping() && gallery.controller->thumbnailView().hasFocus());
        QCOMPARE(gallery.sizeField(), QStringLiteral("None"));

        gallery.controller->selectIndexes(IndexSet::range(0, 2));
        QVERIFY(!gallery.action(Command::Crop).isEnabled());
        gallery.controller->selectIndexes({});
        QVERIFY(!gallery.action(Command::Crop).isEnabled());
    }

    void aDamagedOrMissingFileHasNoCrop()
    {
        CropGallery gallery;
        QFile file(gallery.photos.at(1)->fileRef()->path());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("this is no picture") > 0);
        file.close();
        QVERIFY(QFile::remove(gallery.photos.at(2)->fileRef()->path()));
        for (const qint64 position : {1, 2}) {
            gallery.controller->selectIndexes(IndexSet::single(position));
            QTRY_VERIFY(!gallery.action(Command::Crop).isEnabled());
        }
    }

    void aSizeIsChosen()
    {
        CropGallery gallery;
        QVERIFY(gallery.size(0).isChecked() && !gallery.action(Command::SelectUncropped).isEnabled());
        QVERIFY(gallery.size(1).text().contains(u"3.5") && gallery.size(1).text().contains(u'2'));
        gallery.trigger(Command::ShowDetail); // hides it
        gallery.size(3).trigger();
        QVERIFY(gallery.view().isVisible());
        QCOMPARE(gallery.sizeField(), QStringLiteral("64 x 42"));
        QCOMPARE(gallery.defaults.value(WindowPreferences::kCropSize), 3);
        QVERIFY(gallery.size(3).isChecked() && !gallery.size(0).isChecked());
        gallery.size(1).trigger(); // begins anew
        QCOMPARE(gallery.sizeField(), QStringLiteral("64 x 36"));
        gallery.size(0).trigger();
        QVERIFY(!gallery.view().isCropping());
        QVERIFY(gallery.photos.first()->cropRect().isEmpty());
    }

    void theUncroppedAreSelected()
    {
        CropGallery gallery;
        gallery.size(3).trigger();
        QTest::keyClick(&gallery.view(), Qt::Key_Return);
        QCOMPARE(gallery.photos.first()->cropRect().size(), QSizeF(64, 42));
        QVERIFY(gallery.canUncrop());
        gallery.trigger(Command::SelectUncropped);
        QCOMPARE(gallery.controller->selectedIndexes(), IndexSet::range(1, 2));
    }

    void aPhotoOfTheGridIsCroppedAfterTheOther()
    {
        CropGallery gallery;
        gallery.trigger(Command::Crop);
        gallery.trigger(Command::NextPhoto);
        QCOMPARE(gallery.photos.at(0)->cropRect().size(), QSizeF(64, 48));
        QVERIFY(gallery.view().isCropping());
        QVERIFY(gallery.controller->thumbnailView().hasFocus()); // and goes on to the next by its keys
        gallery.trigger(Command::ClearCrop);
        QVERIFY(!gallery.view().isCropping());
    }

    void undoTakesBackWhatIsBeingDrawn()
    {
        CropGallery gallery;
        gallery.photos.first()->setCropRect({0, 0, 32, 32});
        gallery.controller->selectIndexes(IndexSet::single(0));
        gallery.trigger(Command::ClearCrop);
        QVERIFY(gallery.photos.first()->cropRect().isEmpty());
        QTRY_COMPARE(gallery.view().state(), PhotoView::State::Sharp);
        gallery.trigger(Command::Crop);
        gallery.trigger(Command::Undo); // one step with the one before, of the same photo
        QVERIFY(!gallery.view().isCropping());
        QCOMPARE(gallery.photos.first()->cropRect(), QRectF(0, 0, 32, 32));
        gallery.trigger(Command::Redo);
        QCOMPARE(gallery.photos.first()->cropRect(), QRectF(0, 0, 64, 48));
    }
};

REGISTER_TEST(TestCrop)
#include "TestCrop.moc"
