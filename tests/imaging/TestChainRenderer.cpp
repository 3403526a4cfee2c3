#include "ChainRenderer.h"
#include "FakeFilterBackEnd.h"
#include "TestRunner.h"

#include <QSemaphore>
#include <QTest>

namespace {

const QString kPaint = QStringLiteral("CIPaint");

/// A filter that waits at a gate, and paints the picture in the grey of its value.
struct Easel
{
    FakeFilterBackEnd backEnd;
    QSemaphore gate;
    std::atomic<int> begun = 0;
    std::atomic<int> pictures = 0;
    QSize shownSize;  ///< of what was rendered last
    QList<int> shown; ///< the values that were rendered; -1: without effects, -2: no picture
    ChainRenderer renderer{[this](const ChainRenderer::Rendering &rendering) {
        shownSize = rendering.filtered.size();
        shown << valueOf(rendering);
    }};

    Easel()
    {
        for (const char *name : {"CIPaint", "CIOther"})
            backEnd.offer(QStringLiteral("CICategoryBlur"), QString::fromLatin1(name),
                          {fakeInput("inputValue", "NSNumber")}, [this](const EffectEntry &inputs, QImage image) {
                              ++begun;
                              gate.acquire();
                              const int grey = int(std::get<double>(*inputs.value(QStringLiteral("inputValue"))));
                              image.fill(qRgb(grey, grey, grey));
                              return grey == 0 ? QImage() : image;
                          });
        installFilterBackEnd(&backEnd);
    }
    ~Easel()
    {
        gate.release(100);
        installFilterBackEnd(nullptr);
    }

    static int valueOf(const ChainRenderer::Rendering &rendering)
    {
        if (rendering.original.isNull())
            return -2;
        return rendering.filtered == rendering.original ? -1 : qRed(rendering.filtered.pixel(0, 0));
    }
    void open(QSize size)
    {
        renderer.setPicture([this, size] {
            ++pictures;
            QImage image(size, QImage::Format_RGB32);
            image.fill(Qt::red);
            return Image::fromPixels(size.isEmpty() ? QImage() : image);
        });
        renderer.setBox({40, 40});
    }
    void set(const QString &filter, int value)
    {
        EffectEntry entry(filter);
        entry.setValue(QStringLiteral("inputValue"), double(value));
        renderer.setChain({entry});
    }
};

}

/// The preview of effects that are being tried.
class TestChainRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNewestValueIsNextAndNoneIsQueued()
    {
        Easel easel;
        easel.set(kPaint, 10);
        easel.open({80, 60});
        QTRY_COMPARE(easel.begun, 1);
        for (const int value : {20, 30, 40})
            easel.set(kPaint, value);
        easel.gate.release(10);
        QTRY_COMPARE(easel.shown, (QList<int>{10, 40}));
        QCOMPARE(easel.begun, 2);
        QCOMPARE(easel.pictures, 1);
    }

    void whatAnotherFilterMadeIsNotShown()
    {
        Easel easel;
        easel.set(QStringLiteral("CIOther"), 10);
        easel.open({80, 60});
        QTRY_COMPARE(easel.begun, 1);
        easel.set(kPaint, 20);
        easel.gate.release(10);
        QTRY_COMPARE(easel.shown, QList<int>{20});
        easel.set(kPaint, 0); // fails
        QTRY_COMPARE(easel.shown, (QList<int>{20, -1}));
        easel.renderer.setChain({});
        QTRY_COMPARE(easel.shown.size(), 3);
        easel.open({}); // unreadable
        QTRY_COMPARE(easel.shown.constLast(), -2);
    }

    void aRendererMayGoWhileItWorks()
    {
        Easel easel;
        int shown = 0;
        auto going = std::make_unique<ChainRenderer>([&](const auto &) { ++shown; });
        EffectEntry entry(kPaint);
        entry.setValue(QStringLiteral("inputValue"), 10.0);
        going->setChain({entry});
        going->setPicture([] { return Image::fromPixels(QImage(8, 6, QImage::Format_RGB32)); });
        going->setBox({8, 8});
        QTRY_COMPARE(easel.begun, 1);
        going.reset();
        easel.gate.release(10);
        easel.set(kPaint, 20);
        easel.open({80, 60});
        QTRY_COMPARE(easel.shown, QList<int>{20}); // by then the other has ended too
        QCOMPARE(shown, 0);
    }

    void theDecodedPictureServesEveryFilter()
    {
        Easel easel;
        easel.set(kPaint, 10);
        easel.open({80, 60});
        easel.gate.release(100);
        QTRY_COMPARE(easel.shown, QList<int>{10});
        easel.set(QStringLiteral("CIOther"), 20);
        easel.set(kPaint, 30);
        QTRY_COMPARE(easel.shown.constLast(), 30);
        QCOMPARE(easel.pictures, 1);
        easel.renderer.setBox({20, 20});
        QTRY_COMPARE(easel.shownSize, QSize(20, 15));
    }
};

REGISTER_TEST(TestChainRenderer)
#include "TestChainRenderer.moc"
