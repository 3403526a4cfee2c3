#include "FakeFilterBackEnd.h"
#include "SystemLog.h"
#include "TestRunner.h"

#include <QTest>

namespace {

const QString kStylize = QStringLiteral("CICategoryStylize");

QImage picture(QSize size, QRgb color = 0xff204060)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

EffectEntry entryOf(const char *filter)
{
    return EffectEntry(QString::fromLatin1(filter));
}

}

class TestFilterBackEnd : public QObject
{
    Q_OBJECT

    FakeFilterBackEnd m_backEnd;
    QList<EffectEntry> m_inverted; ///< what the filter "Invert" was given
    QStringList m_log;
    std::atomic<bool> m_cancelled = false;

private Q_SLOTS:
    void init()
    {
        m_inverted.clear();
        m_log.clear();
        m_cancelled = false;
        SystemLog::setSink([this](const QString &line) { m_log.append(line); });
        m_backEnd.offer(kStylize, QStringLiteral("Invert"), {fakeInput("inputCenter", "CIVector")},
                        [this](const EffectEntry &inputs, QImage image) {
                            m_inverted.append(inputs);
                            image.invertPixels();
                            return image;
                        });
        m_backEnd.offer(kStylize, QStringLiteral("Red"), {},
                        [](const EffectEntry &, const QImage &image) { return picture(image.size(), 0xffff0000); });
        m_backEnd.offer(kStylize, QStringLiteral("Fail"), {}, [](const auto &, const auto &) { return QImage(); });
        m_backEnd.offer(kStylize, QStringLiteral("Cancel"), {}, [this](const auto &, const QImage &image) {
            m_cancelled = true;
            return image;
        });
        m_backEnd.offer(kStylize, QStringLiteral("GiveUp"), {}, [this](const auto &, const auto &) {
            m_cancelled = true;
            return QImage();
        });
    }
    void cleanup() { SystemLog::setSink({}); }

    void filtersRunInTheOrderOfTheChainAndUnknownOnesAreSkipped()
    {
        const EffectChain chain{entryOf("Nobody"), entryOf("Red"), EffectEntry(), entryOf("Invert")};
        const auto result = EvaluateChain(chain, picture({8, 6}), m_backEnd, {});
        QCOMPARE(result.value_or(QImage()), picture({8, 6}, 0xff00ffff));
        QCOMPARE(EvaluateChain(chain, picture({8, 6}), filterBackEnd(), {}).value(), picture({8, 6}));
        QVERIFY(m_log.isEmpty());
    }

    void pointsArriveInPixelsAndOtherValuesUnchanged_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QPointF>("expected");
        QTest::newRow("centre") << QSize(400, 300) << QPointF(0, 0) << QPointF(200, 150);
        QTest::newRow("right bottom") << QSize(400, 300) << QPointF(1, -1) << QPointF(400, 0);
        QTest::newRow("odd sides") << QSize(5, 3) << QPointF(0.5, 0) << QPointF(3.75, 1.5);
    }
    void pointsArriveInPixelsAndOtherValuesUnchanged()
    {
        QFETCH(QSize, size);
        QFETCH(QPointF, point);
        QFETCH(QPointF, expected);
        EffectEntry entry = entryOf("Invert");
        entry.setValue(QStringLiteral("inputCenter"), point);
        entry.setValue(QStringLiteral("inputOther"), point);
        QVERIFY(EvaluateChain({entry}, picture(size), m_backEnd, {}));
        entry.setValue(QStringLiteral("inputCenter"), expected);
        QCOMPARE(m_inverted, QList<EffectEntry>{entry});
    }

    void aFailingFilterIsNamedInTheLog()
    {
        QVERIFY(!EvaluateChain({entryOf("Invert")}, QImage(), m_backEnd, {}));
        QVERIFY(!EvaluateChain({entryOf("Fail"), entryOf("Invert")}, picture({8, 6}), m_backEnd, {}));
        QVERIFY(m_inverted.isEmpty());
        QCOMPARE(m_log, QStringList{QStringLiteral("Failed to create image for filter Fail")});
    }

    void nothingRunsAnyMoreOnceCancelled()
    {
        const FilterContext context{1, &m_cancelled};
        const EffectChain chain{entryOf("Invert"), entryOf("Cancel"), entryOf("Invert")};
        QVERIFY(!EvaluateChain(chain, picture({8, 6}), m_backEnd, context));
        QCOMPARE(m_inverted.size(), 1);
        // A filter that gives up half way has not failed.
        m_cancelled = false;
        QVERIFY(!EvaluateChain({entryOf("GiveUp")}, picture({8, 6}), m_backEnd, context));
        QVERIFY(m_log.isEmpty());
    }

    void theResultHasTheSizeOfTheSourceCountedFromTheBottom()
    {
        for (const QSize yielded : {QSize(10, 9), QSize(3, 2)}) {
            m_backEnd.offer(kStylize, QStringLiteral("Scale"), {}, [&](const auto &, const auto &) {
                QImage image = picture(yielded, 0xff00ff00);
                image.setPixel(0, yielded.height() - 1, 0xffff0000);
                return image;
            });
            const auto result = EvaluateChain({entryOf("Scale")}, picture({8, 6}), m_backEnd, {});
            QVERIFY(result);
            QCOMPARE(result->size(), QSize(8, 6));
            QCOMPARE(result->pixel(0, 5), 0xffff0000);
            QCOMPARE(result->pixel(7, 0), yielded.width() > 8 ? 0xff00ff00 : 0u);
        }
    }
};

REGISTER_TEST(TestFilterBackEnd)
#include "TestFilterBackEnd.moc"
