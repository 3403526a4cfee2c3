#include "../imaging/FakeFilterBackEnd.h"
#include "UndoHouse.h"

#include "EffectEdits.h"
#include "EffectSession.h"
#include "EffectSetEdits.h"
#include "FakeAlerts.h"
#include "LibraryNotifications.h"
#include "TestRunner.h"

#include <QTest>

#include <cmath>
#include <limits>

namespace {

const QString kBlur = QStringLiteral("CICategoryBlur");
const QString kSoft = QStringLiteral("CISoft");
const QString kBend = QStringLiteral("CIBend");

FilterInput input(const char *name, const char *attributeClass, const EffectValue &identity,
                  NumberType type = NumberType::Scalar)
{
    FilterInput made = fakeInput(name, attributeClass, identity);
    made.numberType = type;
    return made;
}

struct FakeFilters : FakeFilterBackEnd
{
    FakeFilters()
    {
        for (const char *name : {"CIColorControls", "CIUnsharpMask", "CIStraightenFilter"})
            offer(kBlur, QString::fromLatin1(name), {input("inputAmount", "NSNumber", 1.0)});
        offer(kBlur, kSoft,
              {input("inputRadius", "NSNumber", 3.0), input("inputCount", "NSNumber", 2.0, NumberType::Integer)});
        offer(kBlur, kBend,
              {input("inputCenter", "CIVector", QPointF(150, 150)),
               input("inputColor", "CIColor", EffectColor{1, 0, 0, 1})});
    }
};

struct Studio final : UndoHouse, EffectDelegate
{
    FakeFilters filters;
    FilterCatalogue catalogue{filters};
    std::shared_ptr<PIPhoto> photo = photos({QStringLiteral("a")}).first();
    EffectEdits edits{catalogue, *this};
    QString told;
    bool refuses = false;

    Studio() { edits.setPhoto(photo); }
    bool setUndoForFilter(int, EffectChange change) override
    {
        told += change == EffectChange::Value ? u'v' : u'f';
        return !refuses;
    }
    void updatePhotoForFilterChange() override { told += u'C'; }
    void updatePhotoForFilterSet() override { told += u'S'; }

    bool add(const QString &filter)
    {
        return edits.addFilterToPhoto(catalogue.tagForFilter(filter), EffectEdits::ShowError::Yes);
    }
    bool change(const QString &filter, int input, const EffectValue &value)
    {
        return edits.changeValue(FilterCatalogue::controlTag(catalogue.tagForFilter(filter), input), value);
    }
    static QString names(const EffectChain &chain)
    {
        QStringList all;
        for (const EffectEntry &entry : chain)
            all << entry.filterName().mid(2);
        return all.join(u' ');
    }
    double number(const QString &filter, const char *input) const
    {
        return std::get<double>(*edits.entry(filter)->value(QString::fromLatin1(input)));
    }
};

}

/// Changes to effects and effect sets.
class TestEffectEdits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filtersAreAddedAtTheEndOnce()
    {
        Studio studio;
        FakeAlerts alerts;
        for (const char *name : {"CIStraightenFilter", "CISoft", "CIColorControls"})
            QVERIFY(studio.add(QString::fromLatin1(name)));
        QCOMPARE(Studio::names(studio.photo->filterDicts()), QStringLiteral("StraightenFilter Soft ColorControls"));
        QVERIFY(!studio.add(kSoft));
        studio.refuses = true;
        QVERIFY(!studio.add(kBend));
        QVERIFY(!studio.edits.addFilterToPhoto(-1, EffectEdits::ShowError::Yes));
        QCOMPARE(studio.photo->filterDicts().size(), 3);
        QCOMPARE(alerts.said, QStringList(2, QStringLiteral("Can't add effect.")));
        QCOMPARE(alerts.messages.join(u'|'),
                 QStringLiteral("I can't add the filter \"The CISoft\". It is already applied to this photo.|"
                                "I can't add the filter \"The CIBend\". An unknown error occurred."));
    }

    void aValueIsTakenAsTheInputKeepsIt_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<int>("input");
        QTest::addColumn<EffectValue>("value");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<EffectValue>("kept");
        QTest::addColumn<QString>("told");
        const auto row = [](const char *name, const QString &filter, int input, const EffectValue &value,
                            const std::optional<EffectValue> &kept, const char *told) {
            QTest::newRow(name) << filter << input << value << kept.has_value() << kept.value_or(0.0)
                                << QString::fromLatin1(told);
        };
        row("number", kSoft, 1, 4.5, 4.5, "vC");
        row("the same number", kSoft, 1, 3.0, 3.0, "");
        row("whole number", kSoft, 2, 3.9, 3.0, "vC");
        row("negative whole number", kSoft, 2, -3.9, -3.0, "vC");
        row("no number", kSoft, 1, std::nan(""), {}, "");
        row("endless", kSoft, 1, std::numeric_limits<double>::infinity(), {}, "");
        row("of another kind", kSoft, 1, QPointF(1, 1), {}, "");
        row("no such input", kSoft, 3, 1.0, {}, "");
        row("the image", kSoft, 0, 1.0, {}, "");
        row("not applied", QStringLiteral("CIUnsharpMask"), 1, 1.0, {}, "");
        row("not offered", QStringLiteral("CIUnknown"), 1, 1.0, {}, "");
        row("point", kBend, 1, QPointF(-1, 0.5), QPointF(-1, 0.5), "vC");
        row("endless point", kBend, 1, QPointF(std::nan(""), 0), {}, "");
        row("colour", kBend, 2, EffectColor{0, 1, 0, 1}, EffectColor{0, 1, 0, 1}, "vC");
    }
    void aValueIsTakenAsTheInputKeepsIt()
    {
        QFETCH(QString, filter);
        QFETCH(int, input);
        QFETCH(EffectValue, value);
        QFETCH(bool, taken);
        QFETCH(EffectValue, kept);
        Studio studio;
        QVERIFY(studio.add(kSoft) && studio.add(kBend));
        studio.told.clear();
        const EffectChain before = studio.photo->filterDicts();
        QCOMPARE(studio.change(filter, input, value), taken);
        QTEST(studio.told, "told");
        if (taken)
            QVERIFY(*studio.edits.entry(filter)->value(studio.filters.attributes(filter)->inputs.at(input).name) ==
                    kept);
        else
            QVERIFY(studio.photo->filterDicts() == before);
    }

    void aFilterIsResetAndRemoved()
    {
        Studio studio;
        EffectEntry old(kSoft); // as an earlier version of the filter left it
        old.setValue(QStringLiteral("inputRadius"), 9.0);
        old.setValue(QStringLiteral("inputGone"), 7.0);
        studio.photo->setFilterDicts({EffectEntry(QStringLiteral("CIUnknown")), old});
        QVERIFY(studio.edits.revertEffect(studio.catalogue.tagForFilter(kSoft)));
        QCOMPARE(studio.number(kSoft, "inputRadius"), 3.0);
        QCOMPARE(studio.number(kSoft, "inputGone"), 7.0);
        QVERIFY(studio.add(kBend) && studio.change(kBend, 1, QPointF(1, 1)));
        QVERIFY(studio.edits.revertEffect(studio.catalogue.tagForFilter(kBend)));
        QVERIFY(*studio.edits.entry(kBend)->value(QStringLiteral("inputCenter")) == EffectValue(QPointF(0, 0)));
        studio.refuses = true;
        QVERIFY(!studio.edits.deleteEffect(kSoft) && !studio.change(kSoft, 1, 1.0));
        QVERIFY(!studio.edits.revertEffect(studio.catalogue.tagForFilter(kSoft)));
        studio.refuses = false;
        QVERIFY(studio.edits.deleteEffect(QStringLiteral("CIUnknown")));
        QVERIFY(!studio.edits.deleteEffect(QStringLiteral("CIUnknown")));
        QCOMPARE(Studio::names(studio.photo->filterDicts()), QStringLiteral("Soft Bend"));
    }

    /// What is selected, added ("+") and removed ("-") one after the other, and what the working chain then is.
    void selectingTriesAnEffect_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("chain");
        QTest::addColumn<QString>("state"); // on trial, applied or nothing
        const auto row = [](const char *steps, const char *chain, const char *state) {
            QTest::newRow(steps) << QString::fromLatin1(steps).split(u' ') << QString::fromLatin1(chain)
                                 << QString::fromLatin1(state);
        };
        row("CISoft", "Bend Unknown Soft", "trial");
        row("CISoft CIColorControls", "Bend Unknown ColorControls", "trial");
        row("CISoft none", "Bend Unknown", "");
        row("CISoft + CIColorControls", "Bend Unknown Soft ColorControls", "trial");
        row("CISoft + none CISoft", "Bend Unknown Soft", "applied");
        row("CISoft CIBend", "Bend Unknown", "applied");
        row("CIBend -", "Unknown", "");
        row("CIUnknown -", "Bend", "");
        row("CISoft + -", "Bend Unknown", "");
        row("CINobody", "Bend Unknown", "");
    }
    void selectingTriesAnEffect()
    {
        QFETCH(QStringList, steps);
        Studio studio;
        studio.photo->setFilterDicts({EffectEntry(kBend), EffectEntry(QStringLiteral("CIUnknown"))});
        EffectSession session(studio.undoable, studio.catalogue, studio.photo, studio);
        QVERIFY(session.workingPhoto()->guid() != studio.photo->guid());
        for (const QString &step : steps) {
            studio.told.clear();
            if (step == u"+")
                session.addFilter();
            else if (step == u"-")
                session.removeFilter();
            else
                session.select(step == u"none" ? QString() : step);
        }
        QTEST(Studio::names(session.workingPhoto()->filterDicts()), "chain");
        QTEST(session.isProvisionalAdd() ? QStringLiteral("trial")
              : session.isApplied()      ? QStringLiteral("applied")
                                         : QString(),
              "state");
        QCOMPARE(Studio::names(studio.photo->filterDicts()), QStringLiteral("Bend Unknown"));
    }

    void theWorkingChainIsTakenInOneStep()
    {
        Studio studio;
        studio.a->photos() << studio.photo;
        studio.view.folder = studio.a;
        QStringList told;
        std::vector<NotificationCenter::Observer> observers;
        for (const QString &name : {kNormalizeNotification, kPhotoNotification, kSelectNotification})
            observers.push_back(studio.notifications.observe(name, [&, name](const auto &) { told << name; }));
        EffectSession session(studio.undoable, studio.catalogue, studio.photo, studio);
        QVERIFY(session.setEffects()); // nothing to do
        QVERIFY(!studio.manager.isUndoAvailable() && told.isEmpty());
        session.select(kSoft);
        QVERIFY(session.setEffects());
        QCOMPARE(told, (QStringList{kNormalizeNotification, kPhotoNotification, kSelectNotification}));
        QCOMPARE(Studio::names(studio.photo->filterDicts()), QStringLiteral("Soft"));
        QCOMPARE(studio.manager.validateState(UndoDirection::Undo).title, QStringLiteral("Undo Effects"));
        studio.manager.undo();
        QVERIFY(studio.photo->filterDicts().isEmpty());
        studio.manager.setDelegate(nullptr);
        QVERIFY(!session.setEffects());
        QVERIFY(studio.photo->filterDicts().isEmpty());
    }

    void effectSetsAreSavedRenamedAndDeleted()
    {
        using Outcome = EffectSetEdits::Outcome;
        Studio studio;
        int told = 0;
        const auto observer = studio.notifications.observe(kEffectSetsNotification, [&](const auto &) { ++told; });
        LibraryEditor &editor = studio.undoable;
        const auto sets = [&] { return QStringList(studio.library.effectSets().keys()).join(u'|'); };
        const EffectChain chain{EffectEntry(kSoft)};
        QCOMPARE(EffectSetEdits::save(editor, QStringLiteral(" old\nphoto "), chain), Outcome::Done);
        QCOMPARE(EffectSetEdits::save(editor, QStringLiteral("b"), chain), Outcome::Done);
        QCOMPARE(EffectSetEdits::save(editor, QStringLiteral("b"), chain), Outcome::Done); // is so already
        QCOMPARE(EffectSetEdits::save(editor, QStringLiteral(" "), chain), Outcome::NoName);
        QCOMPARE(EffectSetEdits::save(editor, QStringLiteral("c"), {}), Outcome::NoEffects);
        QCOMPARE(EffectSetEdits::rename(editor, QStringLiteral("b"), QStringLiteral("old photo")), Outcome::NameTaken);
        QCOMPARE(EffectSetEdits::rename(editor, QStringLiteral("b"), QString()), Outcome::NoName);
        QCOMPARE(EffectSetEdits::rename(editor, QStringLiteral("z"), QStringLiteral("y")), Outcome::Refused);
        QCOMPARE(EffectSetEdits::rename(editor, QStringLiteral("b"), QStringLiteral("a")), Outcome::Done);
        QCOMPARE(EffectSetEdits::remove(editor, QStringLiteral("old photo")), Outcome::Done);
        QCOMPARE(EffectSetEdits::remove(editor, QStringLiteral("old photo")), Outcome::Refused);
        QCOMPARE(sets(), QStringLiteral("a"));
        QCOMPARE(told, 4);
        for (const char *before : {"a|old photo", "b|old photo", "old photo", ""}) {
            studio.manager.undo();
            QCOMPARE(sets(), QString::fromLatin1(before));
        }
    }

    void aSetIsAppliedToTheSelectedPhotos()
    {
        Studio studio;
        const auto photos = studio.photos({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
        studio.a->photos() = photos;
        studio.view.folder = studio.a;
        studio.view.selection = IndexSet::range(1, 2);
        QVERIFY(!studio.photoEdits.applyEffectSet(QStringLiteral("soft")));
        QCOMPARE(EffectSetEdits::save(studio.undoable, QStringLiteral("soft"), {EffectEntry(kSoft)}),
                 EffectSetEdits::Outcome::Done);
        QVERIFY(!studio.photoEdits.clearEffects());
        QVERIFY(studio.photoEdits.applyEffectSet(QStringLiteral("soft")));
        const auto effects = [&] {
            QString counts;
            for (const auto &photo : photos)
                counts += QString::number(photo->filterDicts().size());
            return counts;
        };
        QCOMPARE(effects(), QStringLiteral("011"));
        QVERIFY(studio.photoEdits.clearEffects());
        QCOMPARE(effects(), QStringLiteral("000"));
        studio.manager.undo();
        QCOMPARE(effects(), QStringLiteral("011"));
        studio.manager.undo();
        QCOMPARE(effects(), QStringLiteral("000"));
    }
};

REGISTER_TEST(TestEffectEdits)
#include "TestEffectEdits.moc"
