#include "TestRunner.h"
#include "Variable.h"
#include "WindowDesk.h"

#include "EmailDialog.h"
#include "ExportDialog.h"
#include "ExportPreferences.h"
#include "LibraryFile.h"
#include "PIFolder.h"
#include "ThumbnailGridView.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <filesystem>

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// A window with two photos of real files, and somebody who answers the dialogs that come up.
struct ExportDesk : WindowDesk
{
    FakeAlerts alerts;
    QString name; ///< typed where a file or a folder is asked for
    QTimer answering;
    mutable int unanswered = 0;
    std::shared_ptr<PIFolder> folder = group()->folders().first();

    ExportDesk()
    {
        LibraryFile::registerTags();
        for (const char *file : {"a.jpg", "b.png"}) {
            const QString path = makePicture(QString::fromLatin1(file));
            folder->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path)));
        }
        controller->resetList(folder);
        // Queued, as a timer rests while what it calls waits in a dialog that another dialog has asked for.
        QObject::connect(
            &answering, &QTimer::timeout, &answering, [this] { answer(); }, Qt::QueuedConnection);
        answering.start(10);
        QDir(dir.path()).mkdir(QStringLiteral("out"));
    }
    QString out(const QString &file) const { return dir.filePath(QStringLiteral("out/") + file); }
    QStringList written() const { return QDir(out({})).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    void select(const char *positions) const
    {
        controller->selectIndexes(IndexSet::fromArchive(QString::fromLatin1(positions)));
    }
    bool isEnabled(Command command) const { return controller->actions().action(command)->isEnabled(); }

    void answer() const
    {
        QWidget *modal = QApplication::activeModalWidget();
        constexpr int patience = 1000; // turns, for a dialog that takes no answer
        unanswered = modal ? unanswered + 1 : 0;
        if (unanswered > patience)
            modal->close();
        else if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            box->button(QMessageBox::Yes)->click();
        } else if (auto *dialog = qobject_cast<ExportDialog *>(modal)) {
            auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            edit->setText(name);
            QTest::keyClick(edit, Qt::Key_Return);
        } else if (auto *mail = qobject_cast<EmailDialog *>(modal)) {
            for (auto *button : mail->findChildren<QPushButton *>()) {
                if (button->isDefault())
                    button->click(); // nothing happens until the copies are made
            }
        }
    }
};

/// A program that does what the line says.
void writeProgram(const QString &path, const QByteArray &line)
{
    QFile file(path);
    QVERIFY(file.open(QFile::WriteOnly) && file.write("#!/bin/sh\n" + line + '\n') > 0);
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

}

/// The export commands as the window offers them.
class TestExportCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void enablingFollowsTheNumberOfPhotos()
    {
        const ExportDesk desk;
        const auto enabled = [&](const char *selection) {
            desk.select(selection);
            return QList<bool>{desk.isEnabled(Command::SaveImageAs), desk.isEnabled(Command::ExportPhotos),
                               desk.isEnabled(Command::EmailPhotos)};
        };
        QCOMPARE(enabled(""), QList<bool>({false, false, false}));
        QCOMPARE(enabled("0"), QList<bool>({true, false, true}));
        QCOMPARE(enabled("0-1"), QList<bool>({false, true, true}));
    }

    void savesOnePhotoButNotOverAnother()
    {
        ExportDesk desk;
        desk.select("1");
        desk.name = desk.out(QStringLiteral("new.png"));
        desk.trigger(Command::SaveImageAs);
        QTRY_COMPARE(QImage(desk.name).size(), QSize(64, 48));

        const QString other = desk.folder->photos().first()->fileRef()->path();
        const QByteArray before = contentOf(other);
        QVERIFY(!before.isEmpty());
        QTRY_VERIFY(!desk.controller->window().findChild<QDialog *>());
        desk.name = other;
        desk.trigger(Command::SaveImageAs);
        QTRY_COMPARE(desk.alerts.said, QStringList(QStringLiteral("This file belongs to the photo library.")));
        QCOMPARE(contentOf(other), before);

        desk.select("0");
        desk.trigger(Command::Cut); // undoing it brings the photo of that file back
        QTRY_VERIFY(!desk.controller->window().findChild<QDialog *>());
        QCOMPARE(desk.folder->photos().size(), 1);
        desk.select("0");
        desk.trigger(Command::SaveImageAs);
        QTRY_COMPARE(desk.alerts.said.size(), 2);
        QCOMPARE(contentOf(other), before);
        g_saveFormat = 0;
    }

    void exportsSeveralAndTellsWhatFailed()
    {
        ExportDesk desk;
        desk.select("0-1");
        QVERIFY(QFile::remove(desk.folder->photos().first()->fileRef()->path()));
        desk.name = desk.out({});
        desk.trigger(Command::ExportPhotos);
        QTRY_COMPARE(desk.alerts.said, QStringList(QStringLiteral("One photo could not be exported.")));
        QCOMPARE(desk.alerts.messages.first(), QStringLiteral("a: The file of the photo is missing."));
        QCOMPARE(desk.written(), QStringList(QStringLiteral("b.jpg")));
    }

    void mailsCopiesThatStayForSomeDays()
    {
        const QTemporaryDir temporary;
        const Variable caches("XDG_CACHE_HOME", temporary.path());
        const Variable mailer("MAILER", QString());
        const QDir place(temporary.filePath(QStringLiteral("com.harrowmere.TamselPhoto/Mail")));
        const auto folders = [&] { return place.entryList(QDir::Dirs | QDir::NoDotAndDotDot); };
        auto desk = std::make_unique<ExportDesk>();
        desk->select("0-1");
        const Variable path("PATH", desk->out({}));
        desk->trigger(Command::EmailPhotos);
        QTRY_COMPARE(desk->alerts.said, QStringList(QStringLiteral("No mail program was found.")));
        QTRY_COMPARE(folders().size(), 0);

        // Some desktops' openers tell of success when there is no program to take the mail.
        const QString opener = desk->out(QStringLiteral("xdg-email"));
        const QString registry = desk->out(QStringLiteral("xdg-mime"));
        writeProgram(opener, "exit 0");
        writeProgram(registry, "exit 0");
        desk->trigger(Command::EmailPhotos);
        QTRY_COMPARE(desk->alerts.said.value(1), QStringLiteral("No mail program was found."));
        QTRY_COMPARE(folders().size(), 0);
        writeProgram(opener, "exit 4");
        writeProgram(registry, "[ \"$*\" = 'query default x-scheme-handler/mailto' ] && echo mail.desktop");
        desk->trigger(Command::EmailPhotos);
        QTRY_COMPARE(desk->alerts.said.value(2), QStringLiteral("The photos could not be handed to the mail program."));
        QTRY_COMPARE(folders().size(), 0);

        const QString told = desk->dir.filePath(QStringLiteral("told"));
        writeProgram(opener, "printf '%s\\n' \"$@\" > '" + QFile::encodeName(told) + '\'');
        desk->trigger(Command::EmailPhotos);
        const auto arguments = [&] { return QString::fromUtf8(contentOf(told)).split(u'\n', Qt::SkipEmptyParts); };
        QTRY_COMPARE(arguments().size(), 4);
        QCOMPARE(arguments().at(2), QStringLiteral("--attach"));
        const QStringList attached{arguments().at(1), arguments().at(3)};
        QCOMPARE(QFileInfo(attached.at(1)).fileName(), QStringLiteral("b.jpg"));
        const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 5);
        const QString other = place.filePath(QStringLiteral("tamsel-mail-old"));
        QDir().mkdir(other);
        std::filesystem::last_write_time(QFile::encodeName(other).toStdString(), longAgo);
        desk->trigger(Command::EmailPhotos);
        QTRY_VERIFY(!QFileInfo::exists(other));
        desk.reset();
        QVERIFY(QFile::exists(attached.at(0)) && QFile::exists(attached.at(1)));
    }
};

REGISTER_TEST(TestExportCommands)
#include "TestExportCommands.moc"
