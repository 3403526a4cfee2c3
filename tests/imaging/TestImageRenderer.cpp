#include "TestRunner.h"

#include "ImageRenderer.h"

#include <QTest>

namespace {

Image plain(const QColor &color, QSize size = {600, 400})
{
    QImage pixels(size, QImage::Format_RGB32);
    pixels.fill(color);
    return Image::fromPixels(pixels);
}

}

class TestImageRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheNewestRequestIsAnswered()
    {
        PixelPool pool(64 << 20);
        ImageRenderer renderer(pool);
        QList<QRgb> answers;
        const auto answer = [&](const std::optional<QImage> &pixels) { answers << pixels.value().pixel(5, 5); };
        for (int turn = 0; turn < 20; ++turn) {
            renderer.render({plain(Qt::red), {60, 40}}, answer);
            renderer.render({plain(Qt::blue), {60, 40}}, answer);
        }
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(answers.first(), QColor(Qt::blue).rgb());

        renderer.render({plain(Qt::red), {60, 40}}, answer);
        renderer.cancel();
        renderer.render({plain(Qt::green), {60, 40}}, answer);
        QTRY_COMPARE(answers.size(), 2);
        QCOMPARE(answers.last(), QColor(Qt::green).rgb());
    }

    void whatWasMadeIsFoundForTheSameImagePartAndSizeOnly()
    {
        PixelPool pool(64 << 20);
        ImageRenderer renderer(pool);
        const Image image = plain(Qt::red);
        QVERIFY(renderer.find({image, {60, 40}}).isNull());
        bool done = false;
        renderer.render({image, {60, 40}}, [&](const auto &) { done = true; });
        QTRY_VERIFY(done);
        QCOMPARE(renderer.find({image, {60, 40}}).size(), QSize(60, 40));
        QVERIFY(renderer.find({image, {30, 20}}).isNull());
        QVERIFY(renderer.find({plain(Qt::red), {60, 40}}).isNull()); // edited since: another image
        QVERIFY(renderer.find({image, {60, 40}, {0, 0, 60, 40}}).isNull());
        pool.clear();
        QVERIFY(renderer.find({image, {60, 40}}).isNull());
    }

    void noAnswerAfterTheEnd()
    {
        PixelPool pool(64 << 20);
        bool told = false;
        {
            ImageRenderer renderer(pool);
            renderer.render({plain(Qt::red), {60, 40}}, [&](const auto &) { told = true; });
        }
        QCoreApplication::processEvents();
        QVERIFY(!told);
    }
};

REGISTER_TEST(TestImageRenderer)
#include "TestImageRenderer.moc"
