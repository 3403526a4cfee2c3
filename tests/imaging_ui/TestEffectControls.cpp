#include "../imaging/FakeFilterBackEnd.h"

#include "ColorWell.h"
#include "NumberControl.h"
#include "PIEffectUIManager.h"
#include "PIPhoto.h"
#include "QVCoordinateView.h"
#include "TestRunner.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include <numbers>

namespace {

FilterInput number(NumberType type, std::optional<double> minimum, std::optional<double> maximum)
{
    FilterInput input = fakeInput("inputAngle", "NSNumber", 0.0);
    input.displayName = QStringLiteral("Angle");
    input.numberType = type;
    input.sliderMinimum = minimum;
    input.sliderMaximum = maximum;
    return input;
}

constexpr auto kWithField = NumberControl::TextField::Yes;

/// A photo with two effects and their controls.
struct Bench final : EffectDelegate
{
    FakeFilterBackEnd filters;
    std::unique_ptr<FilterCatalogue> catalogue;
    std::shared_ptr<PIPhoto> photo = std::make_shared<PIPhoto>();
    QWidget view;
    std::unique_ptr<PIEffectUIManager> manager;
    bool refuses = false;
    int changes = 0;

    Bench()
    {
        filters.offer(QStringLiteral("CICategoryBlur"), QStringLiteral("CITurn"),
                      {number(NumberType::Angle, -std::numbers::pi, std::numbers::pi),
                       fakeInput("inputCenter", "CIVector", QPointF(9, 9))});
        filters.offer(QStringLiteral("CICategoryBlur"), QStringLiteral("CITint"),
                      {fakeInput("inputColor", "CIColor", EffectColor{1, 0, 0, 1}), number(NumberType::Integer, 1, 9)});
        catalogue = std::make_unique<FilterCatalogue>(filters);
        manager = std::make_unique<PIEffectUIManager>(view, *catalogue, *this);
        manager->setIncludeCommonControls(true);
        manager->setIncludeTextFields(true);
        manager->setPhoto(photo);
        for (const char *name : {"CITurn", "CITint"})
            manager->edits().addFilterToPhoto(catalogue->tagForFilter(QString::fromLatin1(name)),
                                              EffectEdits::ShowError::No);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // controls of the first effect alone
        view.show();
    }
    ~Bench() override { manager.reset(); }

    bool setUndoForFilter(int, EffectChange) override { return !refuses; }
    void updatePhotoForFilterChange() override { ++changes; }
    void updatePhotoForFilterSet() override { manager->setFilterUIFrom(photo->filterDicts()); }

    template<typename Widget>
    Widget *control(int which = 0) const
    {
        return view.findChildren<Widget *>().value(which);
    }
    template<typename Value>
    Value value(int effect, const char *input) const
    {
        return std::get<Value>(*photo->filterDicts().at(effect).value(QString::fromLatin1(input)));
    }
};

}

/// Sliders, fields, colour wells and coordinate pickers, and what they make of a chain.
class TestEffectControls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNumberHasASliderAndAField_data()
    {
        QTest::addColumn<FilterInput>("input");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<double>("atEnd"); // what the slider's last place means
        constexpr double kPi = std::numbers::pi;
        QTest::newRow("angle") << number(NumberType::Angle, -kPi, kPi) << kPi / 2 << "90.0°"
                               << "Angle. Values from -180.00° to 180.00°" << kPi;
        QTest::newRow("scalar") << number(NumberType::Scalar, 0.25, 4) << 1.5 << "1.5"
                                << "Angle. Values from 0.25 to 4.00" << 4.0;
        QTest::newRow("three digits") << number(NumberType::Scalar, -1, 1) << 0.1254 << "0.125"
                                      << "Angle. Values from -1.00 to 1.00" << 1.0;
        QTest::newRow("beyond its range") << number(NumberType::Scalar, 0, 10) << 1e9 << "10.0"
                                          << "Angle. Values from 0.00 to 10.00" << 10.0;
        QTest::newRow("whole") << number(NumberType::Integer, 1, 49) << 5.0 << "5"
                               << "Angle. Values from 1.00 to 49.00" << 49.0;
        QTest::newRow("no room") << number(NumberType::Scalar, 2, 2) << 2.0 << "2.0"
                                 << "Angle. Values from 2.00 to 2.00" << 2.0;
    }
    void aNumberHasASliderAndAField()
    {
        QFETCH(FilterInput, input);
        QFETCH(double, value);
        QFETCH(double, atEnd);
        QLocale::setDefault(QLocale::c());
        NumberControl control(input, kWithField);
        QSignalSpy changes(&control, &NumberControl::valueChanged);
        control.setValue(value);
        QCOMPARE(changes.size(), 0); // what is shown is not a change
        auto *field = control.findChild<NumberField *>();
        auto *slider = control.findChild<QSlider *>();
        QTEST(field->text(), "shown");
        QTEST(field->toolTip(), "toolTip");
        slider->setValue(slider->minimum());
        slider->setValue(slider->maximum());
        QCOMPARE(field->value(), field->maximum());
        QCOMPARE(changes.isEmpty(), slider->maximum() == 0);
        if (slider->maximum() > 0)
            QCOMPARE(changes.last().first().toDouble(), atEnd);
    }

    void aFieldMovesTheSliderAndEnterStays()
    {
        QDialog dialog;
        auto *control = new NumberControl(number(NumberType::Scalar, 0, 10), kWithField, &dialog);
        QSignalSpy changes(control, &NumberControl::valueChanged);
        QSignalSpy ended(&dialog, &QDialog::finished);
        dialog.show();
        auto *field = control->findChild<NumberField *>();
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, QStringLiteral("2.5"));
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(changes.last().first().toDouble(), 2.5);
        QCOMPARE(control->findChild<QSlider *>()->value(), 250);
        QCOMPARE(ended.size(), 0);
    }

    void escapeGivesTheNumberBackAndTypingIsNotDisturbed()
    {
        QDialog dialog;
        auto *control = new NumberControl(number(NumberType::Scalar, {}, {}), kWithField, &dialog);
        connect(control, &NumberControl::valueChanged, control, &NumberControl::setValue); // as a refresh does
        control->setValue(28);
        QSignalSpy ended(&dialog, &QDialog::finished);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto *field = control->findChild<NumberField *>();
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        field->selectAll();
        QTest::keyClicks(field, QStringLiteral("35"));
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(field, Qt::Key_Backspace);
        QTest::keyClicks(field, QStringLiteral("5"));
        QCOMPARE(field->value(), 5.0);
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->value(), 28.0);
        QCOMPARE(ended.size(), 0);
        QTest::keyClick(field, Qt::Key_Up);
        QCOMPARE(field->value(), 29.0);
    }

    void theWheelPassesOverWhatWasNotChosen()
    {
        NumberControl control(number(NumberType::Scalar, 0, 10), kWithField);
        control.setValue(5);
        control.show();
        for (QWidget *each : {static_cast<QWidget *>(control.findChild<QSlider *>()),
                              static_cast<QWidget *>(control.findChild<NumberField *>())}) {
            each->clearFocus();
            QWheelEvent wheel({2, 2}, each->mapToGlobal(QPointF(2, 2)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(each, &wheel);
        }
        QCOMPARE(control.findChild<NumberField *>()->value(), 5.0);
    }

    /// Chains as no dialog makes them: one filter twice, filters without a name, and very many.
    void strangeChainsAreShown()
    {
        Bench bench;
        EffectChain chain = bench.photo->filterDicts();
        chain << chain.first() << EffectEntry() << EffectEntry(QStringLiteral("CITurn"));
        chain[2].setValue(QStringLiteral("inputAngle"), QStringLiteral("no number"));
        for (int i = 0; i < 5000; ++i)
            chain << EffectEntry(QStringLiteral("CITurn"));
        bench.photo->setFilterDicts(chain);
        bench.manager->setFilterUIFrom(chain);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(bench.view.findChildren<QVCoordinateView *>().size(), 1);
        QVERIFY(bench.view.findChildren<QToolButton *>().size() < 100);
        bench.control<NumberField>()->setValue(90);
        bench.manager->setFilterUIFrom(bench.photo->filterDicts());
        QCOMPARE(bench.control<NumberField>()->value(), 90.0);
        QCOMPARE(bench.value<double>(0, "inputAngle"), std::numbers::pi / 2);
    }

    void aYesOrNoHasACheckBox()
    {
        NumberControl control(number(NumberType::Boolean, 0, 1), kWithField);
        QSignalSpy changes(&control, &NumberControl::valueChanged);
        control.setValue(1);
        QVERIFY(control.findChild<QCheckBox *>()->isChecked());
        control.findChild<QCheckBox *>()->click();
        QCOMPARE(changes.last().first().toDouble(), 0.0);
    }

    void theCrossStaysInThePicture()
    {
        QVCoordinateView picker(QStringLiteral("Center"));
        QImage picture(200, 100, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        picker.setPicture(picture);
        picker.resize(180, 180);
        picker.show();
        QSignalSpy changes(&picker, &QVCoordinateView::coordinateChanged);
        picker.setCoordinate({-40, 40}); // as a file told
        QCOMPARE(changes.size(), 0);
        const QRectF shown = picker.pictureRect();
        QCOMPARE(shown.size(), QSizeF(176, 88));
        QTest::mousePress(&picker, Qt::LeftButton, {}, (shown.center() + QPointF(44, 22)).toPoint());
        QCOMPARE(picker.coordinate(), QPointF(0.5, -0.5));
        QTest::mouseMove(&picker, QPoint(179, 0));
        QTest::mouseRelease(&picker, Qt::LeftButton, {}, QPoint(179, 0));
        QTest::mousePress(&picker, Qt::LeftButton, {}, QPoint(179, 0));
        QCOMPARE(picker.coordinate(), QPointF(1, 1));
        QTest::keyClick(&picker, Qt::Key_Right);
        QCOMPARE(picker.coordinate(), QPointF(1, 1));
        QTest::keyClick(&picker, Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(picker.coordinate(), QPointF(1, 0.9));
        QTest::mouseDClick(&picker, Qt::LeftButton, {}, QPoint(20, 90));
        QCOMPARE(picker.coordinate(), QPointF(0, 0));
    }

    void controlsWriteIntoTheChain()
    {
        Bench bench;
        bench.control<NumberField>()->setValue(90);
        QCOMPARE(bench.value<double>(0, "inputAngle"), std::numbers::pi / 2);
        QTest::keyClick(bench.control<QVCoordinateView>(), Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(bench.value<QPointF>(0, "inputCenter"), QPointF(-0.1, 0));
        bench.control<QSlider>(1)->setValue(4);
        QCOMPARE(bench.value<double>(1, "inputAngle"), 5.0);
        bench.control<ColorWell>()->click();
        auto *panel = bench.view.findChild<QColorDialog *>();
        panel->setCurrentColor(Qt::blue);
        QVERIFY((bench.value<EffectColor>(1, "inputColor") == EffectColor{0, 0, 1, 1}));
        panel->reject();
        QVERIFY((bench.value<EffectColor>(1, "inputColor") == EffectColor{1, 0, 0, 1}));
    }

    void aRefusedChangeShowsTheValueThatStays()
    {
        Bench bench;
        bench.refuses = true;
        bench.control<NumberField>()->setValue(90);
        QCOMPARE(bench.control<NumberField>()->value(), 0.0);
        QCOMPARE(bench.value<double>(0, "inputAngle"), 0.0);
        QCOMPARE(bench.changes, 0);
    }

    void effectsAreResetAndRemovedByTheirButtons()
    {
        Bench bench;
        auto button = [&](const char *toolTip) {
            for (auto *each : bench.view.findChildren<QToolButton *>()) {
                if (each->toolTip() == QLatin1String(toolTip) && each->isVisible())
                    return each;
            }
            return static_cast<QToolButton *>(nullptr);
        };
        auto *slider = bench.control<QSlider>();
        slider->setValue(slider->maximum());
        button("Reset this effect to the default settings")->click();
        QCOMPARE(bench.value<double>(0, "inputAngle"), 0.0);
        QCOMPARE(bench.control<QSlider>(), slider); // the same controls show the new values
        QCOMPARE(slider->value(), slider->maximum() / 2);
        button("Remove this effect")->click();
        QCOMPARE(bench.photo->filterDicts().first().filterName(), QStringLiteral("CITint"));
        QTRY_VERIFY(button("Remove this effect"));
        button("Remove this effect")->click();
        QVERIFY(bench.photo->filterDicts().isEmpty());
        QVERIFY(!button("Remove this effect"));
    }
};

REGISTER_TEST(TestEffectControls)
#include "TestEffectControls.moc"
