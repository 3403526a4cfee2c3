#include "BookmarkMatcher.h"
#include "BookmarkScene.h"
#include "TestRunner.h"

using Match = BookmarkMatcher::Match;

/// Which of some paths are the files of bookmarks that lead nowhere.
class TestBookmarkMatcher : public QObject
{
    Q_OBJECT

    static QString matches(const BookmarkScene &scene, const QList<QByteArray> &bookmarks,
                           const QList<const char *> &paths, const QByteArray &type = "ext4")
    {
        QStringList absolute;
        for (const char *path : paths)
            absolute << scene.at(path);
        QStringList text;
        for (const Match &match : BookmarkMatcher(bookmarks, scene.volumes(type)).match(absolute))
            text << QStringLiteral("%1:%2").arg(match.path).arg(match.bookmark);
        return text.join(u' ');
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_scene = std::make_unique<BookmarkScene>(m_dir->path());
    }

    void knowsAFileByItsIdentity()
    {
        m_scene->move("Pictures/2023/photo.jpg", "New/renamed.jpg");
        m_scene->write("New/renamed.jpg", BookmarkScene::content(9)); // edited in place
        m_scene->write("New/decoy.jpg", BookmarkScene::content(8));
        const QList<QByteArray> bookmarks = {"no bookmark", m_scene->photo, m_scene->photo};
        QCOMPARE(matches(*m_scene, bookmarks, {"New/decoy.jpg", "New/renamed.jpg", "New/absent.jpg"}),
                 QStringLiteral("1:1 1:2"));
    }

    void knowsACopyWhenItIsTheOnlyOne_data()
    {
        QTest::addColumn<int>("copies");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QString>("expected");
        QTest::newRow("one") << 1 << QByteArray("ext4") << QStringLiteral("1:0");
        QTest::newRow("two") << 2 << QByteArray("ext4") << QString();
        QTest::newRow("made-up numbers") << 1 << QByteArray("vfat") << QStringLiteral("1:0");
    }
    void knowsACopyWhenItIsTheOnlyOne()
    {
        QFETCH(int, copies);
        QFETCH(QByteArray, type);
        const QByteArray twin = m_scene->bookmarkOf("Pictures/2023/photo.jpg");
        for (const char *name : {"New/first.jpg", "New/second.jpg"})
            if (copies-- > 0)
                m_scene->copy("Pictures/2023/photo.jpg", name);
        m_scene->remove("Pictures/2023/photo.jpg");
        m_scene->write("New/same size.jpg", BookmarkScene::content(7));
        QTEST(matches(*m_scene, {twin}, {"New/same size.jpg", "New/first.jpg", "New/second.jpg"}, type), "expected");
    }

    void whatIsTheOneFileIsNoCopyOfAnother()
    {
        m_scene->copy("Pictures/2023/photo.jpg", "Pictures/twin.jpg");
        const QByteArray twin = m_scene->bookmarkOf("Pictures/twin.jpg");
        m_scene->remove("Pictures/twin.jpg");
        m_scene->move("Pictures/2023/photo.jpg", "New/photo.jpg");
        QCOMPARE(matches(*m_scene, {twin, m_scene->photo}, {"New/photo.jpg"}), QStringLiteral("0:1"));
    }

    void matchesNothingOnceToldToStop()
    {
        std::stop_source source;
        source.request_stop();
        BookmarkMatcher matcher({m_scene->photo}, m_scene->volumes());
        QVERIFY(matcher.match({m_scene->at("Pictures/2023/photo.jpg")}, source.get_token()).isEmpty());
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<BookmarkScene> m_scene;
};

REGISTER_TEST(TestBookmarkMatcher)
#include "TestBookmarkMatcher.moc"
