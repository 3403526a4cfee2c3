#include "WindowDesk.h"

#include "Decoder.h"
#include "PIDetailController.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "PIPreview.h"
#include "PIPreviewController.h"
#include "TestRunner.h"
#include "ThumbnailGridView.h"

#include <QApplication>
#include <QTest>

namespace {

/// The window on a folder of four photos of 64 x 48 pixels, the first selected and sharp.
struct Gallery : WindowDesk
{
    PIGroup::PhotoList photos;

    Gallery()
    {
        Decoder::initialize();
        const auto folder = group()->lastFolder();
        for (const char *name : {"a.png", "b.png", "c.png", "d.png"})
            photos << std::make_shared<PIPhoto>(
                library.fileRefs().fileRefForPath(makePicture(QString::fromLatin1(name))));
        folder->photos() = photos;
        folder->setName(QStringLiteral("Shore"));
        controller->resetList(folder);
        controller->selectIndexes(IndexSet::single(0));
        controller->window().activateWindow();
        (void)QTest::qWaitForWindowActive(&controller->window());
        [&] { QTRY_COMPARE(view().state(), PhotoView::State::Sharp); }();
    }
    [[nodiscard]] PIImageView &view() const { return controller->detailController().photoView(); }
    [[nodiscard]] bool isEnabled(Command command) const { return controller->actions().action(command)->isEnabled(); }
    /// Of the preview that is open, which is closed then.
    [[nodiscard]] static QString previewTitle()
    {
        const auto *preview = qobject_cast<PIPreviewController *>(QApplication::activeModalWidget());
        const QString title = preview ? preview->windowTitle() : QString();
        if (preview)
            QTest::keyClick(&preview->view(), Qt::Key_Escape);
        return title;
    }
};

}

/// What shows photos large in the library window.
class TestLargePhoto : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandsZoomThePhoto()
    {
        Gallery gallery;
        gallery.trigger(Command::ShowDetail); // hides it
        gallery.trigger(Command::ZoomPhotoIn);
        QVERIFY(gallery.view().isVisible());
        QCOMPARE(gallery.view().scale(), 1.25);
        gallery.trigger(Command::PhotoAtFullSize);
        QCOMPARE(gallery.view().scale(), 1.0);
        gallery.trigger(Command::ZoomPhotoIn);
        gallery.trigger(Command::ZoomPhotoIn);
        gallery.trigger(Command::ZoomPhotoOut);
        QCOMPARE(gallery.view().scale(), 1.25);
        gallery.trigger(Command::FitPhoto);
        QVERIFY(gallery.view().isFitted());

        gallery.trigger(Command::ZoomPhotoIn);
        gallery.trigger(Command::Crop);
        QVERIFY(gallery.view().isFitted() && !gallery.isEnabled(Command::ZoomPhotoIn));
        gallery.trigger(Command::Crop);
        QVERIFY(gallery.isEnabled(Command::ZoomPhotoIn));
        gallery.controller->selectIndexes({});
        QVERIFY(!gallery.isEnabled(Command::PhotoAtFullSize));
    }

    /// After the first step the grid has the keys, and takes the next.
    void arrowsStepFromTheLargePhoto()
    {
        Gallery gallery;
        gallery.view().setFocus();
        QTest::keyClick(&gallery.view(), Qt::Key_Right);
        QCOMPARE(gallery.controller->selectedIndexes(), IndexSet::single(1));
        QVERIFY(gallery.controller->thumbnailView().hasFocus());
        gallery.view().setFocus();
        QTest::keyClick(&gallery.view(), Qt::Key_PageUp);
        QCOMPARE(gallery.view().photo(), gallery.photos.at(0));
    }

    void neighboursArePrepared()
    {
        Gallery gallery;
        const auto isPrepared = [&](int index) { return gallery.view().isPrepared(*gallery.photos.at(index)); };
        gallery.trigger(Command::NextPhoto);
        QTRY_VERIFY(isPrepared(2) && isPrepared(3));
        gallery.trigger(Command::NextPhoto);
        QCOMPARE(gallery.view().photo(), gallery.photos.at(2));
        QCOMPARE(gallery.view().state(), PhotoView::State::Sharp);
    }

    void thePreviewShowsTheSelectionOrTheFolder()
    {
        Gallery gallery;
        gallery.controller->selectIndexes(IndexSet::range(1, 2));
        gallery.trigger(Command::PreviewSelection);
        QCOMPARE(Gallery::previewTitle(), QStringLiteral("Shore  —  b  —  1 of 2"));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        gallery.trigger(Command::PreviewFolder);
        QCOMPARE(Gallery::previewTitle(), QStringLiteral("Shore  —  a  —  1 of 4"));
        QTRY_VERIFY(!QApplication::activeModalWidget());

        gallery.controller->selectIndexes({});
        QVERIFY(!gallery.isEnabled(Command::PreviewSelection) && gallery.isEnabled(Command::PreviewFolder));
        gallery.group()->lastFolder()->photos().clear();
        gallery.trigger(Command::PreviewFolder);
        QVERIFY(!QApplication::activeModalWidget());
        gallery.controller->resetList(gallery.group());
        QVERIFY(!gallery.isEnabled(Command::PreviewFolder));
    }
};

REGISTER_TEST(TestLargePhoto)
#include "TestLargePhoto.moc"
