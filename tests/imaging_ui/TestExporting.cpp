#include "EmailDialog.h"
#include "ExportDialog.h"
#include "ExportPreferences.h"
#include "PISaveFormatViewController.h"
#include "TestRunner.h"
#include "UserDefaults.h"
#include "Variable.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTemporaryDir>

namespace {

void choose(QComboBox &box, int index)
{
    box.setCurrentIndex(index);
    Q_EMIT box.activated(index);
}

template<typename Widget>
Widget &only(const QWidget &parent, int at = 0)
{
    return *parent.findChildren<Widget *>().at(at);
}

bool shows(const QWidget &widget, const QString &text)
{
    const auto labels = widget.findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(), [&](QLabel *label) { return label->text().contains(text); });
}

/// The choices as they are on the first run, and again at the end.
struct FreshChoices
{
    FreshChoices() { reset(); }
    ~FreshChoices() { reset(); }
    static void reset()
    {
        const QTemporaryDir dir;
        readExportPreferences(UserDefaults(dir.filePath(QStringLiteral("none"))));
    }
};

}

/// The panel and the dialogs that ask how photos are to be exported.
class TestExporting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void panelChangesTheSettingsAtOnce()
    {
        const FreshChoices fresh;
        PISaveFormatViewController panel(QSize(3000, 2000));
        auto &format = only<QComboBox>(panel, 0);
        auto &quality = only<QSlider>(panel);
        auto &compress = only<QCheckBox>(panel);
        QCOMPARE(exportCompression(), 0.7);
        QVERIFY(quality.isEnabled() && !compress.isEnabled());
        quality.setValue(9);
        QCOMPARE(exportCompression(), 0.9);
        choose(only<QComboBox>(panel, 1), 2);
        QCOMPARE(g_sizeOption, 2);
        QVERIFY(shows(panel, QStringLiteral("1000 × 666")));
        panel.setImageSize(QSize(800, 600));
        QVERIFY(shows(panel, QStringLiteral("800 × 600")));
        constexpr int tiff = 3;
        choose(format, tiff);
        QVERIFY(!quality.isEnabled() && compress.isEnabled());
        QCOMPARE(exportCompression(), 1.0);
        compress.click();
        QCOMPARE(exportCompression(), 0.0);
        constexpr int pdf = 1;
        choose(format, pdf);
        QVERIFY(!quality.isEnabled() && !compress.isEnabled());
        QCOMPARE(g_jpegCompression, 9.0);
    }

    void extensionAndFormatFollowEachOther()
    {
        const FreshChoices fresh;
        const QTemporaryDir dir;
        ExportDialog dialog(ExportDialog::Target::File, nullptr);
        dialog.setDirectory(dir.path());
        dialog.suggestName(QStringLiteral("Dr. Who"));
        auto &name = *dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QCOMPARE(name.text(), QStringLiteral("Dr. Who.jpg"));
        constexpr int png = 2;
        choose(only<QComboBox>(dialog.panel()), png);
        QCOMPARE(name.text(), QStringLiteral("Dr. Who.png"));
        name.setText(QStringLiteral("a.tif"));
        QCOMPARE(g_saveFormat, 3);
        QCOMPARE(name.text(), QStringLiteral("a.tif")); // not while somebody types
        name.setText(QStringLiteral("b"));
        dialog.show();
        QTest::keyClick(&name, Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.path(), dir.filePath(QStringLiteral("b.tiff")));
    }

    void emailTellsWhatItComesTo()
    {
        const FreshChoices fresh;
        const QTemporaryDir dir;
        UserDefaults defaults(dir.filePath(QStringLiteral("preferences")));
        QImage image(900, 600, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        const QString path = dir.filePath(QStringLiteral("a.png"));
        QVERIFY(image.save(path));
        const ExportedPhoto photo{{path, {}, {}, {}}, QStringLiteral("Dad's, a")};
        const ExportedPhoto gone{{dir.filePath(QStringLiteral("gone.png")), {}, {}, {}}, QStringLiteral("gone")};
        const Variable caches("XDG_CACHE_HOME", dir.path());
        DispatchQueue files(QStringLiteral("test.files"), 1);
        EmailDialog dialog({photo, gone}, defaults, files, nullptr);
        const auto send = [&] {
            return only<QPushButton>(dialog, 0).isDefault() ? &only<QPushButton>(dialog, 0)
                                                            : &only<QPushButton>(dialog, 1);
        };
        QVERIFY(!send()->isEnabled());
        QTRY_VERIFY(send()->isEnabled());
        QVERIFY(shows(dialog, QStringLiteral("1 photo, ")) && shows(dialog, QStringLiteral("Without gone.")));
        const QString large = dialog.attachments().value(0);
        QCOMPARE(QImage(large).size(), QSize(900, 600));
        QCOMPARE(QFileInfo(large).fileName(), QStringLiteral("Dads a.jpg"));
        choose(only<QComboBox>(dialog), 3); // given up at once
        choose(only<QComboBox>(dialog), 4);
        QTRY_COMPARE(QImage(dialog.attachments().value(0)).size(), QSize(300, 200));
        const QString small = dialog.attachments().value(0);
        QCOMPARE(QFileInfo(small).fileName(), QFileInfo(large).fileName());
        const QDir kept(dialog.keepCopies());
        QVERIFY(small.startsWith(kept.path()) && kept.path().startsWith(dir.path()));
        files.waitUntilIdle();
        const QDir place(QFileInfo(kept.path()).path());
        QCOMPARE(place.entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList(kept.dirName()));
        QVERIFY(QFile::exists(small));
    }
};

REGISTER_TEST(TestExporting)
#include "TestExporting.moc"
