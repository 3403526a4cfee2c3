#include "EmailDialog.h"

#include "PISaveFormatViewController.h"
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

namespace {

constexpr Preference<int> kEmailSizeOption{"hmphoto.emailSizeOption", 2};
constexpr int kJpeg = 0;
const QLatin1String kFolderName("tamsel-mail-");

}

EmailDialog::EmailDialog(const QList<ExportedPhoto> &photos, UserDefaults &defaults, QWidget *parent)
    : QDialog(parent)
    , m_photos(photos)
    , m_defaults(defaults)
    , m_size(new QComboBox(this))
    , m_summary(new QLabel(this))
    , m_folder(
          std::make_unique<QTemporaryDir>(QDir::tempPath() + QLatin1Char('/') + kFolderName + QStringLiteral("XXXXXX")))
{
    build();
    makeCopies();
}

EmailDialog::~EmailDialog() = default;

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

QString EmailDialog::folderOf(int sizeOption) const
{
    return m_folder->filePath(QString::number(sizeOption));
}

void EmailDialog::makeCopies()
{
    const int option = m_size->currentIndex();
    m_export.reset(); // of another size
    if (!m_copies.contains(option)) {
        // What an export that was given up left there bears names of its own.
        const QString folder = folderOf(option);
        if (!m_folder->isValid() || !QDir().mkpath(folder)) {
            m_summary->setText(tr("There is no room for the copies: %1").arg(m_folder->errorString()));
            m_send->setEnabled(false);
            return;
        }
        m_export = std::make_unique<PhotoExport>();
        connect(m_export.get(), &PhotoExport::progressed, this,
                [this](int done, int of) { m_summary->setText(tr("Making copies: %1 of %2").arg(done).arg(of)); });
        connect(m_export.get(), &PhotoExport::finished, this, [this, option](const ExportOutcome &copies) {
            m_copies.insert(option, copies);
            showCopies();
        });
        m_export->start({m_photos, folder, {}, ExportSettings::chosenFor(kJpeg, option)});
    }
    showCopies();
}

QString EmailDialog::summary(const ExportOutcome &copies) const
{
    const int count = int(copies.written.size());
    QString text = CountText(count, tr("%n photo"), tr("%n photos")) + QStringLiteral(", ") +
                   FileSizeString(quint64(copies.bytes));
    for (const ExportFailure &failure : copies.failures)
        text += QLatin1Char('\n') + tr("Without %1. %2").arg(failure.name, failure.reason);
    constexpr int most = 1000; // of very many failures the first say enough
    return text.size() > most ? text.left(most) + QStringLiteral("…") : text;
}

void EmailDialog::showCopies()
{
    const auto copies = m_copies.constFind(m_size->currentIndex());
    const bool areMade = copies != m_copies.constEnd();
    m_summary->setText(areMade ? summary(*copies) : tr("Making copies…"));
    m_send->setEnabled(areMade && !copies->written.isEmpty());
}

QStringList EmailDialog::attachments() const
{
    return m_copies.value(m_size->currentIndex()).written;
}

QString EmailDialog::keepCopies()
{
    m_export.reset();
    for (auto copies = m_copies.constBegin(); copies != m_copies.constEnd(); ++copies) {
        if (copies.key() != m_size->currentIndex())
            QDir(folderOf(copies.key())).removeRecursively();
    }
    m_folder->setAutoRemove(false);
    return m_folder->path();
}

void EmailDialog::removeOldCopies()
{
    constexpr qint64 days = 3;
    const QDir temporary(QDir::tempPath());
    const QFileInfoList folders =
        temporary.entryInfoList({kFolderName + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks);
    for (const QFileInfo &folder : folders) {
        if (folder.ownerId() == ::geteuid() && folder.lastModified().daysTo(QDateTime::currentDateTime()) >= days)
            QDir(folder.filePath()).removeRecursively();
    }
}
