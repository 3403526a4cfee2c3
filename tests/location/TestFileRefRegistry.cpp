#include "FakeFileFinder.h"
#include "FileRefRegistry.h"
#include "ImageCache.h"
#include "LibraryTags.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "TestRunner.h"
#include "UserPaths.h"

#include <QTest>

namespace {

using Refs = QList<std::shared_ptr<PIFileRef>>;

const QByteArray kDeclaration = QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");

// A decoder that stands on the first element of the text.
std::optional<QVXmlDecoder> decoderAt(const QByteArray &xml)
{
    auto decoder = QVXmlDecoder::fromData(kDeclaration + xml + "\n");
    return decoder && decoder->getNextTag() ? std::move(decoder) : std::nullopt;
}

QByteArray folders(const QList<QByteArray> &paths)
{
    QByteArray xml = "<folders>";
    for (const QByteArray &path : paths)
        xml += "<folder seq=\"7\" path=\"" + path + "\"></folder>";
    return xml + "</folders>";
}

QByteArray ref(const QByteArray &folder, const QByteArray &id, const QByteArray &file)
{
    return "<ref seq=\"0\" folder=\"" + folder + "\" id=\"" + id + "\" file=\"" + file + "\"></ref>";
}

QStringList pathsOf(const Refs &refs)
{
    QStringList paths;
    for (const auto &ref : refs)
        paths.append(ref->path());
    return paths;
}

}

class TestFileRefRegistry : public QObject
{
    Q_OBJECT

    FakeFileFinder m_finder;
    ImageCache m_cache;
    std::unique_ptr<FileRefRegistry> m_registry;

    // Registers the path and numbers it for the save.
    std::shared_ptr<PIFileRef> used(const QString &path, quint64 saveIndex)
    {
        auto ref = m_registry->fileRefForPath(path);
        ref->setSaveIndex(saveIndex);
        return ref;
    }
    QByteArray saved() const
    {
        QVXmlEncoder encoder;
        m_registry->saveFileRefs(encoder);
        return encoder.utf8().mid(kDeclaration.size());
    }
    // Reads the section into a fresh registry.
    std::optional<Refs> readBack(const QByteArray &xml)
    {
        init();
        auto decoder = decoderAt(xml);
        Refs refs;
        if (!decoder || !m_registry->readFileRefs(*decoder, refs))
            return std::nullopt;
        return refs;
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (std::size_t i = 0; i < LibraryTag::kNames.size(); ++i)
            QVXmlDecoder::addDecoderKey(static_cast<int>(i) + 1, QString::fromLatin1(LibraryTag::kNames[i]));
    }
    void init()
    {
        m_finder = {};
        m_registry = std::make_unique<FileRefRegistry>(PIFileRef::Environment{&m_finder, &m_cache});
    }

    void aReferenceIsFoundUnderThePathItWasEnteredWith()
    {
        const auto ref = m_registry->fileRefForPath(QStringLiteral("/p/a.jpg"));
        QVERIFY(m_registry->fileRefForPath(QStringLiteral("/p/A.jpg")) != ref);
        ref->setPath(QStringLiteral("/q/b.jpg"));
        QCOMPARE(m_registry->fileRefForPath(QStringLiteral("/p/a.jpg")), ref);
        QCOMPARE(m_registry->fileRefForPathIfExists(QStringLiteral("/q/b.jpg")), nullptr);
        m_finder.movedTo = QStringLiteral("/moved.jpg");
        const auto moved = m_registry->fileRefForPath(QStringLiteral("/p/c.jpg"));
        QCOMPARE(m_registry->fileRefForPath(QStringLiteral("/p/c.jpg")), moved);
    }

    void whatWasFollowedIsFoundWhereItIsNow()
    {
        const QString a = QStringLiteral("/p/a.jpg");
        const QString b = QStringLiteral("/p/b.jpg");
        const auto moved = used(a, 0);
        const auto lost = used(b, 1);
        lost->setFileLost(true);
        moved->setPath(b);
        m_registry->takeUpPaths({moved.get()});
        QCOMPARE(m_registry->fileRefForPathIfExists(a), nullptr);
        QCOMPARE(m_registry->fileRefForPath(b), moved); // though another that is lost was entered there later
        m_registry->dropPaths({moved.get()});
        QCOMPARE(m_registry->fileRefForPathIfExists(b), lost);
        QCOMPARE(m_registry->knownPaths(), QStringList(b));
        const auto back = readBack(saved());
        QVERIFY(back && pathsOf(*back) == QStringList({b, b}));
    }

    void referencesAreFoundByGuidAsTheyCome()
    {
        const auto a = m_registry->fileRefForPath(QStringLiteral("/p/a.jpg"));
        QCOMPARE(m_registry->fileRefForGuid(a->guid()), a);
        QCOMPARE(m_registry->fileRefForGuid(QStringLiteral("nobody")), nullptr);
        const auto b = m_registry->fileRefForPath(QStringLiteral("/p/b.jpg"));
        QCOMPARE(m_registry->fileRefForGuid(b->guid()), b);
        QCOMPARE(m_registry->fileRefForGuid(b->guid().toLower()), nullptr);
    }

    void theSectionIsWrittenAsToldByHand()
    {
        QCOMPARE(saved(), QByteArray()); // nothing for an empty registry
        const QString home = HomeFolderPath();
        const auto unused = used(home + QStringLiteral("/Pictures/x.jpg"), 5);
        const auto last = used(QStringLiteral("/mnt/a & b/2.jpg"), 1);
        const auto first = used(home + QStringLiteral("/Pictures/Grüße \"1\".jpg"), 0);
        used(QStringLiteral("/top.jpg"), 5);
        m_registry->clearSaveIndexes();
        first->setSaveIndex(0);
        last->setSaveIndex(1);
        const QString expected =
            QStringLiteral("<files>\n"
                           "\t<folders>\n"
                           "\t\t<folder seq=\"0\" path=\"~/Pictures\"></folder>\n"
                           "\t\t<folder seq=\"1\" path=\"/mnt/a &amp; b\"></folder>\n"
                           "\t\t<folder seq=\"2\" path=\"/\"></folder>\n"
                           "\t</folders>\n"
                           "\t<refs>\n"
                           "\t\t<ref seq=\"0\" folder=\"0\" id=\"%1\" file=\"Grüße &quot;1&quot;.jpg\"></ref>\n"
                           "\t\t<ref seq=\"1\" folder=\"1\" id=\"%2\" file=\"2.jpg\"></ref>\n"
                           "\t</refs>\n"
                           "</files>\n")
                .arg(first->guid(), last->guid());
        QCOMPARE(QString::fromUtf8(saved()), expected);

        const QStringList guids{first->guid(), last->guid()};
        const QStringList paths{first->path(), last->path()};
        const auto back = readBack(expected.toUtf8());
        QVERIFY(back);
        QCOMPARE(pathsOf(*back), paths);
        QCOMPARE(m_registry->fileRefForPathIfExists(paths.first()), back->first());
        QCOMPARE(m_registry->fileRefForGuid(guids.last()), back->last());
    }

    void foldersReadBackAsTheyWere_data()
    {
        QTest::addColumn<QString>("path");
        const QString home = HomeFolderPath();
        QTest::newRow("in the home folder") << home + QStringLiteral("/a.jpg");
        QTest::newRow("below it") << home + QStringLiteral("/P & Q/a.jpg");
        QTest::newRow("a neighbour that begins alike") << home + QStringLiteral("adow/a.jpg");
        QTest::newRow("home further on") << QStringLiteral("/mnt") + home + QStringLiteral("/a.jpg");
        QTest::newRow("tilde inside") << QStringLiteral("/mnt/~x/~/~a.jpg");
        QTest::newRow("top") << QStringLiteral("/a.jpg");
    }
    void foldersReadBackAsTheyWere()
    {
        QFETCH(QString, path);
        used(path, 0);
        used(QStringLiteral("/p/a.jpg"), 1)->setPath(path + u'2'); // its folder is that of no key
        const auto back = readBack(saved());
        QVERIFY(back);
        QCOMPARE(pathsOf(*back), QStringList({path, path + u'2'}));
    }

    void aReferenceFollowsItsFileWhileBeingRead()
    {
        m_finder.places.insert(QStringLiteral("G2"), QStringLiteral("/new/b.jpg"));
        auto decoder = decoderAt("<files>" + folders({"/p"}) + "<refs>" + ref("0", "G1", "a.jpg") +
                                 ref("0", "G2", "b.jpg") + "</refs></files>");
        Refs refs;
        QVERIFY(decoder && m_registry->readFileRefs(*decoder, refs));
        QCOMPARE(pathsOf(refs), QStringList({QStringLiteral("/p/a.jpg"), QStringLiteral("/new/b.jpg")}));
        QCOMPARE(m_registry->fileRefForPathIfExists(QStringLiteral("/new/b.jpg")), refs.last());
        QCOMPARE(m_registry->fileRefForPathIfExists(QStringLiteral("/p/b.jpg")), nullptr);
        QCOMPARE(m_finder.calls, QStringList({QStringLiteral("locate /p/a.jpg"), QStringLiteral("locate /p/b.jpg")}));
    }

    void photosKeepTheirFilesWhenTwoReferencesMeetAtOnePath()
    {
        const auto refs = readBack("<files>" + folders({"/p"}) + "<refs>" + ref("0", "G0", "same.jpg") +
                                   ref("0", "G1", "same.jpg") + ref("0", "G2", "other.jpg") + "</refs></files>");
        QVERIFY(refs);
        QCOMPARE(m_registry->fileRefForPath(QStringLiteral("/p/same.jpg")), refs->at(1));
        for (qsizetype i = 0; i < refs->size(); ++i)
            refs->at(i)->setSaveIndex(static_cast<quint64>(i));
        const auto back = readBack(saved());
        QVERIFY(back);
        QStringList guids;
        for (const auto &ref : *back)
            guids.append(ref->guid());
        QCOMPARE(guids, QStringList({QStringLiteral("G0"), QStringLiteral("G1"), QStringLiteral("G2")}));
        m_registry->clearSaveIndexes();
        QVERIFY(!saved().contains("<ref "));
    }

    void aDocumentThatEndsInsideTheSectionIsCorrupt()
    {
        const QByteArray whole = "<files>" + folders({"/p"}) + "<refs>" + ref("0", "G", "a") + "</refs></files>";
        QVERIFY(readBack(whole));
        for (const char *end : {"</folders>", "</refs>", "</files>"})
            QVERIFY2(!readBack(whole.left(whole.indexOf(end))), end);
    }

    void aSectionReadsAs_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QString>("paths"); // null: corrupt
        const auto row = [](const char *name, const QByteArray &xml, const char *paths) {
            QTest::newRow(name) << xml << QString::fromLatin1(paths);
        };
        const QByteArray one = ref("0", "G", "a");
        row("empty element", "<files></files>", "");
        row("empty lists", "<files><folders/><refs/></files>", "");
        row("unknown tags", "<files><name>x</name>" + folders({"/p"}) + "<refs><id>1</id>" + one + "</refs></files>",
            "/p/a");
        row("elements with children",
            "<files><folders><folder path=\"/p\"><id>1</id></folder><folder path=\"/q\"></folder></folders>"
            "<refs><ref folder=\"1\" id=\"G\" file=\"a\"><x><ref></ref></x></ref></refs></files>",
            "/q/a");
        row("no folder attribute", "<files>" + folders({"/p"}) + "<refs><ref id=\"G\" file=\"a\"></ref></refs></files>",
            "/p/a");
        row("refs before folders", "<files><refs>" + one + "</refs>" + folders({"/p"}) + "</files>", nullptr);
        row("folder too large", "<files>" + folders({"/p"}) + "<refs>" + ref("1", "G", "a") + "</refs></files>",
            nullptr);
        row("folder negative", "<files>" + folders({"/p"}) + "<refs>" + ref("-1", "G", "a") + "</refs></files>",
            nullptr);
        row("folder beyond 32 bits",
            "<files>" + folders({"/p"}) + "<refs>" + ref("4294967296", "G", "a") + "</refs></files>", nullptr);
    }
    void aSectionReadsAs()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QString, paths);
        auto decoder = decoderAt("<Photo>" + xml + "<keys></keys></Photo>");
        QVERIFY(decoder && decoder->getNextTag());
        Refs refs;
        QCOMPARE(m_registry->readFileRefs(*decoder, refs), !paths.isNull());
        if (paths.isNull())
            return;
        QCOMPARE(pathsOf(refs).join(u','), paths);
        // The decoder stands on the section's last tag.
        QVERIFY(decoder->getNextTag());
        QCOMPARE(decoder->key(), int(LibraryTag::Keys));
        QCOMPARE(decoder->level(), 1);
    }
};

REGISTER_TEST(TestFileRefRegistry)
#include "TestFileRefRegistry.moc"
