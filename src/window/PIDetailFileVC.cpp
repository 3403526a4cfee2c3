#include "PIDetailFileVC.h"

#include "CameraRows.h"
#include "FileCommands.h"
#include "FileNotifications.h"
#include "FileViewer.h"
#include "FormatMessage.h"
#include "GiveAlert.h"
#include "Icons.h"
#include "InBackground.h"
#include "LostFileCommands.h"
#include "PhotoLibrary.h"
#include "PlainText.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QDateTimeEdit>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace {

constexpr int kNarrowestField = 60;
constexpr int kReadsAtOnce = 4; // a disk may not answer

}

PIDetailFileVC::PIDetailFileVC(PhotoLibrary &library, const PIDetailController &controller, ShownFolder shownFolder,
                               QWidget *parent)
    : PIDetailBaseVC(library, controller, parent)
    , m_lostFiles(new LostFileCommands(
          library, std::move(shownFolder), [this] { return photo(); }, *this))
    , m_worker(QStringLiteral("hmphoto.fileSection"), kReadsAtOnce, DispatchQueue::AtEnd::LeaveBehind)
    , m_name(new QLineEdit(this))
    , m_path(new QLabel(this))
    , m_reveal(new QToolButton(this))
    , m_photoSize(new QLabel(this))
    , m_fileSize(new QLabel(this))
    , m_date(new QDateTimeEdit(this))
    , m_missing(new QLabel(this))
    , m_find(new QPushButton(tr("Find File…"), this))
    , m_findTree(new QPushButton(tr("They Moved To…"), this))
{
    build();
    connect(m_name, &QLineEdit::editingFinished, this, &PIDetailFileVC::renameFile);
    connect(m_date, &QDateTimeEdit::editingFinished, this, &PIDetailFileVC::setDate);
    connect(m_find, &QPushButton::clicked, m_lostFiles, &LostFileCommands::findFile);
    connect(m_findTree, &QPushButton::clicked, this, [this] { m_lostFiles->findMovedTree(m_movedFolder); });
    connect(m_lostFiles, &LostFileCommands::done, this, &PIDetailFileVC::selectionChanged);
    connect(m_reveal, &QToolButton::clicked, this, [this] { revealInFileViewer({photo()->fileRef()->path()}); });
    m_factsObserver = library.notifications().observe(kFileFactsNotification, [this](const NotificationObject &file) {
        if (havePhoto() && photo()->fileRef() && file.isSameAs(photo()->fileRef()))
            showFacts();
    });
    selectionChanged();
}

/// A field that goes while it has the focus says that its text is finished.
PIDetailFileVC::~PIDetailFileVC()
{
    m_name->disconnect(this);
    m_date->disconnect(this);
}

void PIDetailFileVC::build()
{
    m_name->setToolTip(tr("The file's name. Changing it renames the file on disk"));
    m_name->setAccessibleName(tr("File name"));
    m_path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_path->setWordWrap(true);
    m_path->setMinimumWidth(kNarrowestField); // a long name cannot be wrapped
    m_path->setTextFormat(Qt::PlainText);
    m_reveal->setIcon(themedIcon(QLatin1String("folder-open")));
    m_reveal->setAutoRaise(true);
    m_reveal->setToolTip(tr("Show the file in the file manager"));
    m_reveal->setAccessibleName(m_reveal->toolTip());
    m_date->setCalendarPopup(true);
    m_date->setFocusPolicy(Qt::StrongFocus);
    m_date->setMinimumWidth(kNarrowestField);
    m_date->installEventFilter(this);
    m_date->setToolTip(tr("The file's date. Changing it changes the file's modification date on disk"));
    m_date->setAccessibleName(tr("File date"));
    m_missing->setWordWrap(true);
    m_missing->setMinimumWidth(kNarrowestField);
    m_missing->setTextFormat(Qt::PlainText);
    m_find->setToolTip(tr("Show where the missing file is now"));
    m_findTree->setToolTip(tr("Show where the folder of all these missing files is now"));

    auto *place = new QHBoxLayout;
    place->addWidget(m_path, 1);
    place->addWidget(m_reveal, 0, Qt::AlignTop);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_find);
    buttons->addWidget(m_findTree);
    buttons->addStretch();
    auto *form = new QFormLayout(this);
    form->setContentsMargins(12, 4, 12, 10);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(m_missing);
    form->addRow(buttons);
    form->addRow(tr("Name:"), m_name);
    form->addRow(tr("Folder:"), place);
    form->addRow(tr("Pixels:"), m_photoSize);
    form->addRow(tr("Size:"), m_fileSize);
    form->addRow(tr("Date:"), m_date);
    m_camera = new CameraRows(*form, *this);
}

void PIDetailFileVC::selectionChanged()
{
    const bool present = !missingFile();
    m_name->setEnabled(havePhoto());
    m_name->setReadOnly(!present); // the name of a missing file is there to be read and copied
    m_name->setFrame(present);
    m_reveal->setEnabled(present);
    m_date->setEnabled(present);
    const bool lost = havePhoto() && !present;
    m_missing->setVisible(lost);
    m_find->setVisible(lost && photo()->fileRef());
    m_findTree->setVisible(false);
    showFacts();
    m_camera->show(present ? photo()->fileRef() : nullptr);
    if (lost)
        showMissing();
    if (present)
        readFacts();
}

/// The pane scrolls beneath the pointer: only who works in the date means to change it.
bool PIDetailFileVC::eventFilter(QObject *object, QEvent *event)
{
    if (object != m_date || event->type() != QEvent::Wheel || m_date->hasFocus())
        return PIDetailBaseVC::eventFilter(object, event);
    event->ignore();
    return true;
}

void PIDetailFileVC::showFacts()
{
    const QString unknown = tr("Unknown");
    const auto file = havePhoto() ? photo()->fileRef() : nullptr;
    showName(file.get());
    showDate(file.get());
    m_shownFile = file;
    m_path->setText(file ? QVString::abbreviateHomeFolderPath(QVString::deletingLastPathComponent(file->path()))
                         : QString());
    m_path->setToolTip(plainText(m_path->text()));
    const QSizeF pixels = file ? file->knownPhotoSize() : QSizeF();
    m_photoSize->setText(
        pixels.isEmpty() ? unknown : QStringLiteral("%1 x %2").arg(int(pixels.width())).arg(int(pixels.height())));
    const quint64 bytes = file ? file->knownFileSize() : 0;
    m_fileSize->setText(bytes > 0 ? FileSizeString(bytes) : unknown);
}

/// What is being typed stays, whatever becomes known of the file meanwhile.
void PIDetailFileVC::showName(const PIFileRef *file)
{
    if (!file || m_shownFile.lock().get() != file || !m_name->hasFocus() || !m_name->isModified())
        m_name->setText(file ? QVString::lastPathComponent(file->path()) : QString());
}

/// Nor does the field take another date while it is being worked in.
void PIDetailFileVC::showDate(const PIFileRef *file)
{
    const double date = file ? file->knownCreationTime() : 0;
    const bool isNews = m_shownFile.lock().get() != file || date != m_fileDate;
    if (file && m_date->hasFocus() && (!isNews || (m_shownFile.lock().get() == file && isDateEdited())))
        return;
    m_fileDate = date;
    m_date->setSpecialValueText(tr("Unknown")); // shown for the earliest date there is
    m_date->setDateTime(date != 0 ? QDateTime::fromSecsSinceEpoch(static_cast<qint64>(date))
                                  : m_date->minimumDateTime());
    m_shownDate = m_date->dateTime();
}

/// By the clock on the wall: in the hour that comes twice when summer time ends, the field cannot tell which one it
/// shows.
bool PIDetailFileVC::isDateEdited() const
{
    const QDateTime date = m_date->dateTime();
    return date.date() != m_shownDate.date() || date.time() != m_shownDate.time();
}

/// A volume may never come back, so there is a way out also for its photos.
void PIDetailFileVC::showMissing()
{
    const auto file = photo()->fileRef();
    if (!file) {
        m_missing->setText(tr("The library does not tell where this photo's file is."));
        return;
    }
    const QString point = file->isVolumeAway() ? file->mountPoint() : QString();
    m_missing->setText(!file->isVolumeAway() ? tr("This file is missing.")
                       : point.isEmpty()     ? tr("Volume not mounted. The photo comes back with it.")
                                         : tr("Volume not mounted: “%1”. The photo comes back with it.").arg(point));
    m_lostFiles->findMovedFolder(file->path(), [this, lost = photo()](const QString &folder) {
        if (havePhoto() && photo() == lost && lost->isFileLost())
            showLostTree(folder);
    });
}

void PIDetailFileVC::showLostTree(const QString &folder)
{
    const auto tree = FileCommands::lostTreeIn(folder, library(), *photo());
    m_movedFolder = folder;
    m_findTree->setVisible(tree.has_value());
    if (tree && !photo()->isVolumeAway())
        m_missing->setText(CountText(tree->files.size(), {},
                                     tr("This file is missing, and with it %n files in all from the folder “%1”."))
                               .arg(QVString::abbreviateHomeFolderPath(tree->folder)));
}

void PIDetailFileVC::readFacts()
{
    library().fileFacts().want({photo()->fileRef()});
    if (photo()->fileRef()->knownPhotoSize().isEmpty())
        readPhotoSize();
}

void PIDetailFileVC::readPhotoSize()
{
    const std::weak_ptr<PIFileRef> waiting = photo()->fileRef();
    inBackground(
        m_worker, this, [path = photo()->fileRef()->path()] { return Image::fromFile(path).size(); },
        [this, waiting, path = photo()->fileRef()->path()](QSize size) {
            const auto file = waiting.lock();
            if (!file || size.isEmpty() || file->path() != path)
                return;
            file->setPhotoSize(size);
            if (havePhoto() && photo()->fileRef() == file)
                showFacts();
        });
}

void PIDetailFileVC::renameFile()
{
    const QString name = m_name->text();
    const bool isTyped = m_name->isModified();
    m_name->setModified(false);
    if (missingFile() || name.isEmpty() || !isTyped)
        return showFacts();
    const QString oldName = QVString::lastPathComponent(photo()->fileRef()->path());
    QString reason;
    if (!FileCommands::renameFile(library(), *photo(), name, &reason))
        GiveAlert(tr("Rename failed."),
                  FormatMessage(tr("The file \"%@\" could not be renamed. %@"), {oldName, reason}));
    showFacts();
}

void PIDetailFileVC::setDate()
{
    if (missingFile() || !isDateEdited())
        return;
    if (m_date->dateTime() == m_date->minimumDateTime())
        return; // unknown, and not given
    QString reason;
    if (!FileCommands::setDate(library(), *photo(), m_date->dateTime(), &reason))
        GiveAlert(tr("The date could not be changed."), reason);
    m_shownFile.reset(); // the field shows what the file system made of it
    showFacts();
    readFacts();
}
