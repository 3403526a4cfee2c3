#include "TestRunner.h"

#include "TerminationSignals.h"

#include <QTest>

#include <csignal>

class TestTerminationSignals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void askOnceAndThenEndTheProcess()
    {
        int asked = 0;
        {
            const TerminationSignals signals([&] { ++asked; });
            QCOMPARE(std::raise(SIGTERM), 0);
            QCOMPARE(asked, 0); // not from within the handler
            QTRY_COMPARE(asked, 1);
            struct sigaction now = {};
            QCOMPARE(::sigaction(SIGTERM, nullptr, &now), 0);
            QVERIFY(now.sa_handler == SIG_DFL);
            QCOMPARE(std::raise(SIGHUP), 0);
            QTRY_COMPARE(asked, 2);
        }
        struct sigaction now = {};
        QCOMPARE(::sigaction(SIGINT, nullptr, &now), 0);
        QVERIFY(now.sa_handler == SIG_DFL);
    }
};

REGISTER_TEST(TestTerminationSignals)
#include "TestTerminationSignals.moc"
