#include "EmailDialog.h"

#include "PISaveFormatViewController.h"
#include "StandardFolders.h"
#include "TextForPeople.h"
#include "UserDefaults.h"

#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>

#include <unistd.h>

#include <utility>

namespace {

constexpr Preference<int> kEmailSizeOption{"hmphoto.emailSizeOption", 2};
const QLatin1String kFolderName("tamsel-mail-");

/// Ways of handing files to mail programs put the paths between quotes, with commas between them.
QString withoutQuotes(QString text)
{
    text.removeIf([](QChar c) {
        return c == u'\'' || c == u'"' || c == u',' || c == u'\\' || c.category() == QChar::Other_Control;
    });
    return text;
}

/// Where the folders of copies are made: on a disk, as the folder for what is temporary is memory on many systems.
QString placeOfCopies()
{
    const auto cache = applicationCacheFolder();
    if (!cache || withoutQuotes(*cache) != *cache)
        return QDir::tempPath();
    return *cache + QStringLiteral("/Mail");
}

/// A new folder for the copies of one size; nothing when it cannot be made.
std::optional<QString> newFolder(QString *reason)
{
    const QString place = placeOfCopies();
    (void)QDir().mkpath(place); // else the next step fails and tells why
    QTemporaryDir folder(place + QLatin1Char('/') + kFolderName + QStringLiteral("XXXXXX"));
    if (!folder.isValid()) {
        *reason = folder.errorString();
        return std::nullopt;
    }
    folder.setAutoRemove(false);
    return folder.path();
}

}

EmailDialog::EmailDialog(const QList<ExportedPhoto> &photos, UserDefaults &defaults, DispatchQueue &files,
                         QWidget *parent)
    : QDialog(parent)
    , m_photos(photos)
    , m_defaults(defaults)
    , m_size(new QComboBox(this))
    , m_summary(new QLabel(this))
    , m_files(files)
{
    for (ExportedPhoto &photo : m_photos)
        photo.name = withoutQuotes(photo.name);
    build();
    makeCopies();
}

EmailDialog::~EmailDialog()
{
    dropCopies();
}

void EmailDialog::build()
{
    setObjectName(QStringLiteral("EmailDialog"));
    setWindowTitle(tr("E-mail"));
    setWindowModality(Qt::WindowModal);
    PISaveFormatViewController::addSizesTo(*m_size);
    m_size->setCurrentIndex(qBound(0, m_defaults.value(kEmailSizeOption), m_size->count() - 1));
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_send = buttons->addButton(tr("New E-mail…"), QDialogButtonBox::AcceptRole);
    m_send->setDefault(true);
    m_send->setToolTip(tr("Open a new message with the photos in your mail program"));
    connect(m_size, &QComboBox::activated, this, &EmailDialog::changeSize);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("Size:"), m_size);
    layout->addRow(tr("To be sent:"), m_summary);
    layout->addRow(buttons);
}

void EmailDialog::changeSize(int option)
{
    m_defaults.setValue(kEmailSizeOption, option);
    makeCopies();
}

void EmailDialog::dropCopies()
{
    m_export.reset();
    m_copies.reset();
    if (!m_folder.isEmpty())
        m_files.async([folder = m_folder] { QDir(folder).removeRecursively(); });
    m_folder.clear();
}

void EmailDialog::makeCopies()
{
    dropCopies();
    showCopies();
    QString reason;
    if (const auto folder = newFolder(&reason))
        startExport(*folder);
    else
        m_summary->setText(tr("There is no room for the copies: %1").arg(reason));
}

void EmailDialog::startExport(const QString &folder)
{
    m_folder = folder;
    m_export = std::make_unique<PhotoExport>();
    connect(m_export.get(), &PhotoExport::progressed, this,
            [this](int done, int of) { m_summary->setText(tr("Making copies: %1 of %2").arg(done).arg(of)); });
    connect(m_export.get(), &PhotoExport::finished, this, [this](const ExportOutcome &copies) {
        m_copies = copies;
        showCopies();
    });
    m_export->start({m_photos, folder, {}, ExportSettings::chosenFor(kJpegFormat, m_size->currentIndex())});
}

QString EmailDialog::summary(const ExportOutcome &copies) const
{
    const int count = int(copies.written.size());
    QString text = CountText(count, tr("%n photo"), tr("%n photos")) + QStringLiteral(", ") +
                   FileSizeString(quint64(copies.bytes));
    for (const ExportFailure &failure : copies.failures)
        text += QLatin1Char('\n') + tr("Without %1. %2").arg(failure.name, failure.reason);
    for (const ExportFailure &reservation : copies.reservations)
        text += QLatin1Char('\n') + reservation.name + QStringLiteral(": ") + reservation.reason;
    constexpr int most = 1000; // of very many failures the first say enough
    return text.size() > most ? text.left(most) + QStringLiteral("…") : text;
}

void EmailDialog::showCopies()
{
    m_summary->setText(m_copies ? summary(*m_copies) : tr("Making copies…"));
    m_send->setEnabled(m_copies && !m_copies->written.isEmpty());
}

QStringList EmailDialog::attachments() const
{
    return m_copies ? m_copies->written : QStringList();
}

QString EmailDialog::keepCopies()
{
    return std::exchange(m_folder, QString());
}

void EmailDialog::removeOldCopies()
{
    constexpr qint64 days = 3;
    const QDir place(placeOfCopies());
    const QFileInfoList folders = place.entryInfoList({kFolderName + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks);
    for (const QFileInfo &folder : folders) {
        if (folder.ownerId() == ::geteuid() && folder.lastModified().daysTo(QDateTime::currentDateTime()) >= days)
            QDir(folder.filePath()).removeRecursively();
    }
}
